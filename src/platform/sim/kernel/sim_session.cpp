#include "platform/sim/kernel/sim_session.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/clock_api.h"
#include "platform/sim/kernel/seam_gate.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/thread_api.h"

namespace corvane::platform::sim {

namespace {

constexpr DWORD kIdleProcess = 0;
constexpr DWORD kMaxKept = 1000;  // launches and commands that nobody took

// The program that a command line names: its first word, ".exe" behind it where it has no
// extension.
std::u16string ProgramOf(std::u16string_view commandLine) {
  std::u16string name;
  if (commandLine.starts_with(u'"')) {
    name = commandLine.substr(1, commandLine.find(u'"', 1) - 1);
  } else {
    name = commandLine.substr(0, commandLine.find(u' '));
  }
  if (const std::size_t slash = name.find_last_of(u"/\\"); slash != name.npos)
    name.erase(0, slash + 1);
  if (name.find(u'.') == name.npos) name += u".exe";
  return name;
}

template <class T>
void KeepLast(std::vector<T>* list, T one) {
  if (list->size() >= kMaxKept) list->erase(list->begin());
  list->push_back(std::move(one));
}

}  // namespace

SimSession::SimSession(SeamGate& gate, ThreadApi& threads, ClockApi& clock)
    : m_Gate(gate), m_Threads(threads), m_Clock(clock), m_Sessions{{kFirstSession, true}} {
  m_Processes.push_back(
      std::make_shared<Process>(Process{.id = kIdleProcess, .executable = u"[System Process]"}));
  for (const char16_t* name : {u"NudgeDialog.exe", u"PassphraseDesk.exe", u"explorer.exe"}) {
    Install(name, {});
  }
  Install(u"cmd.exe", {.runMs = 200});
  Install(kOwnProgram,
          {.output = R"({ "path":"/data/users/first/temp/", "proxy":"no", "proxy_cfg":"" })",
           .runMs = kOwnRunMs});
  m_bOwnProgram = false;
}

SimSession::~SimSession() = default;

bool SimSession::Passes(const char* operation, DWORD ordinary) {
  const DWORD code = m_Gate.Enter(operation, ordinary);
  if (code != ERROR_SUCCESS) m_Threads.SetLastError(code);
  return code == ERROR_SUCCESS;
}

BOOL SimSession::Fail(DWORD code) const {
  m_Threads.SetLastError(code);
  return FALSE;
}

HANDLE SimSession::Open(Object object) {
  m_LastHandle += 4;
  m_Handles.emplace(m_LastHandle, std::move(object));
  return reinterpret_cast<HANDLE>(m_LastHandle);
}

template <class T>
T* SimSession::Find(HANDLE handle) {
  const auto found = m_Handles.find(reinterpret_cast<std::uintptr_t>(handle));
  T* object = found == m_Handles.end() ? nullptr : std::get_if<T>(&found->second);
  if (!object) Fail(ERROR_INVALID_HANDLE);
  return object;
}

// ---- sessions and users
// -----------------------------------------------------------------------------

DWORD SimSession::WTSGetActiveConsoleSessionId() {
  if (!Passes("WTSGetActiveConsoleSessionId")) return NO_CONSOLE_SESSION;
  const std::lock_guard guard(m_Mutex);
  return m_ConsoleSession;
}

BOOL SimSession::WTSQueryUserToken(DWORD session, HANDLE* token) {
  if (!Passes("WTSQueryUserToken", ERROR_NO_TOKEN)) return FALSE;
  const std::lock_guard guard(m_Mutex);
  const auto found = m_Sessions.find(session);
  if (found == m_Sessions.end()) return Fail(ERROR_FILE_NOT_FOUND);
  if (!found->second) return Fail(ERROR_NO_TOKEN);
  *token = Open(Token{session});
  return TRUE;
}

BOOL SimSession::WTSEnumerateSessionsA(HANDLE, DWORD, DWORD, WTS_SESSION_INFOA** sessions,
                                       DWORD* count) {
  if (!Passes("WTSEnumerateSessionsA")) return FALSE;
  const std::lock_guard guard(m_Mutex);
  auto list = std::make_unique<WTS_SESSION_INFOA[]>(m_Sessions.size() + 1);
  DWORD at = 0;
  for (const auto& [id, user] : m_Sessions) list[at++] = {id, "", user ? 0u : 4u};
  *count = at;
  *sessions = list.get();
  void* const key = list.get();
  m_Lists[key] = std::move(list);
  return TRUE;
}

void SimSession::WTSFreeMemory(void* memory) {
  m_Gate.Enter("WTSFreeMemory");
  const std::lock_guard guard(m_Mutex);
  m_Lists.erase(memory);
}

BOOL SimSession::CreateEnvironmentBlock(void** environment, HANDLE token, BOOL) {
  if (!Passes("CreateEnvironmentBlock")) return FALSE;
  const std::lock_guard guard(m_Mutex);
  if (!Find<Token>(token)) return FALSE;
  *environment = Open(Environment{});
  return TRUE;
}

BOOL SimSession::DestroyEnvironmentBlock(void* environment) {
  m_Gate.Enter("DestroyEnvironmentBlock");
  const std::lock_guard guard(m_Mutex);
  if (!Find<Environment>(environment)) return FALSE;
  m_Handles.erase(reinterpret_cast<std::uintptr_t>(environment));
  return TRUE;
}

// ---- processes
// --------------------------------------------------------------------------------------

SimSession::ProcessPtr SimSession::Start(std::u16string_view executable, SimProgram program,
                                         ULONGLONG now) {
  std::erase_if(m_Processes, [&](const ProcessPtr& process) {
    return process->id != kIdleProcess && HasEnded(*process, now);
  });
  m_LastProcessId += 4;
  auto process = std::make_shared<Process>(Process{.id = m_LastProcessId,
                                                   .executable = std::u16string(executable),
                                                   .program = std::move(program),
                                                   .started = now});
  m_Processes.push_back(process);
  return process;
}

BOOL SimSession::CreateProcessAsUserW(HANDLE token, LPCWSTR, LPCWSTR commandLine,
                                      BOOL inheritHandles, DWORD flags, void* environment, LPCWSTR,
                                      const STARTUPINFOW* startup, PROCESS_INFORMATION* process) {
  if (!Passes("CreateProcessAsUserW", ERROR_FILE_NOT_FOUND)) return FALSE;
  const std::u16string name = ProgramOf(commandLine);
  SimProgram program;
  {
    const std::lock_guard guard(m_Mutex);
    if (!Find<Token>(token)) return FALSE;
    if (environment && !Find<Environment>(environment)) return FALSE;
    const auto found = m_Programs.find(FoldCase(name));
    if (found == m_Programs.end()) return Fail(ERROR_FILE_NOT_FOUND);
    program = found->second;
  }
  if (program.say) program.output = program.say();
  const std::shared_ptr<IProgramRun> run = program.run ? program.run() : nullptr;
  if (program.run && !run) return Fail(ERROR_FILE_NOT_FOUND);
  const ULONGLONG now = m_Clock.GetTickCount64();
  const std::lock_guard guard(m_Mutex);
  const Token* user = Find<Token>(token);
  if (!user) return FALSE;
  KeepLast(&m_Launches,
           {commandLine, startup->lpDesktop ? startup->lpDesktop : u"", user->session, flags,
            environment != nullptr,
            (startup->dwFlags & STARTF_USESHOWWINDOW) != 0 && startup->wShowWindow == 0});
  const ProcessPtr started = Start(name, std::move(program), now);
  started->run = run;
  if (inheritHandles && (startup->dwFlags & STARTF_USESTDHANDLES)) {
    if (PipeEnd* end = Find<PipeEnd>(startup->hStdOutput)) end->pipe->writer = started;
  }
  *process = {Open(started), Open(started), started->id, started->id + 1};
  return TRUE;
}

bool SimSession::HasEnded(const Process& process, ULONGLONG now) {
  DWORD exitCode = 0;
  if (process.run) return process.ended || process.run->HasEnded(&exitCode);
  return process.ended ||
         (process.program.runMs != INFINITE && now >= process.started + process.program.runMs);
}

DWORD SimSession::WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
  if (!Passes("WaitForSingleObject")) return WAIT_FAILED;
  const ULONGLONG start = m_Clock.GetTickCount64();
  for (;;) {
    const ULONGLONG now = m_Clock.GetTickCount64();
    {
      const std::lock_guard guard(m_Mutex);
      const ProcessPtr* process = Find<ProcessPtr>(handle);
      if (!process) return WAIT_FAILED;
      if (HasEnded(**process, now)) return WAIT_OBJECT_0;
    }
    if (milliseconds != INFINITE && now - start >= milliseconds) return WAIT_TIMEOUT;
    const ULONGLONG left = milliseconds == INFINITE ? 50 : milliseconds - (now - start);
    m_Threads.Sleep(static_cast<DWORD>(std::min<ULONGLONG>(left, 50)));
  }
}

