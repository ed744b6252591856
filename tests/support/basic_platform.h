#pragma once
// A small platform for tests of single classes: real threads, a clock that the test sets, files in
// memory, a console that is captured. Every service can be told to fail; those that are not here
// answer that they are not implemented.

#include <condition_variable>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/clock_api.h"
#include "platform/console_api.h"
#include "platform/crypto_api.h"
#include "platform/event_trace_api.h"
#include "platform/file_api.h"
#include "platform/ip_helper_api.h"
#include "platform/network_list_api.h"
#include "platform/perf_counter_api.h"
#include "platform/platform.h"
#include "platform/power_api.h"
#include "platform/registry_api.h"
#include "platform/session_api.h"
#include "platform/thread_api.h"
#include "platform/wlan_api.h"

namespace corvane::test {

// Which operations fail: by name, with a code, from now until Pass.
class FailureSwitch {
 public:
  static constexpr platform::DWORD kFault = 0xC0000005;  // as a code: the call faults

  void Fail(std::string operation, platform::DWORD code = platform::ERROR_GEN_FAILURE) {
    const std::lock_guard guard(m_Mutex);
    m_Codes[std::move(operation)] = code;
  }
  void Pass(const std::string& operation) {
    const std::lock_guard guard(m_Mutex);
    m_Codes.erase(operation);
  }
  platform::DWORD CodeFor(const std::string& operation) {
    const std::lock_guard guard(m_Mutex);
    const auto found = m_Codes.find(operation);
    return found == m_Codes.end() ? platform::ERROR_SUCCESS : found->second;
  }

 private:
  std::mutex m_Mutex;
  std::map<std::string, platform::DWORD> m_Codes;
};

// Waits and sleeps take a hundredth of the time asked for.
class BasicThreads : public platform::ThreadApi {
 public:
  explicit BasicThreads(FailureSwitch& failures) : m_Failures(failures) {}
  ~BasicThreads() override { JoinAll(); }

  void JoinAll();  // waits for all threads to end, those that were given up too
  std::size_t OpenHandles();
  int OpenSections();

  platform::HANDLE CreateThread(ThreadProc start, void* parameter, const char* name,
                                platform::DWORD* threadId) override;
  platform::BOOL TerminateThread(platform::HANDLE thread, platform::DWORD exitCode) override;
  platform::BOOL GetExitCodeThread(platform::HANDLE thread, platform::DWORD* exitCode) override;
  platform::DWORD GetCurrentThreadId() override;
  platform::HANDLE CreateEventW(platform::BOOL manualReset, platform::BOOL initialState,
                                const char* name) override;
  platform::BOOL SetEvent(platform::HANDLE event) override;
  platform::BOOL ResetEvent(platform::HANDLE event) override;
  platform::HANDLE CreateSemaphoreW(platform::LONG initialCount, platform::LONG maximumCount,
                                    const char* name) override;
  platform::BOOL ReleaseSemaphore(platform::HANDLE semaphore, platform::LONG releaseCount,
                                  platform::LONG* previousCount) override;
  platform::BOOL CloseHandle(platform::HANDLE object) override;
  platform::DWORD WaitForSingleObject(platform::HANDLE object,
                                      platform::DWORD milliseconds) override;
  platform::DWORD WaitForMultipleObjects(platform::DWORD count, const platform::HANDLE* objects,
                                         platform::BOOL waitAll,
                                         platform::DWORD milliseconds) override;
  void Sleep(platform::DWORD milliseconds) override;
  void InitializeCriticalSection(platform::CRITICAL_SECTION* section, const char* name,
                                 int rank) override;
  void EnterCriticalSection(platform::CRITICAL_SECTION* section) override;
  void LeaveCriticalSection(platform::CRITICAL_SECTION* section) override;
  void DeleteCriticalSection(platform::CRITICAL_SECTION* section) override;
  platform::DWORD GetLastError() override;
  void SetLastError(platform::DWORD code) override;

 private:
  struct Object;
  using ObjectPtr = std::shared_ptr<Object>;

  platform::HANDLE Open(ObjectPtr object);
  ObjectPtr Find(platform::HANDLE handle);  // under m_Mutex; null with the last error set
  bool Fails(const char* operation);
  platform::DWORD TakeSignalled(const std::vector<ObjectPtr>& objects, bool all);
  static void ThrowIfAbandoned();

