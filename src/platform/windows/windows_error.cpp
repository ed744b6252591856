#include "platform/windows/windows_error.h"

#include "platform/sim/kernel/sim_text.h"
#include "platform/windows/win32.h"

namespace corvane::platform::windows {

std::string ErrorText(DWORD code) {
  char16_t text[512];
  DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, code, 0, Wide(text), std::size(text), nullptr);
  while (length > 0 && text[length - 1] <= u' ') --length;
  if (length == 0) return "error " + std::to_string(code);
  return sim::ToUtf8({text, length}) + " (error " + std::to_string(code) + ")";
}

}  // namespace corvane::platform::windows