BOOL SimSession::GetExitCodeProcess(HANDLE handle, DWORD* exitCode) {
  if (!Passes("GetExitCodeProcess")) return FALSE;
  const ULONGLONG now = m_Clock.GetTickCount64();
  const std::lock_guard guard(m_Mutex);
  const ProcessPtr* process = Find<ProcessPtr>(handle);
  if (!process) return FALSE;
  const Process& one = **process;
  if (one.run && !one.ended) {
    if (!one.run->HasEnded(exitCode)) *exitCode = STILL_ACTIVE;
    return TRUE;
  }
  *exitCode = one.ended ? one.exitCode : HasEnded(one, now) ? one.program.exitCode : STILL_ACTIVE;
  return TRUE;
}

BOOL SimSession::CloseHandle(HANDLE handle) {
  m_Gate.Enter("CloseHandle");
  const std::lock_guard guard(m_Mutex);
  return m_Handles.erase(reinterpret_cast<std::uintptr_t>(handle)) ? TRUE
                                                                   : Fail(ERROR_INVALID_HANDLE);
}

// ---- a child's output
// -------------------------------------------------------------------------------

BOOL SimSession::CreatePipe(HANDLE* readEnd, HANDLE* writeEnd, const SECURITY_ATTRIBUTES*, DWORD) {
  if (!Passes("CreatePipe")) return FALSE;
  const std::lock_guard guard(m_Mutex);
  auto pipe = std::make_shared<Pipe>();
  *readEnd = Open(PipeEnd{pipe});
  *writeEnd = Open(PipeEnd{pipe});
  return TRUE;
}

