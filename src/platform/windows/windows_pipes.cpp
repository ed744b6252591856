#include "platform/windows/windows_pipes.h"

#include <algorithm>
#include <utility>

#include "platform/sim/kernel/sim_text.h"
#include "platform/windows/pipe_calls.h"
#include "platform/windows/system_call.h"

namespace corvane::platform::windows {

namespace {

constexpr int kMostEndingMs = 1000;  // of operations that were cancelled
constexpr DWORD kEndingPauseMs = 1;

::OVERLAPPED* Native(OVERLAPPED* overlapped) { return As<::OVERLAPPED>(overlapped); }

void WINAPI OnCompleted(::DWORD error, ::DWORD bytes, ::OVERLAPPED* overlapped) {
  PipeCalls::OnCompleted(error, bytes, As<OVERLAPPED>(overlapped));
}

// A client's end that has gone is told by several codes: one for a read, another for a write
// (ERROR_NO_DATA), a third for what was pending while this end was disconnected.
DWORD EndOf(DWORD error) {
  return error == ERROR_NO_DATA || error == ERROR_PIPE_NOT_CONNECTED ? ERROR_BROKEN_PIPE : error;
}

// An operation that is taken back unless the system has begun it.
class Beginning {
 public:
  Beginning(WindowsThreads& threads, HANDLE pipe, OVERLAPPED* overlapped,
            OVERLAPPED_COMPLETION_ROUTINE completion)
      : m_Threads(threads), m_Call(PipeCalls::Instance().Begin(pipe, overlapped, completion)) {}
  ~Beginning() {
    if (!m_bBegun) PipeCalls::Instance().Retract(m_Call);
  }
  Beginning(const Beginning&) = delete;
  Beginning& operator=(const Beginning&) = delete;

  // What the system has answered. Where it refuses it leaves the state that it began with.
  BOOL End(BOOL begun) {
    m_bBegun = begun != FALSE;
    if (begun) return TRUE;
    const DWORD error = EndOf(m_Threads.GetLastError());
    m_Call->overlapped->Internal = error;
    WindowsThreads::KeepLastError(error);
    return FALSE;
  }

 private:
  WindowsThreads& m_Threads;
  const PipeCalls::Place m_Call;
  bool m_bBegun = false;
};

DWORD LeftMs(ULONGLONG until) {
  if (until == ~0ULL) return INFINITE;
  const ULONGLONG now = ::GetTickCount64();
  return now < until ? static_cast<DWORD>(until - now) : 0;
}

}  // namespace

struct WindowsPipes::Connect {
  ::OVERLAPPED native{};
  const OVERLAPPED* overlapped = nullptr;  // the seam's, by which it is asked for

