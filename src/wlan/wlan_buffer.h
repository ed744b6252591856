#pragma once
#include <utility>

namespace corvane {

// Gives a buffer of the platform back (WlanFreeMemory). Never throws; null is allowed.
void FreeWlanMemory(void* memory) noexcept;

// Owner of one buffer that a WLAN call gave out.
template <class T>
class WlanBuffer {
 public:
  WlanBuffer() = default;
  ~WlanBuffer() { FreeWlanMemory(m_pData); }
  WlanBuffer(WlanBuffer&& other) noexcept : m_pData(std::exchange(other.m_pData, nullptr)) {}
  WlanBuffer& operator=(WlanBuffer&& other) noexcept {
    if (this != &other)
      FreeWlanMemory(std::exchange(m_pData, std::exchange(other.m_pData, nullptr)));
    return *this;
  }

  T** Out() { return &m_pData; }  // for the call that fills it, once
  T* get() const { return m_pData; }
  T* operator->() const { return m_pData; }
  explicit operator bool() const { return m_pData != nullptr; }

 private:
  T* m_pData = nullptr;
};

}  // namespace corvane