std::size_t SimSession::Available(const Pipe& pipe, ULONGLONG now) {
  if (!pipe.writer) return 0;
  if (pipe.writer->run) return pipe.writer->run->Output().size() - pipe.read;
  const SimProgram& program = pipe.writer->program;
  const ULONGLONG writes = program.runMs == INFINITE ? 0 : program.runMs / 2;
  return now < pipe.writer->started + writes ? 0 : program.output.size() - pipe.read;
}

BOOL SimSession::PeekNamedPipe(HANDLE readEnd, DWORD* available) {
  if (!Passes("PeekNamedPipe")) return FALSE;
  const ULONGLONG now = m_Clock.GetTickCount64();
  const std::lock_guard guard(m_Mutex);
  const PipeEnd* end = Find<PipeEnd>(readEnd);
  if (!end) return FALSE;
  *available = static_cast<DWORD>(Available(*end->pipe, now));
  return TRUE;
}

BOOL SimSession::ReadFile(HANDLE readEnd, void* buffer, DWORD size, DWORD* read) {
  if (!Passes("ReadFile")) return FALSE;
  const ULONGLONG now = m_Clock.GetTickCount64();
  const std::lock_guard guard(m_Mutex);
  const PipeEnd* end = Find<PipeEnd>(readEnd);
  if (!end) return FALSE;
  Pipe& pipe = *end->pipe;
  const std::size_t count = std::min<std::size_t>(size, Available(pipe, now));
  if (count > 0) {
    const Process& writer = *pipe.writer;
    const std::string& output = writer.run ? writer.run->Output() : writer.program.output;
    std::memcpy(buffer, output.data() + pipe.read, count);
  }
  pipe.read += count;
  *read = static_cast<DWORD>(count);
  return TRUE;
}

// ---- processes by name ----------------------------------------------------------------------

HANDLE SimSession::CreateToolhelp32Snapshot(DWORD, DWORD processId) {
  if (!Passes("CreateToolhelp32Snapshot")) return nullptr;
  const ULONGLONG now = m_Clock.GetTickCount64();
  const auto found = IsSought(processId) ? m_Lookup(processId) : std::nullopt;
  const std::lock_guard guard(m_Mutex);
  Snapshot snapshot;
  std::ranges::copy_if(m_Processes, std::back_inserter(snapshot.processes), [&](const auto& one) {
    return one->id == kIdleProcess || (!IsSought(processId) && !HasEnded(*one, now));
  });
  if (found) snapshot.processes.push_back(std::make_shared<Process>(Process{processId, *found}));
  return Open(std::move(snapshot));
}

BOOL SimSession::NextEntry(Snapshot* snapshot, PROCESSENTRY32W* entry) {
  if (snapshot->next >= snapshot->processes.size()) return Fail(ERROR_NO_MORE_FILES);
  const Process& process = *snapshot->processes[snapshot->next++];
  *entry = {};
  entry->th32ProcessID = process.id;
  const std::size_t length = std::min(process.executable.size(), std::size(entry->szExeFile) - 1);
  std::copy_n(process.executable.begin(), length, entry->szExeFile);
  return TRUE;
}

BOOL SimSession::Process32FirstW(HANDLE handle, PROCESSENTRY32W* entry) {
  if (!Passes("Process32FirstW")) return FALSE;
  const std::lock_guard guard(m_Mutex);
  Snapshot* snapshot = Find<Snapshot>(handle);
  if (!snapshot) return FALSE;
  snapshot->next = 0;
  return NextEntry(snapshot, entry);
}

