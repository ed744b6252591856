#pragma once
#include <mutex>
#include <set>

#include "platform/service_api.h"
#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform {
class ThreadApi;
}

namespace corvane::platform::sim {

class SimDriver;

// The service manager, which knows the service of the load-balance driver where that is installed.
class SimServices final : public ServiceApi {
 public:
  SimServices(SeamGate& gate, ThreadApi& threads, SimDriver& driver)
      : m_Gate(gate), m_Threads(threads), m_Driver(driver) {}

  SC_HANDLE OpenSCManagerW(LPCWSTR machine, LPCWSTR database, DWORD access) override;
  SC_HANDLE OpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access) override;
  BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status) override;
  BOOL StartServiceW(SC_HANDLE service, DWORD count, const LPCWSTR* arguments) override;
  BOOL CloseServiceHandle(SC_HANDLE handle) override;  // closes, also where the call fails

  std::size_t OpenHandles();

 private:
  SC_HANDLE Give();
  bool Knows(SC_HANDLE handle);
  BOOL Result(DWORD code);

  SeamGate& m_Gate;
  ThreadApi& m_Threads;
  SimDriver& m_Driver;
  std::mutex m_Mutex;  // guards what follows
  std::set<SC_HANDLE> m_Open;
  std::uintptr_t m_Next = 0;
};

}  // namespace corvane::platform::sim
