#pragma once
#include "foundation/guarded.h"
#include "platform/platform.h"
#include "platform/wlan_api.h"

namespace corvane {

// Owner of one buffer that a WLAN call gave out.
template <class T>
class CLBWlanBuffer {
 public:
  CLBWlanBuffer() = default;
  ~CLBWlanBuffer() {
    if (m_pData) {
      GiveBack("CLBWlanBuffer", "WlanFreeMemory", [this] { Os().wlan.WlanFreeMemory(m_pData); });
    }
  }
  CLBWlanBuffer(const CLBWlanBuffer&) = delete;
  CLBWlanBuffer& operator=(const CLBWlanBuffer&) = delete;

  T** Out() { return &m_pData; }  // for the call that fills it, once
  T* operator->() const { return m_pData; }
  explicit operator bool() const { return m_pData != nullptr; }

 private:
  T* m_pData = nullptr;
};

// The code of one WLAN call; a fault inside it is a failure.
template <typename Call>
platform::DWORD WlanCode(const char* operation, Call&& call) {
  return Guarded("LBEngine", operation, platform::ERROR_GEN_FAILURE, std::forward<Call>(call));
}

}  // namespace corvane