BOOL SimSession::Process32NextW(HANDLE handle, PROCESSENTRY32W* entry) {
  if (!Passes("Process32NextW")) return FALSE;
  const std::lock_guard guard(m_Mutex);
  Snapshot* snapshot = Find<Snapshot>(handle);
  return snapshot ? NextEntry(snapshot, entry) : FALSE;
}

HANDLE SimSession::OpenProcess(DWORD, BOOL, DWORD processId) {
  if (!Passes("OpenProcess", ERROR_ACCESS_DENIED)) return nullptr;
  const ULONGLONG now = m_Clock.GetTickCount64();
  const std::lock_guard guard(m_Mutex);
  const auto found = std::ranges::find_if(m_Processes, [&](const ProcessPtr& process) {
    return process->id == processId && processId != kIdleProcess && !HasEnded(*process, now);
  });
  if (found != m_Processes.end()) return Open(*found);
  Fail(ERROR_INVALID_PARAMETER);
  return nullptr;
}

BOOL SimSession::TerminateProcess(HANDLE handle, DWORD exitCode) {
  if (!Passes("TerminateProcess", ERROR_ACCESS_DENIED)) return FALSE;
  const ULONGLONG now = m_Clock.GetTickCount64();
  const std::lock_guard guard(m_Mutex);
  const ProcessPtr* process = Find<ProcessPtr>(handle);
  if (!process) return FALSE;
  if (HasEnded(**process, now)) return Fail(ERROR_ACCESS_DENIED);
  if ((*process)->run) (*process)->run->End();
  (*process)->ended = true;
  (*process)->exitCode = exitCode;
  return TRUE;
}

// ---- the command interpreter and the environment
// ----------------------------------------------------

int SimSession::RunCommand(std::u16string command) {
  const std::lock_guard guard(m_Mutex);
  KeepLast(&m_Commands, std::move(command));
  return m_CommandResult;
}

int SimSession::system(const char* command) {
  if (!Passes("system")) return 1;
  return RunCommand(std::u16string(command, command + std::strlen(command)));
}

int SimSession::_wsystem(LPCWSTR command) {
  if (!Passes("_wsystem")) return 1;
  return RunCommand(command);
}

DWORD SimSession::GetTempPathA(DWORD size, char* buffer) {
  if (!Passes("GetTempPathA")) return 0;
  const std::lock_guard guard(m_Mutex);
  const DWORD length = static_cast<DWORD>(m_TempPath.size());
  if (size <= length) return length + 1;
  std::memcpy(buffer, m_TempPath.c_str(), length + 1);
  return length;
}

BOOL SimSession::EnumWindows(WNDENUMPROC visit, void* context) {
  if (!Passes("EnumWindows")) return FALSE;
  std::size_t count = 0;
  {
    const std::lock_guard guard(m_Mutex);
    count = m_Windows.size();
  }
  for (std::size_t window = 1; window <= count; ++window) {
    if (!visit(reinterpret_cast<HANDLE>(window), context)) return FALSE;
  }
  return TRUE;
}

int SimSession::GetWindowTextW(HANDLE window, char16_t* title, int size) {
  if (!Passes("GetWindowTextW")) return 0;
  const std::lock_guard guard(m_Mutex);
  const auto number = reinterpret_cast<std::uintptr_t>(window);
  if (number == 0 || number > m_Windows.size() || size <= 0) return 0;
  const std::u16string shown = m_Windows[number - 1].substr(0, static_cast<std::size_t>(size - 1));
  std::memcpy(title, shown.c_str(), (shown.size() + 1) * sizeof(char16_t));
  return static_cast<int>(shown.size());
}

BOOL SimSession::GetComputerNameExW(int nameType, char16_t* name, DWORD* size) {
  if (!Passes("GetComputerNameExW")) return FALSE;
  const std::lock_guard guard(m_Mutex);
  if (nameType != ComputerNameDnsDomain) return Fail(ERROR_INVALID_PARAMETER);
  const auto length = static_cast<DWORD>(m_DnsDomain.size());
  if (*size <= length) {
    *size = length + 1;
    return Fail(ERROR_MORE_DATA);
  }
  std::memcpy(name, m_DnsDomain.c_str(), (length + 1) * sizeof(char16_t));
  *size = length;
  return TRUE;
}

DWORD SimSession::NetGetDCName(LPCWSTR, LPCWSTR domain, std::u16string* controller) {
  constexpr DWORD kNoController = 2453;  // NERR_DCNotFound
  if (const DWORD code = m_Gate.Enter("NetGetDCName", kNoController); code != ERROR_SUCCESS)
    return code;
  const std::lock_guard guard(m_Mutex);
  const auto found = m_DomainControllers.find(FoldCase(ViewOf(domain)));
  if (found == m_DomainControllers.end()) return kNoController;
  *controller = found->second;
  return ERROR_SUCCESS;
}

}  // namespace corvane::platform::sim
