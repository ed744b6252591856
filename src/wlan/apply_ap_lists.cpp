// What the AP lists and the Bluetooth monitor write on the entries of an adapter.

#include "model/ap_list_marks.h"
#include "wlan/wlan_interface.h"

namespace corvane {

void CWlanInterface::ApplyPreferredRows(const PreferredApRows& rows) {
  const CCritSecLock lock(ObjectLock());
  MarkPreferred(rows, &m_Networks);
}

void CWlanInterface::ApplyDenyRows(const ApListRows& rows) {
  const CCritSecLock lock(ObjectLock());
  MarkDenied(rows, &m_Networks);
}

void CWlanInterface::SetBTPenalty(std::int32_t value) {
  const CCritSecLock guard(ObjectLock());
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) {
      if (!entry->IsIn5GHzRange()) entry->m_BTPenalty = value;
    }
  }
}

}  // namespace corvane
