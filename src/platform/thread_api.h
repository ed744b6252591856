#pragma once
#include "platform/types.h"

namespace corvane::platform {

// A recursive lock. The storage belongs to the platform in force when it was initialised; it must
// be deleted under the same platform.
struct CRITICAL_SECTION {
  alignas(8) unsigned char storage[64] = {};
  const char* name = "";  // static text, for dead-end and lock-order reports
  int rank = 0;           // 0: not ranked; else locks are taken in rising rank
};

// Threads, kernel objects and locks. Safe for use from every thread. Handles are closed with
// CloseHandle exactly once; a handle may be closed while its object still runs or is waited on.
//
// An abandoned thread (TerminateThread) unwinds by ThreadAbandoned at its next Sleep, wait or other
// service call. Operations that destructors use (LeaveCriticalSection, DeleteCriticalSection,
// CloseHandle, SetEvent, EnterCriticalSection) never throw.
class ThreadApi {
 public:
  using ThreadProc = DWORD (*)(void* parameter);
  virtual ~ThreadApi() = default;

  // Starts a thread; null and GetLastError() on failure. `name` is static text for reports.
  virtual HANDLE CreateThread(ThreadProc start, void* parameter, const char* name, DWORD* threadId);
  // Gives the thread up: its handle becomes signalled at once with this exit code.
  virtual BOOL TerminateThread(HANDLE thread, DWORD exitCode);
  // Waits until every thread that was given up has unwound; false when one has not in this time. At
  // once true where a thread is gone when it is given up.
  virtual bool AwaitAbandoned(DWORD milliseconds);
  virtual BOOL GetExitCodeThread(HANDLE thread, DWORD* exitCode);
  virtual DWORD GetCurrentThreadId();

  virtual HANDLE CreateEventW(BOOL manualReset, BOOL initialState, const char* name);
  virtual BOOL SetEvent(HANDLE event);
  virtual BOOL ResetEvent(HANDLE event);
  virtual HANDLE CreateSemaphoreW(LONG initialCount, LONG maximumCount, const char* name);
  // Fails with ERROR_TOO_MANY_POSTS when the count would pass its maximum.
  virtual BOOL ReleaseSemaphore(HANDLE semaphore, LONG releaseCount, LONG* previousCount);
  virtual BOOL CloseHandle(HANDLE object);

  // WAIT_OBJECT_0 (+ index of the first signalled handle in order), WAIT_TIMEOUT or WAIT_FAILED. At
  // most 63 handles. A wait for all of several need not end when its thread is given up.
  virtual DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);
  virtual DWORD WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll,
                                       DWORD milliseconds);
  virtual void Sleep(DWORD milliseconds);

  virtual void InitializeCriticalSection(CRITICAL_SECTION* section, const char* name, int rank);
  virtual void EnterCriticalSection(CRITICAL_SECTION* section);
  virtual void LeaveCriticalSection(CRITICAL_SECTION* section);
  virtual void DeleteCriticalSection(CRITICAL_SECTION* section);

  // Around calls that serve the log alone, nested at will: what they do must not change the run. A
  // simulated machine neither counts them nor lets other threads go on, nor makes them fail at
  // random.
  virtual void BeginForLog() {}
  virtual void EndForLog() {}
  // Something does not hold that the program relies on; `text` is static. A simulated machine ends
  // its run with a report, a real one goes on. Never throws.
  virtual void ReportBroken(const char* text) noexcept { static_cast<void>(text); }

  // The calling thread's last error code. It is the seam's own, and set by failing operations only.
  virtual DWORD GetLastError();
  virtual void SetLastError(DWORD code);
};

}  // namespace corvane::platform
