// The other access points on the channel of the connection, told when they change.

#include "platform/clock_api.h"
#include "platform/platform.h"
#include "wlan/binding/wlan_interface.h"

namespace corvane {

namespace {

constexpr std::uint64_t kRecentScanMs = 120000;

}  // namespace

void CWlanInterface::UpdateContentionAPs(const WString& ssid, const WString& bssidText,
                                         std::uint32_t channel) {
  const auto config = Config();
  const CCritSecLock lock(ObjectLock());
  const bool scannedLately = m_LastScanStart != 0 &&
                             Os().clock.GetTickCount64() - m_LastScanStart <= kRecentScanMs;
  if (m_connected_scan_count == 0 && !scannedLately) return;
  m_ContentionMemo.Clear();
  const WString channelText = Format(u"%lu", channel);
  for (const auto& [name, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) {
      if (entry->m_Channel != channel) continue;
      if (name == ssid && entry->m_BSSIDText == bssidText) continue;
      m_ContentionMemo.Add(false, name.c_str(), entry->m_BSSIDText.c_str(), channelText.c_str(),
                           entry->GetBandText().c_str(), entry->m_bInternet, entry->GetLQ());
    }
  }
  WString ssids, bssids, qualities, shortSummary;
  m_ContentionMemo.GetLists(&ssids, &bssids, &qualities);
  WString summary = m_ContentionMemo.GetSummary(&shortSummary);
  if (summary == u"none") summary.clear();
  if (config->m_Etw.IsContentionReported(shortSummary)) return;
  if (summary.empty()) {
    config->m_Etw.NotifyNoAPContention(ssid, bssidText, channel);
  } else {
    config->m_Etw.NotifyAPContention(ssid, bssidText, channel, summary, shortSummary, ssids, bssids,
                                     qualities);
  }
}

// The reporter's contention state has no lock of its own: the interface lock serves, here and above.
void CWlanInterface::ClearContention() {
  const auto config = Config();
  const CCritSecLock lock(ObjectLock());
  config->m_Etw.ClearLastAPContentionNotification();
}

}  // namespace corvane
