#include "platform/windows/console_text.h"

#include "platform/utf.h"
#include "platform/windows/win32.h"

namespace corvane::platform::windows {

DWORD WriteText(std::string_view text, DWORD which) {
  const HANDLE to = ::GetStdHandle(which);
  ::DWORD mode = 0;
  ::DWORD written = 0;
  if (::GetConsoleMode(to, &mode)) {
    const std::u16string wide = ToUtf16(text);
    for (std::size_t at = 0; at < wide.size(); at += written) {
      const auto left = static_cast<::DWORD>(wide.size() - at);
      if (!::WriteConsoleW(to, wide.data() + at, left, &written, nullptr)) return ::GetLastError();
    }
    return ERROR_SUCCESS;
  }
  while (!text.empty()) {
    if (!::WriteFile(to, text.data(), static_cast<::DWORD>(text.size()), &written, nullptr))
      return ::GetLastError();
    text.remove_prefix(written);
  }
  return ERROR_SUCCESS;
}

}  // namespace corvane::platform::windows