  bool IsPending() const {
    const volatile ULONG_PTR& state = native.Internal;
    return state == STATUS_PENDING;
  }
};

WindowsPipes::WindowsPipes(WindowsThreads& threads) : m_Threads(threads) {}

WindowsPipes::~WindowsPipes() {
  while (!m_Pipes.empty()) WindowsPipes::CloseHandle(m_Pipes.begin()->first);
  for (auto& connect : m_Lingering) {
    if (connect->IsPending()) connect.release();  // the system may still write to it
  }
}

BOOL WindowsPipes::Fail(DWORD code) {
  WindowsThreads::KeepLastError(code);
  return FALSE;
}

// ---- pipes and their clients ----------------------------------------------------------------

bool WindowsPipes::IsServed(std::u16string_view path) const {
  return std::ranges::any_of(m_Pipes, [&](const auto& entry) {
    return sim::FoldCase(entry.second.path) == sim::FoldCase(path);
  });
}

// Whoever made a pipe of that name first would own the clients: a first instance is made only when
// it is the machine's first (FILE_FLAG_FIRST_PIPE_INSTANCE, else ERROR_ACCESS_DENIED). Nobody
// inherits the server's end, whatever the attributes say: a child of the user's rights would serve
// the clients of the system.
HANDLE WindowsPipes::CreateNamedPipeW(LPCWSTR path, DWORD openMode, DWORD pipeMode,
                                      DWORD maxInstances, DWORD outBufferSize, DWORD inBufferSize,
                                      DWORD defaultTimeoutMs,
                                      const SECURITY_ATTRIBUTES* attributes) {
  const std::lock_guard lock(m_Mutex);
  const DWORD first = IsServed(path) ? 0 : FILE_FLAG_FIRST_PIPE_INSTANCE;
  SECURITY_ATTRIBUTES own = attributes ? *attributes : SECURITY_ATTRIBUTES{};
  own.bInheritHandle = FALSE;
  const HANDLE pipe = NullIfInvalid(ForwardOrFail("CreateNamedPipeW", [&] {
    return ::CreateNamedPipeW(Wide(path), openMode | FILE_FLAG_OVERLAPPED | first,
                              pipeMode | PIPE_REJECT_REMOTE_CLIENTS, maxInstances, outBufferSize,
                              inBufferSize, defaultTimeoutMs, As<::SECURITY_ATTRIBUTES>(&own));
  }));
  if (pipe) m_Pipes[pipe].path = path;
  return pipe;
}

// The connect of a pipe, made where there is none; with `overlapped` only the one that was begun
// with it. Null for what is no pipe of ours.
WindowsPipes::Connect* WindowsPipes::ConnectOf(HANDLE pipe, const OVERLAPPED* overlapped) {
  const std::lock_guard lock(m_Mutex);
  const auto found = m_Pipes.find(pipe);
  if (found == m_Pipes.end()) return nullptr;
  auto& connect = found->second.connect;
  if (overlapped) return connect && connect->overlapped == overlapped ? connect.get() : nullptr;
  if (!connect) connect = std::make_unique<Connect>();
  return connect.get();
}

// A client that has come and gone in between is one that was there: its read tells.
BOOL WindowsPipes::ConnectNamedPipe(HANDLE pipe, OVERLAPPED* overlapped) {
  Connect* const connect = ConnectOf(pipe);
  if (!connect) return Fail(ERROR_INVALID_HANDLE);
  if (connect->overlapped && connect->IsPending()) return Fail(ERROR_INVALID_PARAMETER);
  connect->overlapped = overlapped;
  connect->native = {};
  connect->native.hEvent = overlapped->hEvent;
  const BOOL connected =
      ForwardOrFail("ConnectNamedPipe", [&] { return ::ConnectNamedPipe(pipe, &connect->native); });
  if (connected) return TRUE;
  // The system leaves the state that it began with where it refuses.
  if (m_Threads.GetLastError() != ERROR_IO_PENDING) connect->native.Internal = 0;
  return m_Threads.GetLastError() == ERROR_NO_DATA ? Fail(ERROR_PIPE_CONNECTED) : FALSE;
}

BOOL WindowsPipes::GetOverlappedResult(HANDLE pipe, OVERLAPPED* overlapped, DWORD* transferred,
                                       BOOL wait) {
  Connect* const connect = ConnectOf(pipe, overlapped);
  ::OVERLAPPED* const native = connect ? &connect->native : Native(overlapped);
  // Here, and not in the system's call, as this wait ends when the thread is given up.
  if (wait && overlapped->hEvent && native->Internal == STATUS_PENDING)
    m_Threads.WaitForSingleObject(overlapped->hEvent, INFINITE);
  return ForwardOrFail("GetOverlappedResult", [&] {
    return ::GetOverlappedResult(pipe, native, As32(transferred), FALSE);
  });
}

BOOL WindowsPipes::ReadFileEx(HANDLE pipe, void* buffer, DWORD size, OVERLAPPED* overlapped,
                              OVERLAPPED_COMPLETION_ROUTINE completion) {
  Beginning read(m_Threads, pipe, overlapped, completion);
  return read.End(ForwardOrFail("ReadFileEx", [&] {
    return ::ReadFileEx(pipe, buffer, size, Native(overlapped), &OnCompleted);
  }));
}

BOOL WindowsPipes::WriteFileEx(HANDLE pipe, const void* buffer, DWORD size, OVERLAPPED* overlapped,
                               OVERLAPPED_COMPLETION_ROUTINE completion) {
  Beginning write(m_Threads, pipe, overlapped, completion);
  return write.End(ForwardOrFail("WriteFileEx", [&] {
    return ::WriteFileEx(pipe, buffer, size, Native(overlapped), &OnCompleted);
  }));
}

BOOL WindowsPipes::DisconnectNamedPipe(HANDLE pipe) {
  return ForwardOrFail("DisconnectNamedPipe", [&] { return ::DisconnectNamedPipe(pipe); });
}

// The system goes on with what is pending after the last handle has gone, as the thread that began
// it has to take the result. So that is ended here, and waited for.
BOOL WindowsPipes::CloseHandle(HANDLE handle) {
  EnterGate("CloseHandle");
  Pipe pipe;
  {
    const std::lock_guard lock(m_Mutex);
    const auto found = m_Pipes.find(handle);
    if (found == m_Pipes.end()) return Fail(ERROR_INVALID_HANDLE);
    pipe = std::move(found->second);
    m_Pipes.erase(found);
  }
  PipeCalls::Instance().Cancel(handle);
  OrFault([&] { return ::CancelIoEx(handle, nullptr); });
  AwaitEnds(handle, pipe.connect.get());
  PipeCalls::Instance().Forget(handle);
  const BOOL closed = ForwardOrFail("CloseHandle", [&] { return ::CloseHandle(handle); });
  m_Records.ReleaseFreed();
  const std::lock_guard lock(m_Mutex);
  std::erase_if(m_Lingering, [](const auto& connect) { return !connect->IsPending(); });
  if (pipe.connect && pipe.connect->IsPending()) m_Lingering.push_back(std::move(pipe.connect));
  return closed;
}

// At once, as a rule: the results wait for their threads to be scheduled.
void WindowsPipes::AwaitEnds(HANDLE handle, const Connect* connect) {
  for (int ms = 0; ms < kMostEndingMs; ++ms) {
    if (PipeCalls::Instance().HasEnded(handle) && (!connect || !connect->IsPending())) return;
    ::Sleep(ms == 0 ? 0 : kEndingPauseMs);
  }
}

BOOL WindowsPipes::GetNamedPipeClientProcessId(HANDLE pipe, ULONG* processId) {
  return ForwardOrFail("GetNamedPipeClientProcessId",
                       [&] { return ::GetNamedPipeClientProcessId(pipe, As32(processId)); });
}

std::size_t WindowsPipes::OpenHandles() const {
  const std::lock_guard lock(m_Mutex);
  return m_Pipes.size();
}

// ---- the alertable wait ---------------------------------------------------------------------

DWORD WindowsPipes::WaitForMultipleObjectsEx(DWORD count, const HANDLE* objects, BOOL waitAll,
                                             DWORD milliseconds, BOOL alertable) {
  EnterGate("WaitForMultipleObjectsEx");
  // One that was given up unwinds: it hears of no client any more.
  if (!alertable || WindowsThreads::IsAbandoned())
    return m_Threads.WaitForMultipleObjects(count, objects, waitAll, milliseconds);
  if (count == 0 || count >= MAXIMUM_WAIT_OBJECTS) {
    Fail(ERROR_INVALID_PARAMETER);
    return WAIT_FAILED;
  }
  const ULONGLONG until = milliseconds == INFINITE ? ~0ULL : ::GetTickCount64() + milliseconds;
  for (;;) {
    if (MakeCalls() > 0) return WAIT_IO_COMPLETION;
    const DWORD result = WaitOnce(count, objects, waitAll, LeftMs(until));
    if (result != WAIT_IO_COMPLETION)
      return result;  // else there may be nothing but cancelled ones
  }
}

// The event by which the thread is given up comes last of all, except in a wait for all of several.
DWORD WindowsPipes::WaitOnce(DWORD count, const HANDLE* objects, BOOL waitAll, DWORD milliseconds) {
  const HANDLE giveUp = waitAll && count > 1 ? nullptr : WindowsThreads::OwnGiveUpEvent();
  HANDLE all[MAXIMUM_WAIT_OBJECTS];
  DWORD many = count;
  std::copy_n(objects, count, all);
  if (giveUp) all[many++] = giveUp;
  const BOOL forAll = giveUp ? FALSE : waitAll;
  struct Answer {
    ::DWORD result;
    ::DWORD error;
  };
  const Answer answer = OrFault([&] {
    Answer it{::WaitForMultipleObjectsEx(many, all, forAll, milliseconds, TRUE), 0};
    it.error = ::GetLastError();
    return it;
  });
  if (answer.result == WAIT_FAILED) Fail(answer.error);
  WindowsThreads::ThrowIfAbandoned();
  return giveUp && answer.result == WAIT_OBJECT_0 + count ? WAIT_TIMEOUT : answer.result;
}

// As many as there are now: those that they bring about come at the next wait, so that a client
// that sends without a pause does not keep others out.
std::size_t WindowsPipes::MakeCalls() {
  PipeCalls& calls = PipeCalls::Instance();
  PipeCalls::Call call;
  std::size_t made = 0;
  for (std::size_t left = calls.CountTold(); left > 0 && calls.TakeTold(&call); --left) {
    ++made;
    if (call.routine) {
      call.routine(call.data);
    } else {
      call.completion(EndOf(call.error), call.bytes, call.overlapped);
    }
    WindowsThreads::ThrowIfAbandoned();
  }
  return made;
}

DWORD WindowsPipes::QueueUserAPC(PAPCFUNC routine, HANDLE thread, std::uintptr_t data) {
  EnterGate("QueueUserAPC");
  const HANDLE target = m_Threads.DuplicateSystemThread(thread);
  const DWORD error =
      target ? PipeCalls::Instance().Queue(target, routine, data) : ERROR_INVALID_HANDLE;
  if (error == ERROR_SUCCESS) return 1;
  Fail(error);
  return 0;
}

// ---- records --------------------------------------------------------------------------------

void* WindowsPipes::GlobalAlloc(std::size_t bytes) { return m_Records.Allocate(bytes); }

void WindowsPipes::GlobalFree(void* memory) {
  EnterGate("GlobalFree");
  m_Records.Free(memory);
}

// ---- security -------------------------------------------------------------------------------

// "As self": the access check is that of the process, whoever the thread acts for.
BOOL WindowsPipes::OpenThreadToken(HANDLE* token) {
  return ForwardOrFail("OpenThreadToken", [&] {
    return ::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, TRUE, token);
  });
}

