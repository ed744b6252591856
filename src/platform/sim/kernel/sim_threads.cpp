#include "platform/sim/kernel/sim_threads.h"

namespace corvane::platform::sim {

bool SimThreads::Passes(const char* operation, DWORD ordinary) {
  if (m_Side == Side::kDevices) {
    m_Scheduler.CountCall();
    return true;
  }
  const DWORD code = m_Gate.Enter(operation, ordinary);
  if (code != ERROR_SUCCESS) m_Scheduler.Current().lastError = code;
  return code == ERROR_SUCCESS;
}

HANDLE SimThreads::CreateThread(ThreadProc start, void* parameter, const char* name,
                                DWORD* threadId) {
  if (!Passes("CreateThread", ERROR_NOT_ENOUGH_MEMORY)) return nullptr;
  return m_Objects.CreateThread(start, parameter, name, m_Side == Side::kDevices, threadId);
}

BOOL SimThreads::TerminateThread(HANDLE thread, DWORD exitCode) {
  if (!Passes("TerminateThread", ERROR_ACCESS_DENIED)) return FALSE;
  return m_Objects.TerminateThread(thread, exitCode);
}

bool SimThreads::AwaitAbandoned(DWORD milliseconds) {
  const std::uint64_t deadline = m_Scheduler.DeadlineIn(milliseconds);
  while (m_Scheduler.AbandonedThreads() > 0) {
    if (m_Scheduler.NowMs() >= deadline) return false;
    m_Scheduler.SleepUntil(m_Scheduler.NowMs() + 1);
    m_Scheduler.ThrowIfAbandoned();
  }
  return true;
}

BOOL SimThreads::GetExitCodeThread(HANDLE thread, DWORD* exitCode) {
  if (!Passes("GetExitCodeThread", ERROR_ACCESS_DENIED)) return FALSE;
  return m_Objects.GetExitCodeThread(thread, exitCode);
}

DWORD SimThreads::GetCurrentThreadId() { return m_Scheduler.Current().id; }

HANDLE SimThreads::CreateEventW(BOOL manualReset, BOOL initialState, const char* name) {
  if (!Passes("CreateEventW", ERROR_NOT_ENOUGH_MEMORY)) return nullptr;
  return m_Objects.CreateEvent(manualReset != FALSE, initialState != FALSE, name,
                               m_Side == Side::kDevices);
}

BOOL SimThreads::SetEvent(HANDLE event) {
  if (!Passes("SetEvent", ERROR_GEN_FAILURE)) return FALSE;
  return m_Objects.SetEvent(event);
}

BOOL SimThreads::ResetEvent(HANDLE event) {
  if (!Passes("ResetEvent", ERROR_GEN_FAILURE)) return FALSE;
  return m_Objects.ResetEvent(event);
}

HANDLE SimThreads::CreateSemaphoreW(LONG initialCount, LONG maximumCount, const char* name) {
  if (!Passes("CreateSemaphoreW", ERROR_NOT_ENOUGH_MEMORY)) return nullptr;
  return m_Objects.CreateSemaphore(initialCount, maximumCount, name, m_Side == Side::kDevices);
}

BOOL SimThreads::ReleaseSemaphore(HANDLE semaphore, LONG releaseCount, LONG* previousCount) {
  if (!Passes("ReleaseSemaphore", ERROR_GEN_FAILURE)) return FALSE;
  return m_Objects.ReleaseSemaphore(semaphore, releaseCount, previousCount);
}

BOOL SimThreads::CloseHandle(HANDLE object) {
  if (!Passes("CloseHandle", ERROR_GEN_FAILURE)) return FALSE;
  return m_Objects.CloseHandle(object);
}

DWORD SimThreads::WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  if (!Passes("WaitForSingleObject", ERROR_GEN_FAILURE)) return WAIT_FAILED;
  // A wait for a thread's end is what destructors do, so it goes on in a thread that was given up.
  if (milliseconds == INFINITE || !m_Objects.IsThread(object)) m_Scheduler.ThrowIfAbandoned();
  return m_Objects.Wait(1, &object, false, milliseconds);
}

DWORD SimThreads::WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll,
                                         DWORD milliseconds) {
  if (!Passes("WaitForMultipleObjects", ERROR_GEN_FAILURE)) return WAIT_FAILED;
  m_Scheduler.ThrowIfAbandoned();
  return m_Objects.Wait(count, objects, waitAll != FALSE, milliseconds);
}

void SimThreads::Sleep(DWORD milliseconds) {
  m_Scheduler.Call();
  m_Scheduler.ThrowIfAbandoned();
  m_Scheduler.SleepUntil(m_Scheduler.DeadlineIn(milliseconds));
  m_Scheduler.ThrowIfAbandoned();
}

void SimThreads::InitializeCriticalSection(CRITICAL_SECTION* section, const char* name, int rank) {
  m_Locks.Initialize(section, name, rank);
}

void SimThreads::EnterCriticalSection(CRITICAL_SECTION* section) { m_Locks.Enter(section); }
void SimThreads::LeaveCriticalSection(CRITICAL_SECTION* section) { m_Locks.Leave(section); }
void SimThreads::DeleteCriticalSection(CRITICAL_SECTION* section) { m_Locks.Delete(section); }

void SimThreads::BeginForLog() { ++m_Scheduler.Current().forLog; }
void SimThreads::EndForLog() { --m_Scheduler.Current().forLog; }
void SimThreads::ReportBroken(const char* text) noexcept {
  m_Scheduler.Report("Broken invariant: " + std::string(text) + "\n" + m_Scheduler.DescribeAll());
}

DWORD SimThreads::GetLastError() { return m_Scheduler.Current().lastError; }
void SimThreads::SetLastError(DWORD code) { m_Scheduler.Current().lastError = code; }

}  // namespace corvane::platform::sim
