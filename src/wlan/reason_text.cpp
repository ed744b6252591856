#include "wlan/reason_text.h"

#include "platform/platform.h"
#include "platform/wlan_api.h"
#include "wlan/wlan_call.h"

namespace corvane {

WString ReasonText(platform::DWORD reason) {
  char16_t text[512] = {};
  const platform::DWORD result = CodeOfCall("CWlanInterface", "WlanReasonCodeToString", [&] {
    return Os().wlan.WlanReasonCodeToString(reason, std::size(text), text, nullptr);
  });
  if (result != platform::ERROR_SUCCESS) return {};
  const WStringView all(text, std::size(text));
  return WString(all.substr(0, all.find(u'\0')));
}

}  // namespace corvane
