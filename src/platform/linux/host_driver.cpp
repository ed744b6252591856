#include "platform/linux/host_driver.h"

#include "platform/console_api.h"

namespace corvane::platform::linux_host {

HANDLE HostDriver::CreateFileW(LPCWSTR device, DWORD access, DWORD share) {
  HANDLE const opened = m_Devices.CreateFileW(device, access, share);
  if (!opened && !m_bTold.exchange(true)) {
    m_Console.WriteError(
        "corvane: the load-balance driver is not there; without it the engine does nothing\n");
  }
  return opened;
}

BOOL HostDriver::DeviceIoControl(HANDLE device, DWORD code, const void* input, DWORD inputSize,
                                 void* output, DWORD outputSize, DWORD* returned) {
  return m_Devices.DeviceIoControl(device, code, input, inputSize, output, outputSize, returned);
}

}  // namespace corvane::platform::linux_host
