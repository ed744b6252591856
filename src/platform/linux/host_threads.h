#pragma once
#include <chrono>
#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/linux/host_time.h"
#include "platform/thread_api.h"

namespace corvane::platform::linux_host {

// Threads, kernel objects and locks on POSIX threads. Events, semaphores and threads are waited on
// under one mutex, and each waiting thread has a condition of its own; a critical section is a
// recursive POSIX mutex inside its storage. Sleeps and waits last as long as the host's time says.
class HostThreads final : public ThreadApi {
 public:
  static constexpr DWORD kMaximumWaitObjects = 64;  // MAXIMUM_WAIT_OBJECTS
  static constexpr DWORD kStillActive = 259;        // STILL_ACTIVE

  explicit HostThreads(const HostTime& time);
  // Gives up the threads that still run. Ends the process with a message when one of them does not
  // end within ten seconds of life, as its memory could not be freed under it.
  ~HostThreads() override;

  // Waits for up to `limit` in life until every thread that was given up has unwound; the names of
  // those that have not.
  std::vector<std::string> WaitForAbandoned(std::chrono::milliseconds limit);
  std::size_t OpenHandles() const;

  // Throws ThreadAbandoned when the calling thread was given up, unless it unwinds already.
  static void ThrowIfAbandoned();
  static bool IsAbandoned();

  HANDLE CreateThread(ThreadProc start, void* parameter, const char* name,
                      DWORD* threadId) override;
  BOOL TerminateThread(HANDLE thread, DWORD exitCode) override;
  bool AwaitAbandoned(DWORD milliseconds) override;
  BOOL GetExitCodeThread(HANDLE thread, DWORD* exitCode) override;
  DWORD GetCurrentThreadId() override;
  HANDLE CreateEventW(BOOL manualReset, BOOL initialState, const char* name) override;
  BOOL SetEvent(HANDLE event) override;
  BOOL ResetEvent(HANDLE event) override;
  HANDLE CreateSemaphoreW(LONG initialCount, LONG maximumCount, const char* name) override;
  BOOL ReleaseSemaphore(HANDLE semaphore, LONG releaseCount, LONG* previousCount) override;
  BOOL CloseHandle(HANDLE object) override;
  DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) override;
  DWORD WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll,
                               DWORD milliseconds) override;
  void Sleep(DWORD milliseconds) override;
  void InitializeCriticalSection(CRITICAL_SECTION* section, const char* name, int rank) override;
  void EnterCriticalSection(CRITICAL_SECTION* section) override;
  void LeaveCriticalSection(CRITICAL_SECTION* section) override;
  void DeleteCriticalSection(CRITICAL_SECTION* section) override;
  DWORD GetLastError() override;
  void SetLastError(DWORD code) override;

 private:
  struct Object;
  struct Thread;
  struct Running;
  class Wait;
  enum class Kind { kEvent, kSemaphore, kThread };
  using ObjectPtr = std::shared_ptr<Object>;

  static Thread& Self();
  BOOL Fail(DWORD code);
  // These need m_Mutex.
  HANDLE Open(ObjectPtr object);
  ObjectPtr Find(HANDLE handle) const;
  ObjectPtr Find(HANDLE handle, Kind kind) const;
  void Serve(Object& object);
  bool RunWait(std::unique_lock<std::mutex>& lock, Wait& wait, DWORD milliseconds,
               bool abandonable);
  std::vector<std::string> Unfinished(bool abandonedOnly) const;

  void Run(Running& running);
  void Reap();
  std::vector<std::string> WaitForEnd(bool abandonedOnly, std::chrono::milliseconds limit);

  const HostTime& m_Time;
  mutable std::mutex m_Mutex;
  std::condition_variable m_ThreadEnded;
  std::unordered_map<std::uintptr_t, ObjectPtr> m_Handles;
  std::uintptr_t m_LastHandle = 0;
  std::list<Running> m_Threads;
};

}  // namespace corvane::platform::linux_host
