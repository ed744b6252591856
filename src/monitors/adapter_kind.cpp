#include "monitors/adapter_kind.h"

#include <algorithm>
#include <initializer_list>

#include "platform/ip_types.h"

namespace corvane {

namespace {

using Words = std::initializer_list<WStringView>;

bool Contains(WStringView text, Words words) {
  return std::any_of(words.begin(), words.end(),
                     [text](WStringView word) { return text.find(word) != WStringView::npos; });
}

}  // namespace

bool HasVpnName(WStringView description) {
  // The word tap, not its letters inside another one.
  return Contains(description, {u"tap-windows", u"tap adapter"}) ||
         description.starts_with(u"tap ") || description.starts_with(u"tap-") ||
         Contains(description, {u" tap ", u" tap-", u"-tap-", u"-tap "}) ||
         description.ends_with(u" tap") || description.ends_with(u"-tap") ||
         Contains(description, {u"vpn", u"sonicwall", u"anyconnect", u"pangp", u"perimeter",
                                u"nord", u"encrypt", u"vypr", u"ikev2", u"sstp", u"pptp",
                                u"ncp secure", u"shrew soft", u"shrewsoft"});
}

bool IsActiveVpn(const AdapterFacts& adapter) {
  const WString description = ToLower(adapter.description);
  if (Contains(description, {u"teredo"})) return false;
  const bool tapWindows = Contains(description, {u"tap-windows adapter"});
  bool byType = false;
  switch (adapter.ifType) {
    case platform::IF_TYPE_PPP:
    case platform::IF_TYPE_SLIP:
    case platform::IF_TYPE_TUNNEL:
      byType = true;
      break;
    case platform::IF_TYPE_ETHERNET_CSMACD:
    case platform::IF_TYPE_PROP_VIRTUAL:
      break;
    default:
      if (!tapWindows) return false;
  }
  return adapter.IsUp() && (byType || tapWindows || HasVpnName(description));
}

bool IsLanCandidate(const AdapterFacts& adapter) {
  if (adapter.ifType != platform::IF_TYPE_IEEE80211 &&
      adapter.ifType != platform::IF_TYPE_ETHERNET_CSMACD) {
    return false;
  }
  const WString description = ToLower(adapter.description);
  return !Contains(description, {u"virtual", u"bluetooth", u"loopback", u"teredo", u"multiplexor",
                                 u"miniport"}) &&
         !HasVpnName(description);
}

}  // namespace corvane
