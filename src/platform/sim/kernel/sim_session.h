#pragma once
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/session_api.h"

namespace corvane::platform {
class ClockApi;
class ThreadApi;
}  // namespace corvane::platform

namespace corvane::platform::sim {

class SeamGate;

// A run of a program that is real: a process of the host.
class IProgramRun {
 public:
  virtual ~IProgramRun() = default;  // ends what still runs
  virtual bool HasEnded(DWORD* exitCode) = 0;
  virtual const std::string& Output() = 0;  // so far
  virtual void End() = 0;
};

// A program of the simulated PC, as it behaves each time it is started.
struct SimProgram {
  std::string output = {};  // standard output and error; written halfway through the run
  DWORD exitCode = 0;
  DWORD runMs = INFINITE;  // INFINITE: runs until it is ended
  // Asked when it is started, on the starting thread and under no lock: the output, in the place of
  // the one above; and a real run, in the place of all of them. Null from it: no such program.
  std::function<std::string()> say = {};
  std::function<std::shared_ptr<IProgramRun>()> run = {};
};

// Sessions, users and processes of the simulated PC. At start one user is logged on at the console
// (session 1), and the programs that the service starts are there. Works by the clock that it is
// given, in virtual time and in real time alike.
class SimSession final : public SessionApi {
 public:
  static constexpr DWORD kFirstSession = 1;

  // `threads` keeps the calling thread's last error and sleeps.
  SimSession(SeamGate& gate, ThreadApi& threads, ClockApi& clock);
  ~SimSession() override;

