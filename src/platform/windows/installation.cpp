#include "platform/windows/installation.h"

#include <algorithm>
#include <cstdio>

#include "platform/sim/kernel/sim_text.h"
#include "platform/windows/long_path.h"
#include "platform/windows/whole_file.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_home.h"
#include "platform/windows/windows_instance.h"
#include "platform/windows/windows_options.h"

namespace corvane::platform::windows {

namespace {

constexpr wchar_t kTask[] = L"Corvane";
constexpr int kTaskResource = 2;  // corvane-task.xml, in UTF-8
constexpr std::u16string_view kProgramMark = u"@PROGRAM@";
constexpr wchar_t kMakersKey[] = L"SOFTWARE\\OstrelNetworks";
constexpr wchar_t kKey[] = L"Corvane";
constexpr DWORD kStopMs = 30'000;
constexpr DWORD kTaskToolMs = 60'000;
constexpr std::size_t kLongestPath = 32'768;  // characters

enum Result { kDone = 0, kFailed = 1, kBadCall = 2 };

void Say(const std::string& text) { std::printf("%s\n", text.c_str()); }
int Complain(const std::string& text) {
  std::fprintf(stderr, "corvane: %s\n", text.c_str());
  return kFailed;
}

std::u16string OwnPath() {
  std::u16string path(kLongestPath, u'\0');
  path.resize(::GetModuleFileNameW(nullptr, Wide(path.data()), static_cast<::DWORD>(path.size())));
  return path;
}

// ---- the task -------------------------------------------------------------------------------

// Runs the system's tool for tasks without a window of its own; its exit code, or -1 when it does
// not run or not end.
int RunTaskTool(const std::wstring& arguments) {
  wchar_t folder[MAX_PATH] = {};
  const ::UINT length = ::GetSystemDirectoryW(folder, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) return -1;
  const std::wstring tool = std::wstring(folder) + L"\\schtasks.exe";
  std::wstring command = L"\"" + tool + L"\" " + arguments;
  ::STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  ::PROCESS_INFORMATION process{};
  if (!::CreateProcessW(tool.c_str(), command.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW,
                        nullptr, nullptr, &startup, &process)) {
    return -1;
  }
  ::DWORD code = 0;
  const bool ended = ::WaitForSingleObject(process.hProcess, kTaskToolMs) == WAIT_OBJECT_0 &&
                     ::GetExitCodeProcess(process.hProcess, &code);
  if (!ended) ::TerminateProcess(process.hProcess, 1);
  ::CloseHandle(process.hThread);
  ::CloseHandle(process.hProcess);
  return ended ? static_cast<int>(code) : -1;
}

bool IsTaskRegistered() { return RunTaskTool(std::wstring(L"/query /tn ") + kTask) == 0; }

std::u16string EscapedForXml(std::u16string_view text) {
  std::u16string escaped;
  for (const char16_t c : text) {
    switch (c) {
      case u'&':
        escaped += u"&amp;";
        break;
      case u'<':
        escaped += u"&lt;";
        break;
      case u'>':
        escaped += u"&gt;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

// The description of the task that runs `program`, as the tool reads it: UTF-16 with its mark.
std::u16string TaskXml(std::u16string_view program) {
  const ::HRSRC found =
      ::FindResourceW(nullptr, reinterpret_cast<const wchar_t*>(std::uintptr_t{kTaskResource}),
                      reinterpret_cast<const wchar_t*>(RT_RCDATA));
  const ::HGLOBAL loaded = found ? ::LoadResource(nullptr, found) : nullptr;
  if (!loaded) throw WindowsError("this program carries no description of its task");
  const std::string_view bytes(static_cast<const char*>(::LockResource(loaded)),
                               ::SizeofResource(nullptr, found));
  std::u16string xml(bytes.begin(), bytes.end());  // ASCII
  const std::size_t at = xml.find(kProgramMark);
  if (at == xml.npos) throw WindowsError("the description of the task names no program");
  return u"\xFEFF" + xml.replace(at, kProgramMark.size(), EscapedForXml(program));
}

// The description lies where administrators alone write until the tool has read it: whoever changes
// it chooses what runs as the system.
void RegisterTask(const WindowsHome& home) {
  const std::u16string file = home.Path() + u"\\task.xml";
  const std::u16string xml = TaskXml(OwnPath());
  const std::string_view bytes(reinterpret_cast<const char*>(xml.data()),
                               xml.size() * sizeof(char16_t));
  if (const DWORD error = WriteWholeFile(file, bytes); error != ERROR_SUCCESS)
    throw WindowsError(sim::ToUtf8(file) + " cannot be written: " + ErrorText(error));
  const int code = RunTaskTool(std::wstring(L"/create /tn ") + kTask + L" /xml \"" +
                               Wide(file.c_str()) + L"\" /f");
  ::DeleteFileW(LongPath(file).c_str());
  if (code != 0) {
    throw WindowsError("the task cannot be registered (schtasks gives " + std::to_string(code) +
                       "); are you an administrator?");
  }
}

// ---- settings -------------------------------------------------------------------------------

::HKEY Machine() { return static_cast<::HKEY>(HKEY_LOCAL_MACHINE); }

// Removes the program's key, and the maker's when nothing else is in it. 0, or the error itself.
DWORD RemoveSettings() {
  ::HKEY makers = nullptr;
  constexpr REGSAM kAccess = KEY_READ | KEY_WRITE | DELETE | KEY_WOW64_64KEY;
  LSTATUS result = ::RegOpenKeyExW(Machine(), kMakersKey, 0, kAccess, &makers);
  if (result == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
  if (result != ERROR_SUCCESS) return static_cast<DWORD>(result);
  result = ::RegDeleteTreeW(makers, kKey);
  ::DWORD keys = 0;
  ::DWORD values = 0;
  const LSTATUS counted = ::RegQueryInfoKeyW(makers, nullptr, nullptr, nullptr, &keys, nullptr,
                                             nullptr, &values, nullptr, nullptr, nullptr, nullptr);
  ::RegCloseKey(makers);
  if (counted == ERROR_SUCCESS && keys == 0 && values == 0) {
    ::RegDeleteKeyExW(Machine(), kMakersKey, KEY_WOW64_64KEY, 0);
  }
  return result == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : static_cast<DWORD>(result);
}

// ---- commands -------------------------------------------------------------------------------

int Stop() {
  if (!WindowsInstance::IsRunning()) {
    Say("No instance runs.");
    return kDone;
  }
  const DWORD error = WindowsInstance::RequestStop(kStopMs);
  if (error == WAIT_TIMEOUT) return Complain("the instance does not end");
  if (error != ERROR_SUCCESS) return Complain("it cannot be stopped: " + ErrorText(error));
  Say("Stopped in order.");
  return kDone;
}

int Install(const WindowsOptions& options) {
  if (const int stopped = Stop(); stopped != kDone) return stopped;
  const WindowsHome home(options.home);
  RegisterTask(home);
  Say("Registered the task \"Corvane\": it runs at each start of this PC, as the system.");
  if (RunTaskTool(std::wstring(L"/run /tn ") + kTask) != 0) {
    return Complain("the task cannot be started now; it will be at the next start of this PC");
  }
  Say("Started it. Logs and history are in " + sim::ToUtf8(home.Path()) + ".");
  return kDone;
}

int Uninstall(const WindowsOptions& options, bool purge) {
  int result = Stop();
  if (IsTaskRegistered() && RunTaskTool(std::wstring(L"/delete /tn ") + kTask + L" /f") != 0) {
    result = Complain("the task cannot be removed; are you an administrator?");
  }
  const DWORD settings = RemoveSettings();
  if (settings != ERROR_SUCCESS) {
    result = Complain("the settings cannot be removed: " + ErrorText(settings));
  }
  if (!purge) {
    const std::string folder = sim::ToUtf8(WindowsHome::Locate(options.home));
    if (result == kDone) Say("Removed. Logs, history and key stay in " + folder + ".");
    return result;
  }
  WindowsHome::Remove(options.home);
  if (result == kDone) Say("Removed, with logs, history and key.");
  return result;
}

int Status(const WindowsOptions& options) {
  const bool runs = WindowsInstance::IsRunning();
  Say(std::string("Installed: ") + (IsTaskRegistered() ? "yes, as the task \"Corvane\"" : "no"));
  Say(std::string("Running: ") + (runs ? "yes" : "no"));
  Say("Folder: " + sim::ToUtf8(WindowsHome::Locate(options.home)));
  return runs ? kDone : kFailed;
}

bool IsCommand(const std::u16string& word) {
  static constexpr std::u16string_view kCommands[] = {u"--install", u"--uninstall", u"--status",
                                                      u"--stop", u"--purge"};
  return std::ranges::find(kCommands, word) != std::end(kCommands);
}

}  // namespace

bool IsInstallationCommand(const std::vector<std::u16string>& words) {
  return std::any_of(words.begin() + 1, words.end(), &IsCommand);
}

int RunInstallationCommand(const std::vector<std::u16string>& words) {
  const WindowsOptions options{.home = ReadWindowsOptions().home};
  const bool purge = words.size() == 3 && words[1] == u"--uninstall" && words[2] == u"--purge";
  if (purge) return Uninstall(options, true);
  if (words.size() == 2) {
    if (words[1] == u"--install") return Install(options);
    if (words[1] == u"--uninstall") return Uninstall(options, false);
    if (words[1] == u"--status") return Status(options);
    if (words[1] == u"--stop") return Stop();
  }
  std::fprintf(stderr,
               "corvane: --install, --uninstall [--purge], --status and --stop stand alone\n");
  return kBadCall;
}

}  // namespace corvane::platform::windows
