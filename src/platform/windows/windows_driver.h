#pragma once
#include "platform/driver_api.h"

namespace corvane::platform::windows {

// Devices of drivers.
class WindowsDriver final : public DriverApi {
 public:
  HANDLE CreateFileW(LPCWSTR device, DWORD access, DWORD share) override;
  BOOL DeviceIoControl(HANDLE device, DWORD code, const void* input, DWORD inputSize, void* output,
                       DWORD outputSize, DWORD* returned) override;
  BOOL CloseHandle(HANDLE device) override;
};

}  // namespace corvane::platform::windows
