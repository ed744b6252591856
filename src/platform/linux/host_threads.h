#pragma once
#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/linux/host_time.h"
#include "platform/thread_api.h"

namespace corvane::platform::linux_host {

class HostAlerts;

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

  // The alerts of the calling thread, made when they are first asked for; and of another one, by
  // its handle: null when it has ended.
  HostAlerts& OwnAlerts() { return *OwnSharedAlerts(); }
  std::shared_ptr<HostAlerts> OwnSharedAlerts();
  std::shared_ptr<HostAlerts> AlertsOf(HANDLE thread);
  // WaitForMultipleObjects by a thread that sleeps in `sleep` instead: it is called without a lock,
  // returns at the moment in life at the latest, and soon after a Wake of the thread's alerts.
  // True from it ends the wait with WAIT_IO_COMPLETION. It is called once at least, unless an
  // object is signalled at the start.
  using Sleeper = std::function<bool(HostTime::RealClock::time_point until)>;
  DWORD WaitAlertably(DWORD count, const HANDLE* objects, BOOL waitAll, DWORD milliseconds,
                      const Sleeper& sleep);

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
  bool Prepare(Wait* wait, DWORD count, const HANDLE* objects);  // false with the last error set
  bool RunAlertableWait(std::unique_lock<std::mutex>& lock, Wait& wait, DWORD milliseconds,
                        const Sleeper& sleep);
  static std::shared_ptr<HostAlerts> AlertsOf(Thread& thread);
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
