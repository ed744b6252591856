#include "platform/driver_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

HANDLE DriverApi::CreateFileW(LPCWSTR, DWORD, DWORD) {
  SetNotImplemented();
  return nullptr;
}

BOOL DriverApi::DeviceIoControl(HANDLE, DWORD, const void*, DWORD, void*, DWORD, DWORD*) {
  SetNotImplemented();
  return FALSE;
}

BOOL DriverApi::CloseHandle(HANDLE) {
  SetNotImplemented();
  return FALSE;
}

}  // namespace corvane::platform
