#include "platform/windows/windows_driver.h"

#include "platform/windows/system_call.h"

namespace corvane::platform::windows {

HANDLE WindowsDriver::CreateFileW(LPCWSTR device, DWORD access, DWORD share) {
  return NullIfInvalid(ForwardOrFail("CreateFileW", [&] {
    return ::CreateFileW(Wide(device), access, share, nullptr, OPEN_EXISTING, 0, nullptr);
  }));
}

// Blocks until the driver has answered; a thread that is given up has its call cancelled.
BOOL WindowsDriver::DeviceIoControl(HANDLE device, DWORD code, const void* input, DWORD inputSize,
                                    void* output, DWORD outputSize, DWORD* returned) {
  ::DWORD count = 0;
  const BOOL done = ForwardOrFail("DeviceIoControl", [&] {
    return ::DeviceIoControl(device, code, const_cast<void*>(input), inputSize, output, outputSize,
                             &count, nullptr);
  });
  if (returned) *returned = count;
  return done;
}

BOOL WindowsDriver::CloseHandle(HANDLE device) {
  return ForwardOrFail("CloseHandle", [&] { return ::CloseHandle(device); });
}

}  // namespace corvane::platform::windows
