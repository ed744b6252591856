#include "model/wlan_network.h"

#include "foundation/log_lines.h"
#include "model/base_netname.h"

namespace corvane {

CWlanNetwork::CWlanNetwork() : SmartObjEx("network", LockRank::kNetwork) {}

void CWlanNetwork::Update(const platform::WLAN_AVAILABLE_NETWORK& record, int ifIndex) {
  m_Available = record;
  m_IfIndex = ifIndex;
  m_SSIDA = SsidBytes(record.dot11Ssid);
  m_SSIDW = Utf8ToWide(m_SSIDA);
  m_BaseNetname = m_SSIDW;
  StripBandWord(&m_BaseNetname);
}

void CWlanNetwork::AddOrUpdateBss(const platform::WLAN_BSS_ENTRY& bss, const std::uint8_t* ies,
                                  std::uint32_t cbIEs, const CWlanBssEntry::Facts& facts,
                                  const ScoreContext& context, std::int32_t* lqDelta) {
  std::int32_t delta = 0;
  const auto [at, isNew] = m_BssMap.try_emplace(ToMac(bss.dot11Bssid));
  if (isNew) {
    try {
      auto entry = CWlanBssEntry::CreateObject();
      entry->UpdateFromBss(bss, ies, cbIEs, facts, m_IfIndex, context);
      at->second = std::move(entry);
    } catch (...) {
      m_BssMap.erase(at);
      throw;
    }
  } else {
    CWlanBssEntry& entry = *at->second;
    const CCritSecLock lock(entry.ObjectLock());
    delta = static_cast<std::int32_t>(bss.uLinkQuality) - static_cast<std::int32_t>(entry.GetLQ());
    CWlanBssEntry::Facts known = facts;
    known.internetState = kInternetUnknown;
    entry.UpdateFromBss(bss, ies, cbIEs, known, m_IfIndex, context);
  }
  if (lqDelta) *lqDelta = delta;
}

void CWlanNetwork::Dump(int index, const ScoreContext& context) const {
  LOG_ADAPTER(m_IfIndex, DBG(20),
              u"[%i] network %i: %s, %u BSSes, quality %lu, security %i, auth %i, flags 0x%lx%s\n",
              m_IfIndex, index, m_SSIDW, m_BssMap.size(), m_Available.wlanSignalQuality,
              m_Available.bSecurityEnabled, m_Available.dot11DefaultAuthAlgorithm,
              m_Available.dwFlags, m_Profile ? u", profile" : u"");
  for (const auto& [bssid, entry] : m_BssMap) {
    LOG_ADAPTER(
        m_IfIndex, DBG(20),
        u"[%i]   %s channel %lu, LQ %lu, rssi %i, scanned %i, missing %lu, score %i, %S%S\n",
        m_IfIndex, entry->m_BSSIDText, entry->m_Channel, entry->GetLQ(), entry->m_Bss.lRssi,
        entry->m_bss_scanned, entry->m_unscanned_count, entry->GetScore(false, context),
        entry->ScoreLog(), entry->FinalScoreLog());
  }
}

}  // namespace corvane
