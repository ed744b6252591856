#pragma once
#include "platform/service_api.h"

namespace corvane::platform::windows {

// The service manager.
class WindowsServices final : public ServiceApi {
 public:
  SC_HANDLE OpenSCManagerW(LPCWSTR machine, LPCWSTR database, DWORD access) override;
  SC_HANDLE OpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access) override;
  BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status) override;
  BOOL StartServiceW(SC_HANDLE service, DWORD count, const LPCWSTR* arguments) override;
  BOOL CloseServiceHandle(SC_HANDLE handle) override;
};

}  // namespace corvane::platform::windows
