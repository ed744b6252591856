#include "platform/sim/devices/sim_services.h"

#include "platform/sim/devices/sim_driver.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/thread_api.h"

namespace corvane::platform::sim {

namespace {

constexpr DWORD ERROR_SERVICE_REQUEST_TIMEOUT = 1053;
constexpr DWORD ERROR_SERVICE_DOES_NOT_EXIST = 1060;
constexpr char16_t kDriverService[] = u"flowsplitsvc";
constexpr std::uintptr_t kFirstHandle = 0x53000000;

}  // namespace

SC_HANDLE SimServices::Give() {
  const std::lock_guard guard(m_Mutex);
  return *m_Open.insert(reinterpret_cast<SC_HANDLE>(kFirstHandle + ++m_Next)).first;
}

bool SimServices::Knows(SC_HANDLE handle) {
  const std::lock_guard guard(m_Mutex);
  return m_Open.contains(handle);
}

BOOL SimServices::Result(DWORD code) {
  if (code == ERROR_SUCCESS) return TRUE;
  m_Threads.SetLastError(code);
  return FALSE;
}

SC_HANDLE SimServices::OpenSCManagerW(LPCWSTR, LPCWSTR, DWORD) {
  return Result(m_Gate.Enter("OpenSCManagerW")) ? Give() : nullptr;
}

SC_HANDLE SimServices::OpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD) {
  DWORD code = m_Gate.Enter("OpenServiceW");
  if (code == ERROR_SUCCESS && !Knows(manager)) code = ERROR_INVALID_HANDLE;
  if (code == ERROR_SUCCESS &&
      (!m_Driver.IsInstalled() || FoldCase(ViewOf(name)) != FoldCase(kDriverService))) {
    code = ERROR_SERVICE_DOES_NOT_EXIST;
  }
  return Result(code) ? Give() : nullptr;
}

BOOL SimServices::QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status) {
  DWORD code = m_Gate.Enter("QueryServiceStatus");
  if (code == ERROR_SUCCESS && !Knows(service)) code = ERROR_INVALID_HANDLE;
  if (code == ERROR_SUCCESS) {
    *status = {};
    status->dwCurrentState = m_Driver.IsPresent() ? SERVICE_RUNNING : SERVICE_STOPPED;
  }
  return Result(code);
}

BOOL SimServices::StartServiceW(SC_HANDLE service, DWORD, const LPCWSTR*) {
  DWORD code = m_Gate.Enter("StartServiceW");
  if (code == ERROR_SUCCESS && !Knows(service)) code = ERROR_INVALID_HANDLE;
  if (code == ERROR_SUCCESS && !m_Driver.StartService()) code = ERROR_SERVICE_REQUEST_TIMEOUT;
  return Result(code);
}

BOOL SimServices::CloseServiceHandle(SC_HANDLE handle) {
  bool closed = false;
  {
    const std::lock_guard guard(m_Mutex);
    closed = m_Open.erase(handle) != 0;
  }
  const DWORD code = m_Gate.Enter("CloseServiceHandle");
  return Result(code == ERROR_SUCCESS && !closed ? ERROR_INVALID_HANDLE : code);
}

std::size_t SimServices::OpenHandles() {
  const std::lock_guard guard(m_Mutex);
  return m_Open.size();
}

}  // namespace corvane::platform::sim
