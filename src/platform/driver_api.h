#pragma once
#include "platform/types.h"

namespace corvane::platform {

// Codes of devices, drivers and the services behind them (winerror.h).
inline constexpr DWORD ERROR_OUTOFMEMORY = 14;
inline constexpr DWORD ERROR_NOT_READY = 21;
inline constexpr DWORD ERROR_DEVICE_UNREACHABLE = 321;
inline constexpr DWORD ERROR_SERVICE_ALREADY_RUNNING = 1056;
inline constexpr DWORD ERROR_CANNOT_DETECT_DRIVER_FAILURE = 1080;
inline constexpr DWORD ERROR_ALREADY_INITIALIZED = 1247;
inline constexpr DWORD ERROR_REVISION_MISMATCH = 1306;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;

// Devices of drivers. Null or FALSE on failure, with the reason in ThreadApi::GetLastError(). Safe
// for use from every thread; a control call may block for as long as the driver takes.
class DriverApi {
 public:
  virtual ~DriverApi() = default;
  // OPEN_EXISTING, without security attributes.
  virtual HANDLE CreateFileW(LPCWSTR device, DWORD access, DWORD share);
  virtual BOOL DeviceIoControl(HANDLE device, DWORD code, const void* input, DWORD inputSize,
                               void* output, DWORD outputSize, DWORD* returned);
  virtual BOOL CloseHandle(HANDLE device);
};

}  // namespace corvane::platform
