#pragma once
#include <atomic>

#include "platform/driver_api.h"

namespace corvane::platform {
class ConsoleApi;
}

namespace corvane::platform::linux_host {

// The devices as the host has them where the world has no driver. The first time that one is not
// there, a line of the error output says so: Linux itself has no load-balance driver.
class HostDriver final : public DriverApi {
 public:
  HostDriver(DriverApi& devices, ConsoleApi& console) : m_Devices(devices), m_Console(console) {}

  HANDLE CreateFileW(LPCWSTR device, DWORD access, DWORD share) override;
  BOOL DeviceIoControl(HANDLE device, DWORD code, const void* input, DWORD inputSize, void* output,
                       DWORD outputSize, DWORD* returned) override;
  BOOL CloseHandle(HANDLE device) override { return m_Devices.CloseHandle(device); }

 private:
  DriverApi& m_Devices;
  ConsoleApi& m_Console;
  std::atomic<bool> m_bTold{false};
};

}  // namespace corvane::platform::linux_host