  DWORD WTSGetActiveConsoleSessionId() override;
  BOOL WTSQueryUserToken(DWORD session, HANDLE* token) override;
  BOOL WTSEnumerateSessionsA(HANDLE server, DWORD reserved, DWORD version,
                             WTS_SESSION_INFOA** sessions, DWORD* count) override;
  void WTSFreeMemory(void* memory) override;
  BOOL CreateEnvironmentBlock(void** environment, HANDLE token, BOOL inherit) override;
  BOOL DestroyEnvironmentBlock(void* environment) override;
  BOOL CreateProcessAsUserW(HANDLE token, LPCWSTR application, LPCWSTR commandLine,
                            BOOL inheritHandles, DWORD flags, void* environment, LPCWSTR directory,
                            const STARTUPINFOW* startup, PROCESS_INFORMATION* process) override;
  DWORD WaitForSingleObject(HANDLE process, DWORD milliseconds) override;
  BOOL GetExitCodeProcess(HANDLE process, DWORD* exitCode) override;
  BOOL CloseHandle(HANDLE handle) override;
  BOOL CreatePipe(HANDLE* readEnd, HANDLE* writeEnd, const SECURITY_ATTRIBUTES* attributes,
                  DWORD size) override;
  BOOL PeekNamedPipe(HANDLE readEnd, DWORD* available) override;
  BOOL ReadFile(HANDLE readEnd, void* buffer, DWORD size, DWORD* read) override;
  HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD processId) override;
  BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W* entry) override;
  BOOL Process32NextW(HANDLE snapshot, PROCESSENTRY32W* entry) override;
  HANDLE OpenProcess(DWORD access, BOOL inheritHandle, DWORD processId) override;
  BOOL TerminateProcess(HANDLE process, DWORD exitCode) override;
  int system(const char* command) override;
  int _wsystem(LPCWSTR command) override;
  BOOL EnumWindows(WNDENUMPROC visit, void* context) override;
  int GetWindowTextW(HANDLE window, char16_t* title, int size) override;
  BOOL GetComputerNameExW(int nameType, char16_t* name, DWORD* size) override;
  DWORD NetGetDCName(LPCWSTR server, LPCWSTR domain, std::u16string* controller) override;
  DWORD GetTempPathA(DWORD size, char* buffer) override;

  // What the program started through CreateProcessAsUserW.
  struct Launch {
    std::u16string commandLine;
    std::u16string desktop;
    DWORD session = 0;
    DWORD flags = 0;
    bool environment = false;
    bool hidden = false;
  };

  void SetConsoleSession(DWORD session);      // NO_CONSOLE_SESSION: none
  void AddSession(DWORD session, bool user);  // or changes whether somebody is logged on there
  void RemoveSession(DWORD session);
  void Install(std::u16string_view executable, SimProgram program);
  // What the service's own program says when it is started here, unless it was installed already.
  void SetOwnProgram(std::function<std::string()> say);
  void Uninstall(std::u16string_view executable);
  DWORD StartProcess(std::u16string_view executable);  // outside of the program; gives its id
  void EndProcesses(std::u16string_view executable);   // all of the name, with exit code 0
  std::size_t CountRunning(std::u16string_view executable) const;
  bool IsRunning(DWORD processId) const;
  // Who a process is that is looked for by its id, asked when a snapshot is made, under no lock; to
  // be set before any thread starts. Such a process is only seen: those that can be opened and
  // ended stay this PC's own.
  using ProcessLookup = std::optional<std::u16string> (*)(DWORD processId);
  void SetProcessLookup(ProcessLookup lookup) { m_Lookup = lookup; }
  void SetCommandResult(int result);  // of the command interpreter; 0 at start
  void SetTempPath(std::string path);
  // Titles of the windows that the program sees, none at start: it runs as a service.
  void SetWindows(std::vector<std::u16string> titles);
  void SetDnsDomain(std::u16string name);
  // What NetGetDCName gives for a domain, by its name; every other has none.
  void SetDomainController(std::u16string_view domain, std::u16string name);

  std::vector<Launch> TakeLaunches();
  std::vector<std::u16string> TakeCommands();  // what the command interpreter was given
  std::size_t OpenHandles() const;

 private:
  static constexpr char16_t kOwnProgram[] = u"Corvane.exe";
  static constexpr DWORD kOwnRunMs = 200;

  struct Process {
    DWORD id = 0;
    std::u16string executable;
    SimProgram program = {};
    ULONGLONG started = 0;
    std::shared_ptr<IProgramRun> run = {};
    bool ended = false;  // by TerminateProcess
    DWORD exitCode = 0;
  };
  using ProcessPtr = std::shared_ptr<Process>;
  struct Token {
    DWORD session;
  };
  struct Pipe {
    ProcessPtr writer;
    std::size_t read = 0;
  };
  struct PipeEnd {
    std::shared_ptr<Pipe> pipe;
  };
  struct Snapshot {
    std::vector<ProcessPtr> processes;
    std::size_t next = 0;
  };
  struct Environment {};
  using Object = std::variant<Token, ProcessPtr, PipeEnd, Snapshot, Environment>;

  bool Passes(const char* operation, DWORD ordinary = ERROR_GEN_FAILURE);
  BOOL Fail(DWORD code) const;
  HANDLE Open(Object object);
  bool IsSought(DWORD processId) const { return m_Lookup && processId != 0; }
  template <class T>
  T* Find(HANDLE handle);  // null with the last error set
  ProcessPtr Start(std::u16string_view executable, SimProgram program, ULONGLONG now);
  int RunCommand(std::u16string command);
  BOOL NextEntry(Snapshot* snapshot, PROCESSENTRY32W* entry);
  static bool HasEnded(const Process& process, ULONGLONG now);
  static std::size_t Available(const Pipe& pipe, ULONGLONG now);

  SeamGate& m_Gate;
  ThreadApi& m_Threads;
  ClockApi& m_Clock;
  ProcessLookup m_Lookup = nullptr;
  mutable std::mutex m_Mutex;  // guards what follows
  DWORD m_ConsoleSession = kFirstSession;
  std::map<DWORD, bool> m_Sessions;                 // whether a user is logged on
  std::map<std::u16string, SimProgram> m_Programs;  // by folded name
  bool m_bOwnProgram = false;                       // was installed from outside
  std::list<ProcessPtr> m_Processes;
  DWORD m_LastProcessId = 1000;
  std::uintptr_t m_LastHandle = 0x700000;
  std::map<std::uintptr_t, Object> m_Handles;
  std::map<void*, std::unique_ptr<WTS_SESSION_INFOA[]>> m_Lists;
  std::vector<Launch> m_Launches;
  std::vector<std::u16string> m_Commands;
  int m_CommandResult = 0;
  std::string m_TempPath = "/data/temp/";
  std::vector<std::u16string> m_Windows;  // a window's handle is its position, counted from 1
  std::u16string m_DnsDomain = u"corvane.example";
  std::map<std::u16string, std::u16string> m_DomainControllers;  // by folded domain
};

}  // namespace corvane::platform::sim