  FailureSwitch& m_Failures;
  std::mutex m_Mutex;
  std::condition_variable m_Changed;
  std::map<platform::HANDLE, ObjectPtr> m_Handles;
  std::uintptr_t m_NextHandle = 0x100;
  std::list<std::thread> m_Threads;
  platform::DWORD m_NextThreadId = 2;
  int m_Sections = 0;
};

class BasicClock : public platform::ClockApi {
 public:
  platform::ULONGLONG ticks = 1'000'000;
  platform::SYSTEMTIME now{2026, 11, 3, 18, 4, 20, 0, 123};

  platform::ULONGLONG GetTickCount64() override { return ticks; }
  void GetSystemTimeAsFileTime(platform::FILETIME* time) override {
    platform::SystemTimeToFileTime(now, time);
  }
};

class BasicConsole : public platform::ConsoleApi {
 public:
  bool keep = true;  // whether output is captured
  bool key = false;

  std::string Output();  // standard output so far; takes it away
  std::string Error();
  bool _kbhit() override { return key; }
  void WriteOutput(std::string_view text) override;
  void WriteError(std::string_view text) override;
  void FlushOutput() override {}

 private:
  std::mutex m_Mutex;
  std::string m_Output;
  std::string m_Error;
};

// Files by path; a directory is a path in `directories`, and no file needs one.
class BasicFiles : public platform::FileApi {
 public:
  BasicFiles(BasicThreads& threads, FailureSwitch& failures)
      : m_Threads(threads), m_Failures(failures) {}

  std::map<std::u16string, std::string> files;
  std::set<std::u16string> directories;
  std::u16string commonAppData;  // empty: SHGetFolderPathW fails
  int OpenFiles() const { return static_cast<int>(m_Open.size()); }

  platform::HANDLE CreateFileW(platform::LPCWSTR path, platform::DWORD access,
                               platform::DWORD disposition) override;
  platform::BOOL ReadFile(platform::HANDLE file, void* buffer, platform::DWORD size,
                          platform::DWORD* read) override;
  platform::BOOL WriteFile(platform::HANDLE file, const void* data, platform::DWORD size,
                           platform::DWORD* written) override;
  platform::BOOL FlushFileBuffers(platform::HANDLE file) override;
  platform::BOOL CloseFile(platform::HANDLE file) override;
  platform::BOOL GetFileSizeEx(platform::HANDLE file, platform::ULONGLONG* size) override;
  platform::BOOL CopyFileW(platform::LPCWSTR from, platform::LPCWSTR to,
                           platform::BOOL failIfExists) override;
  platform::BOOL MoveFileExW(platform::LPCWSTR from, platform::LPCWSTR to,
                             platform::DWORD flags) override;
  platform::BOOL DeleteFileW(platform::LPCWSTR path) override;
  platform::BOOL CreateDirectoryW(platform::LPCWSTR path) override;
  platform::DWORD GetFileAttributesW(platform::LPCWSTR path) override;
  platform::HRESULT SHGetFolderPathW(int csidl, std::u16string* path) override;

 private:
  struct OpenFile {
    std::u16string path;
    std::size_t position = 0;
    bool append = false;
  };

  platform::BOOL Refuse(platform::DWORD code);
  bool Fails(const char* operation);

  BasicThreads& m_Threads;
  FailureSwitch& m_Failures;
  std::map<platform::HANDLE, OpenFile> m_Open;
  std::uintptr_t m_NextHandle = 0x10000;
};

// The platform in force while it lives.
class BasicPlatform {
 public:
  explicit BasicPlatform(platform::IpHelperApi* ipHelper = nullptr);
  ~BasicPlatform();
  BasicPlatform(const BasicPlatform&) = delete;
  BasicPlatform& operator=(const BasicPlatform&) = delete;

  FailureSwitch failures;
  BasicThreads threads{failures};
  BasicClock clock;
  BasicConsole console;
  BasicFiles files{threads, failures};

 private:
  platform::CryptoApi m_Crypto;
  platform::EventTraceApi m_EventTrace;
  platform::IpHelperApi m_IpHelper;
  platform::NetworkListApi m_NetworkList;
  platform::PerfCounterApi m_PerfCounters;
  platform::PowerApi m_Power;
  platform::RegistryApi m_Registry;
  platform::SessionApi m_Session;
  platform::WlanApi m_Wlan;
  platform::Platform m_Platform;
};

}  // namespace corvane::test
