#include "platform/windows/windows_services.h"

#include "platform/windows/system_call.h"

namespace corvane::platform::windows {

namespace {

::SC_HANDLE Handle(SC_HANDLE handle) { return static_cast<::SC_HANDLE>(handle); }

}  // namespace

SC_HANDLE WindowsServices::OpenSCManagerW(LPCWSTR machine, LPCWSTR database, DWORD access) {
  return ForwardOrFail("OpenSCManagerW",
                       [&] { return ::OpenSCManagerW(Wide(machine), Wide(database), access); });
}

SC_HANDLE WindowsServices::OpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access) {
  return ForwardOrFail("OpenServiceW",
                       [&] { return ::OpenServiceW(Handle(manager), Wide(name), access); });
}

BOOL WindowsServices::QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status) {
  return ForwardOrFail("QueryServiceStatus", [&] {
    return ::QueryServiceStatus(Handle(service), As<::SERVICE_STATUS>(status));
  });
}

BOOL WindowsServices::StartServiceW(SC_HANDLE service, DWORD count, const LPCWSTR* arguments) {
  // The system's parameter is not const, but the strings are only read.
  auto* const texts = reinterpret_cast<const wchar_t**>(const_cast<LPCWSTR*>(arguments));
  return ForwardOrFail("StartServiceW",
                       [&] { return ::StartServiceW(Handle(service), count, texts); });
}

BOOL WindowsServices::CloseServiceHandle(SC_HANDLE handle) {
  return ForwardOrFail("CloseServiceHandle", [&] { return ::CloseServiceHandle(Handle(handle)); });
}

}  // namespace corvane::platform::windows
