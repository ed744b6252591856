#pragma once
#include "platform/types.h"

namespace corvane::platform {

using SC_HANDLE = void*;

inline constexpr DWORD SC_MANAGER_ALL_ACCESS = 0xF003F;
inline constexpr DWORD SERVICE_ALL_ACCESS = 0xF01FF;
inline constexpr DWORD SERVICE_STOPPED = 1;
inline constexpr DWORD SERVICE_RUNNING = 4;

struct SERVICE_STATUS {
  DWORD dwServiceType = 0;
  DWORD dwCurrentState = 0;
  DWORD dwControlsAccepted = 0;
  DWORD dwWin32ExitCode = 0;
  DWORD dwServiceSpecificExitCode = 0;
  DWORD dwCheckPoint = 0;
  DWORD dwWaitHint = 0;
};
static_assert(sizeof(SERVICE_STATUS) == 28);

// The service manager of this machine (`machine` and `database` are null). Null or FALSE on
// failure, with the reason in ThreadApi::GetLastError(). Both kinds of handle belong to who opened
// them and go by CloseServiceHandle; a service's handle outlives that of its manager. Safe for use
// from every thread.
class ServiceApi {
 public:
  virtual ~ServiceApi() = default;
  virtual SC_HANDLE OpenSCManagerW(LPCWSTR machine, LPCWSTR database, DWORD access);
  virtual SC_HANDLE OpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access);
  // Of this moment; the state is SERVICE_STOPPED, SERVICE_RUNNING or one on the way between.
  virtual BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status);
  // TRUE once the start is under way; a driver runs by then. `arguments` are `count` texts, null
  // for 0.
  virtual BOOL StartServiceW(SC_HANDLE service, DWORD count, const LPCWSTR* arguments);
  virtual BOOL CloseServiceHandle(SC_HANDLE handle);
};

}  // namespace corvane::platform
