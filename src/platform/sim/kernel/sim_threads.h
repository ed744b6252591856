#pragma once
#include "platform/sim/kernel/kernel_objects.h"
#include "platform/sim/kernel/seam_gate.h"
#include "platform/sim/kernel/sim_locks.h"

namespace corvane::platform::sim {

// Threads, kernel objects and locks of the simulated PC, as one side sees them: the program, whose
// calls pass the gate, or the devices, whose calls never fail by injection.
class SimThreads final : public ThreadApi {
 public:
  enum class Side { kProgram, kDevices };

  SimThreads(Scheduler& scheduler, KernelObjects& objects, SimLocks& locks, SeamGate& gate,
             Side side)
      : m_Scheduler(scheduler), m_Objects(objects), m_Locks(locks), m_Gate(gate), m_Side(side) {}

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
  void BeginForLog() override;
  void EndForLog() override;
  void ReportBroken(const char* text) noexcept override;
  DWORD GetLastError() override;
  void SetLastError(DWORD code) override;

 private:
  // Whether the operation goes on; otherwise the last error tells why not.
  bool Passes(const char* operation, DWORD ordinary);

  Scheduler& m_Scheduler;
  KernelObjects& m_Objects;
  SimLocks& m_Locks;
  SeamGate& m_Gate;
  const Side m_Side;
};

}  // namespace corvane::platform::sim
