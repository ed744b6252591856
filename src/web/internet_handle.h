#pragma once
#include <utility>

#include "foundation/guarded.h"
#include "platform/http_api.h"
#include "platform/platform.h"

namespace corvane {

// A handle of the HTTP service, closed at the end of its scope.
class CInternetHandle {
 public:
  CInternetHandle() = default;
  explicit CInternetHandle(platform::HINTERNET handle) : m_hHandle(handle) {}
  ~CInternetHandle() { Close(); }
  CInternetHandle(const CInternetHandle&) = delete;
  CInternetHandle& operator=(const CInternetHandle&) = delete;

  platform::HINTERNET Get() const { return m_hHandle; }
  void Reset(platform::HINTERNET handle) {
    Close();
    m_hHandle = handle;
  }
  explicit operator bool() const { return m_hHandle != nullptr; }

 private:
  void Close() {
    const platform::HINTERNET handle = std::exchange(m_hHandle, nullptr);
    if (!handle) return;
    GiveBack("CInternetHandle", "WinHttpCloseHandle",
             [handle] { Os().http.WinHttpCloseHandle(handle); });
  }

  platform::HINTERNET m_hHandle = nullptr;
};

// A text that the HTTP service gave out, given back at the end of its scope.
class CInternetText {
 public:
  explicit CInternetText(char16_t* text) : m_pText(text) {}
  ~CInternetText() {
    if (!m_pText) return;
    GiveBack("CInternetText", "GlobalFree", [this] { Os().http.GlobalFree(m_pText); });
  }
  CInternetText(const CInternetText&) = delete;
  CInternetText& operator=(const CInternetText&) = delete;

 private:
  char16_t* m_pText;
};

}  // namespace corvane