BOOL WindowsPipes::OpenProcessToken(HANDLE* token) {
  return ForwardOrFail("OpenProcessToken", [&] {
    return ::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, token);
  });
}

BOOL WindowsPipes::CloseToken(HANDLE token) {
  return ForwardOrFail("CloseToken", [&] { return ::CloseHandle(token); });
}

BOOL WindowsPipes::GetTokenUser(HANDLE token, void* buffer, DWORD bufferSize, DWORD* size) {
  return ForwardOrFail("GetTokenUser", [&] {
    return ::GetTokenInformation(token, TokenUser, buffer, bufferSize, As32(size));
  });
}

// The text is the system's until LocalFree.
BOOL WindowsPipes::ConvertSidToStringSidW(const void* tokenUser, std::u16string* sid) {
  wchar_t* text = nullptr;
  const BOOL done = ForwardOrFail("ConvertSidToStringSidW", [&] {
    return ::ConvertSidToStringSidW(static_cast<const TOKEN_USER*>(tokenUser)->User.Sid, &text);
  });
  if (!done) return FALSE;
  *sid = reinterpret_cast<const char16_t*>(text);
  Forward("LocalFree", [&] { return ::LocalFree(text); });
  return TRUE;
}

BOOL WindowsPipes::ConvertStringSecurityDescriptorToSecurityDescriptorW(LPCWSTR sddl,
                                                                        DWORD revision,
                                                                        void** descriptor) {
  return ForwardOrFail("ConvertStringSecurityDescriptorToSecurityDescriptorW", [&] {
    return ::ConvertStringSecurityDescriptorToSecurityDescriptorW(Wide(sddl), revision, descriptor,
                                                                  nullptr);
  });
}

void WindowsPipes::LocalFree(void* descriptor) {
  Forward("LocalFree", [&] { return ::LocalFree(descriptor); });
}

// What the program's manifest says that it knows bounds the answer.
DWORD WindowsPipes::GetMajorVersion() {
  ::OSVERSIONINFOW version{};
  version.dwOSVersionInfoSize = sizeof(version);
  const BOOL done = Forward("GetMajorVersion", [&] { return ::GetVersionExW(&version); });
  return done ? version.dwMajorVersion : 0;
}

}  // namespace corvane::platform::windows
