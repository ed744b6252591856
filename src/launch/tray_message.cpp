#include "launch/tray_message.h"

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/platform.h"
#include "platform/window_api.h"

namespace corvane {

using namespace platform;

namespace {

constexpr std::uint64_t kTrayLog = DBG(14);
constexpr char16_t kWindowClass[] = u"QUAY Notification App";
constexpr char16_t kWindowTitle[] = u"Corvane Notification";

}  // namespace

bool PostMsgToTrayApp(int msgid, int index) {
  return Guarded("CGlobalConfig", "PostMsgToTrayApp", false, [&] {
    const HWND window = Os().windows.FindWindowW(kWindowClass, kWindowTitle);
    if (!window) {
      LOG_DEBUG(kTrayLog,
                u"CGlobalConfig::PostMsgToTrayApp: FindWindow(QUAY Notification App, Corvane "
                u"Notification) FAILED");
      return false;
    }
    const bool posted =
        Os().windows.PostMessageA(window, WM_COMMAND, static_cast<WPARAM>(msgid), index) != FALSE;
    LOG_DEBUG(kTrayLog, u"CGlobalConfig::PostMsgToTrayApp: %S: POST %i to hwnd 0x%p, IDX= %i",
              posted ? "success" : "failed", msgid, window, index);
    return posted;
  });
}

}  // namespace corvane
