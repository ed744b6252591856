#include "engine/driver_device.h"

#include <utility>

#include "engine/driver_records.h"
#include "foundation/guarded.h"
#include "platform/driver_api.h"
#include "platform/file_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char kClassName[] = "CLBDriverDevice";

}  // namespace

bool CLBDriverDevice::Open() {
  Close();
  m_hDevice = Guarded(kClassName, "Open", HANDLE{}, [] {
    return Os().driver.CreateFileW(kDeviceName, GENERIC_READ | GENERIC_WRITE,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE);
  });
  return IsOpen();
}

void CLBDriverDevice::Close() noexcept {
  if (HANDLE const device = std::exchange(m_hDevice, nullptr)) {
    GiveBack(kClassName, "Close", [device] { Os().driver.CloseHandle(device); });
  }
}

DWORD CLBDriverDevice::Control(DWORD code, const void* input, DWORD inputSize, void* output,
                               DWORD outputSize) {
  return Guarded(kClassName, "Control", ERROR_GEN_FAILURE,
                 [&] { return ControlUnguarded(code, input, inputSize, output, outputSize); });
}

DWORD CLBDriverDevice::ControlUnguarded(DWORD code, const void* input, DWORD inputSize,
                                        void* output, DWORD outputSize) {
  DWORD returned = 0;
  if (Os().driver.DeviceIoControl(m_hDevice, code, input, inputSize, output, outputSize,
                                  &returned)) {
    return ERROR_SUCCESS;
  }
  const DWORD error = Os().threads.GetLastError();
  return error == ERROR_SUCCESS ? ERROR_GEN_FAILURE : error;
}

}  // namespace corvane
