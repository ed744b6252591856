// Whether the process stands on an interactive desktop, by the windows that it sees.

#include <array>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "foundation/text.h"
#include "monitors/utils.h"
#include "platform/platform.h"
#include "platform/session_api.h"

namespace corvane {

namespace {

constexpr int kTitleChars = 256;  // with the NUL

// Windows that every desktop of a user has.
bool IsDesktopTitle(WStringView title) {
  constexpr WStringView kHeads[] = {u"CiceroUIWndFrame", u"DDE Server Window", u"AutoCompleteProxy",
                                    u"Default IME"};
  for (const WStringView head : kHeads) {
    if (title.size() >= head.size() && ToLower(title.substr(0, head.size())) == ToLower(head))
      return true;
  }
  return false;
}

platform::BOOL EnumWindowsProc(platform::HANDLE window, void* isService) {
  std::array<char16_t, kTitleChars> title{};
  const int length = Os().session.GetWindowTextW(window, title.data(), kTitleChars);
  if (length <= 0 || !IsDesktopTitle({title.data(), static_cast<std::size_t>(length)}))
    return platform::TRUE;
  LOG_DEBUG(DBG(14), u"[hwnd %p] EnumWindowsProc: FOUND MATCH: %s\n", window,
            WString(title.data()));
  *static_cast<bool*>(isService) = false;
  return platform::FALSE;
}

}  // namespace

void CUtils::DetectRunningAsService() {
  bool isService = true;
  Guarded("CUtils", "EnumWindows", false, [&] {
    Os().session.EnumWindows(&EnumWindowsProc, &isService);
    return true;
  });
  m_bRunningAsService = isService;
}

}  // namespace corvane
