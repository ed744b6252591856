// The scores of one adapter's entries, worked out anew after each discovery.

#include "foundation/averager.h"
#include "foundation/log_lines.h"
#include "monitors/network_list_manager.h"
#include "store/process_flags.h"
#include "wlan/adapter_air.h"
#include "wlan/score_facts.h"

namespace corvane {

namespace {

// Load points and load percent over the entries of one band group.
struct LoadAverages {
  CAveragerBase<std::int32_t> points;
  CAveragerBase<double> load;
};

}  // namespace

std::optional<WString> AdapterAir::AskForLackOfInternet() {
  CNetworkListManager* const list = CNetworkListManager::Find();
  if (!m_Link.IsConnected() || !list) return std::nullopt;
  bool internet = false;
  NlmNetworkRecord record;
  if (list->DoesInterfaceHaveInternet(m_Adapter.Guid(), &internet, &record) != platform::S_OK)
    return std::nullopt;
  WString ssid = SsidText(m_Link.ConnAttrs().wlanAssociationAttributes.dot11Ssid);
  // Without a connection in the network list there is nothing to hand on.
  if (!record.name.empty()) list->SetConnectivityForNetwork(ssid, record.connectivity);
  if (internet) return std::nullopt;
  return ssid;
}

void AdapterAir::TellOfLackOfInternet(const std::optional<WString>& ssid) const {
  if (!ssid) return;
  LOG_ADAPTER(m_Adapter.Idx(), DBG(0) | DBG(16) | DBG(37),
              u"\n[%i] CWlanInterface::UpdateAllScores(): [%s] CONNECTION HAS NO INTERNET%s\n",
              m_Adapter.Idx(), *ssid, g_bVPNFound ? u", might be false due to VPN detected." : u"");
}

void AdapterAir::NoteShared(const MacAddress& bssid) {
  const CCritSecLock lock(m_SharedLock);
  m_Shared = bssid;
}

ScoreContext AdapterAir::GetScoreContext() const {
  ScoreContext context = GatherScoreContext(m_Adapter.Config().get());
  const CCritSecLock lock(m_SharedLock);
  if (!IsZero(m_Shared)) context.shared = m_Shared;
  return context;
}

void AdapterAir::UpdateAllScores() {
  const CCritSecLock lock(m_Lock);
  TellOfLackOfInternet(AskForLackOfInternet());
  const ScoreContext context = GetScoreContext();  // knows the connectivity just noted
  ScoreEntries(m_Link.Seen(), context);
  NoteChange();
}

void AdapterAir::ScoreEntries(const LinkSeen& link, const ScoreContext& context) {
  LoadAverages high, low;  // the 5 GHz range, and all else
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) {
      if (!entry->m_bss_scanned) continue;
      entry->UpdateScore(link.IsTo(bssid) ? link.quality : 0, context);
      entry->UpdateApCount(context);
      if (entry->m_QBSSPoints < 0) continue;
      LoadAverages& group = entry->IsIn5GHzRange() ? high : low;
      group.points.Add(entry->m_QBSSPoints);
      if (const double load = entry->GetRawLoadPct(); load >= 0.0) group.load.Add(load);
    }
  }
  RememberConnectivity();
  const auto config = m_Adapter.Config();
  config->m_AvgQBSSScore5 = high.points.Mean();
  config->m_AvgQBSSScore2 = low.points.Mean();
  config->m_AvgLoad5 = high.load.Mean();
  config->m_AvgLoad2 = low.load.Mean();
  LOG_ADAPTER(m_Adapter.Idx(), DBG(0),
              u"[%i] CWlanInterface::UpdateAllScores: Avg qbssload scores: 5Ghz=%i, 2Ghz=%i. Avg "
              u"load values: "
              u"5Ghz=%02.lf, 2Ghz=%0.2lf \n",
              m_Adapter.Idx(), config->m_AvgQBSSScore5, config->m_AvgQBSSScore2, config->m_AvgLoad5,
              config->m_AvgLoad2);
}

// What the entries know of their connectivity survives a loss of the tree. The memo has the rank of
// the maps, so it is written after their lock.
void AdapterAir::RememberConnectivity() {
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) {
      if (!entry->m_bss_scanned || !entry->m_bConnectivityKnown) continue;
      m_InternetMemo.Add(false, ssid.c_str(), entry->m_BSSIDText.c_str(),
                         entry->GetBandText().c_str(), Format(u"%lu", entry->m_Channel).c_str(),
                         entry->m_bInternetLatch, entry->GetLQ());
    }
  }
}

}  // namespace corvane
