#pragma once
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/thread_api.h"

namespace corvane::platform::windows {

// Threads, kernel objects and locks of Windows. Every handle is the system's own, so that it may be
// waited on together with others. The handle of a thread is that of an event, which is set when the
// thread ends or is given up: the system's own would stay unsignalled while it unwinds. A wait of a
// thread that may be given up has one more handle, so that 63 are left for the caller; a wait for
// all of several is not ended by abandonment.
class WindowsThreads final : public ThreadApi {
 public:
  WindowsThreads();
  // Gives up the threads that still run. Ends the process with a message when one of them does not
  // end within ten seconds, as its memory could not be freed under it.
  ~WindowsThreads() override;

  // Throws ThreadAbandoned when the calling thread was given up, unless it unwinds already.
  static void ThrowIfAbandoned();
  static bool IsAbandoned();
  // The event by which the calling thread's waits end when it is given up; null for a thread that
  // was not made here.
  static HANDLE OwnGiveUpEvent();
  // The last error of the calling thread as the seam gives it: of failing operations only. The
  // system's own is changed by calls that succeed.
  static void KeepLastError(DWORD code);

  std::size_t OpenHandles() const;

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

  // A handle of the system for the thread of one of our handles, with the right to queue calls to
  // it; null when it has ended. The caller closes it by the system's CloseHandle.
  HANDLE DuplicateSystemThread(HANDLE thread) const;

 private:
  struct Thread;
  using ThreadPtr = std::shared_ptr<Thread>;

  static unsigned long __stdcall Run(void* thread);
  static DWORD WaitAbandonably(Thread& self, DWORD count, const HANDLE* objects, DWORD ms);
  BOOL Fail(DWORD code);
  ThreadPtr Find(HANDLE handle) const;  // null unless it is a thread's; needs m_Mutex
  bool IsOpen(DWORD count, const HANDLE* objects, bool* threadEnd) const;
  bool AwaitEnds(bool abandonedOnly, DWORD milliseconds);
  HANDLE Opened(HANDLE handle, DWORD error);

  mutable std::mutex m_Mutex;
  std::unordered_map<HANDLE, ThreadPtr> m_Handles;  // null for what is no thread
  std::unordered_map<Thread*, ThreadPtr> m_Running;
};

}  // namespace corvane::platform::windows
