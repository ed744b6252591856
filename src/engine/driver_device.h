#pragma once
#include "platform/types.h"

namespace corvane {

// The driver's device, closed at the end of the scope. A control call may take as long as the
// driver likes: none is made with the engine lock held. A fault of the platform is a failed call,
// but for ControlUnguarded.
class CLBDriverDevice {
 public:
  CLBDriverDevice() = default;
  ~CLBDriverDevice() { Close(); }
  CLBDriverDevice(const CLBDriverDevice&) = delete;
  CLBDriverDevice& operator=(const CLBDriverDevice&) = delete;

  bool Open();
  void Close() noexcept;
  bool IsOpen() const { return m_hDevice != nullptr; }

  // 0, or the error of the call. The same record may serve both ways.
  platform::DWORD Control(platform::DWORD code, const void* input = nullptr,
                          platform::DWORD inputSize = 0, void* output = nullptr,
                          platform::DWORD outputSize = 0);
  // For a caller with a guard of its own, which tells of the fault in its own words.
  platform::DWORD ControlUnguarded(platform::DWORD code, const void* input = nullptr,
                                   platform::DWORD inputSize = 0, void* output = nullptr,
                                   platform::DWORD outputSize = 0);

 private:
  platform::HANDLE m_hDevice = nullptr;
};

}  // namespace corvane
