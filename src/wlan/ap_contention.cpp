#include "wlan/ap_contention.h"

#include "elements/frequency_table.h"

namespace corvane {

namespace {

// 0 where the model has no such entry. `bssidText` is in lower case, as the entries have it.
int BandOf(const NetworkMap& networks, const WString& ssid, const WString& bssidText) {
  const auto network = networks.find(ssid);
  if (network == networks.end()) return 0;
  for (const auto& [bssid, entry] : network->second->m_BssMap) {
    if (entry->m_BSSIDText == bssidText) return BandOfFrequency(entry->GetFrequencyKhz());
  }
  return 0;
}

}  // namespace

void ApContention::Update(const WString& ssid, const WString& bssidText, std::uint32_t channel) {
  const auto config = m_Adapter.Config();
  const CCritSecLock lock(m_Air.Lock());
  if (!m_Scans.HasHeardSurroundings()) return;
  Count(ssid, bssidText, channel);
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

void ApContention::Count(const WString& ssid, const WString& bssidText, std::uint32_t channel) {
  m_ContentionMemo.Clear();
  const WString channelText = Format(u"%lu", channel);
  // Channel numbers come again in other bands, where nobody contends.
  const int band = BandOf(m_Air.Networks(), ssid, bssidText);
  for (const auto& [name, network] : m_Air.Networks()) {
    for (const auto& [bssid, entry] : network->m_BssMap) {
      if (entry->m_Channel != channel) continue;
      if (band != 0 && BandOfFrequency(entry->GetFrequencyKhz()) != band) continue;
      if (name == ssid && entry->m_BSSIDText == bssidText) continue;
      m_ContentionMemo.Add(false, name.c_str(), entry->m_BSSIDText.c_str(), channelText.c_str(),
                           entry->GetBandText().c_str(), entry->m_bInternet, entry->GetLQ());
    }
  }
}

void ApContention::Clear() {
  const auto config = m_Adapter.Config();
  const CCritSecLock lock(m_Air.Lock());
  m_ContentionMemo.Clear();
  config->m_Etw.ClearLastAPContentionNotification();
}

WString ApContention::Text() { return m_ContentionMemo.GetSummary(nullptr); }

}  // namespace corvane
