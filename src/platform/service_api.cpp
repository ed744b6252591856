#include "platform/service_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

SC_HANDLE ServiceApi::OpenSCManagerW(LPCWSTR, LPCWSTR, DWORD) {
  SetNotImplemented();
  return nullptr;
}

SC_HANDLE ServiceApi::OpenServiceW(SC_HANDLE, LPCWSTR, DWORD) {
  SetNotImplemented();
  return nullptr;
}

BOOL ServiceApi::QueryServiceStatus(SC_HANDLE, SERVICE_STATUS*) {
  SetNotImplemented();
  return FALSE;
}

BOOL ServiceApi::StartServiceW(SC_HANDLE, DWORD, const LPCWSTR*) {
  SetNotImplemented();
  return FALSE;
}

BOOL ServiceApi::CloseServiceHandle(SC_HANDLE) {
  SetNotImplemented();
  return FALSE;
}

}  // namespace corvane::platform
