// What is told of the connection: to subscribers, to the history, and to the log.

#include "foundation/log_lines.h"
#include "history/history_row.h"
#include "history/network_csv.h"
#include "notify/notification_manager.h"
#include "platform/clock_api.h"
#include "policy/policy_text.h"
#include "service/main_worker.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr std::uint64_t kConnectionLog = DBG(31);
constexpr std::uint32_t kGateLearningSecs = 85;

ApSummary SummaryOfNow(CWlanInterface& adapter, const WString& ssid, const MacAddress& bssid,
                       std::uint32_t quality, std::int32_t score) {
  ConnectionFacts facts;
  facts.connected = true;
  facts.ssid = ssid;
  facts.bssid = bssid;
  facts.quality = quality;
  return SummaryOfConnection(adapter, facts, score);
}

const char16_t* AuthText(platform::LONG algorithm) {
  using namespace platform;
  switch (algorithm) {
    case DOT11_AUTH_ALGO_80211_OPEN:
      return u"Open";
    case DOT11_AUTH_ALGO_80211_SHARED_KEY:
      return u"Shared Key";
    case DOT11_AUTH_ALGO_WPA:
      return u"WPA";
    case DOT11_AUTH_ALGO_WPA_PSK:
      return u"WPA-PSK";
    case DOT11_AUTH_ALGO_RSNA:
      return u"WPA2";
    case DOT11_AUTH_ALGO_RSNA_PSK:
      return u"WPA2-PSK";
    case DOT11_AUTH_ALGO_WPA3:
      return u"WPA3";
    case DOT11_AUTH_ALGO_WPA3_SAE:
      return u"WPA3-SAE";
    default:
      return u"other";
  }
}

void DumpTraffic(int idx, CWlanInterface& adapter, const CQUAYInterfaceConfig& config) {
  auto pdh = adapter.Pdh();
  if (!pdh) pdh = CInterfacePDH::CreateObject();  // which measured nothing
  LOG_INFO(u"[%i]  Current TX: %0.3lf mbps, RX: %0.3lf mbps", idx, pdh->GetTxMbps(),
           pdh->GetRxMbps());
  LOG_INFO(u"[%i]  Thresholds: scan %0.3lf, switch %0.3lf", idx, config.m_rate_gate_low.load(),
           config.m_rate_gate_high.load());
  LOG_INFO(u"[%i]  Blast result: %0.3lf mbps", idx, adapter.GetBlastMbps());
  LOG_INFO(u"[%i]  Contention APs: %s", idx, adapter.ContentionText());
  LOG_INFO(u"[%i]  Combined Moving Average: %0.3lf mbps, below threshold: %0.1lf%%", idx,
           pdh->GetIdleMean(), 100.0 - pdh->GetPercentAboveLow());
  const double age = pdh->GetIdleSecs();
  if (pdh->IsIdleSettled()) {
    LOG_INFO(u"[%i]  Connection Age: %0.1lf [NOT NOISY - THRESHOLD CHANGE DISABLED]\n", idx, age);
  } else if (age <= kGateLearningSecs) {
    LOG_INFO(u"[%i]  Connection Age: %0.1lf <= %u [age is time since 1st idle PDH sample]\n", idx,
             age, kGateLearningSecs);
  } else {
    LOG_INFO(u"[%i]  Connection Age: %0.1lf > %u\n", idx, age, kGateLearningSecs);
  }
}

}  // namespace

void CQUAYMainWorker::ReportNewConnection(const Connection& now) {
  m_pInterface->RefreshIPInfo();
  LogRecord(kLogMemory, "<I>", "[Adapter", m_ConfigIdx, "] CURRENTLY CONNECTED to: ", now.ssid, " ",
            now.bssidText, " [Channel ", now.channel, "]");
  DumpConnection(now, true);
  m_pConfig->m_bReportStatusPending = false;
  SendConnectionStatus(&now);
  m_pConfig->m_bConnectedReported = true;
  m_pConfig->m_bCsvRowPending = true;
  if (now.entry) {
    m_pConfig->m_bCsvRowPending = false;
    WriteHistoryRow(now);
  }
}

void CQUAYMainWorker::ReportStandingConnection(const Connection& now) {
  // A connection that was lost for a while begins without addresses, and they may come late.
  if (!m_pInterface->Link().HasGatewayMacs()) m_pInterface->RefreshIPInfo();
  if (const log::Open open(m_ConfigIdx, kConnectionLog); open)
    m_pInterface->Link().DumpIPAddresses();
  m_pInterface->GatewayRoamingCheck();
  DumpConnection(now, false);
  if (m_pConfig->m_bReportStatusPending.exchange(false)) SendConnectionStatus(&now);
  m_pConfig->m_bConnectedReported = true;
  if (now.entry && m_pConfig->m_bCsvRowPending.exchange(false)) WriteHistoryRow(now);
}

// Once for each connection that was reported; a subscriber who comes while there is none hears of
// the next one.
void CQUAYMainWorker::ReportDisconnection() {
  m_pConfig->m_bCsvRowPending = true;
  if (!m_pConfig->m_bConnectedReported.exchange(false)) return;
  if (m_pConfig->m_bReportStatusPending.exchange(false)) SendConnectionStatus(nullptr);
  WriteDisconnectedRow();
}

void CQUAYMainWorker::SendConnectionStatus(const Connection* now) {
  constexpr WStringView kNone = u"None";
  WString summary(kNone), description;
  if (now) {
    WString phy;
    std::int32_t rssi = 0;
    const std::int32_t score =
        m_pInterface->GetScoreFromBssEntry(now->ssid, now->bssid, &phy, &rssi);
    summary =
        LongApSummary(SummaryOfNow(*m_pInterface, now->ssid, now->bssid, now->quality, score));
  }
  m_pConfig->GetString(value::kAdapterDescription, &description);
  QueueNotification(u"Corvane", u"ConnectionStatus", now ? u"Connected" : u"Disconnected", summary,
                    kNone, m_pInterface->GetMacText(), description);
}

void CQUAYMainWorker::WriteHistoryRow(const Connection& now) {
  std::uint32_t megabytes = 0;
  if (CGlobalConfigContainer::GetInstance().GetDWORD(value::kTelemetryConnectionsCSVFileSizeMB,
                                                     &megabytes)) {
    m_CsvFileSizeMB = static_cast<std::int32_t>(megabytes);
  }
  const std::int32_t score = m_pInterface->GetScoreFromBssEntry(now.ssid, now.bssid, false);
  WriteRow(ConnectedHistoryRow(platform::SystemTimeNow(), m_pInterface->GetMacText(),
                               SummaryOfNow(*m_pInterface, now.ssid, now.bssid, now.quality, score),
                               now.entry->GetRawLoadPct()));
}

void CQUAYMainWorker::WriteDisconnectedRow() {
  WriteRow(DisconnectedHistoryRow(platform::SystemTimeNow(), m_pInterface->GetMacText()));
}

void CQUAYMainWorker::WriteRow(const WString& row) {
  const bool kept = m_CsvFileSizeMB > 0;
  CNetworkCSV::GetInstance().WriteLineTelemetry(kept ? m_CsvFileSizeMB : 0, kept ? row : WString());
}

void CQUAYMainWorker::DumpConnection(const Connection& now, bool isNew) const {
  const int idx = m_ConfigIdx;
  const log::Open open(idx, kConnectionLog);
  if (!open) return;
  const auto& security = now.attrs.wlanSecurityAttributes;
  const auto& association = now.attrs.wlanAssociationAttributes;
  bool hidden = false;
  m_pInterface->GetProfileProperties(now.ssid, &hidden);
  LOG_INFO(u"[%i] %s to %s:", idx, isNew ? u"Currently Connected" : u"Still Connected",
           now.displayName);
  if (isNew) {
    LOG_INFO(u"[%i]  State: %i, Mode: %i, SSID: %s, PHY type: %i", idx, now.attrs.isState,
             now.attrs.wlanConnectionMode, now.ssid, association.dot11PhyType);
  }
  LOG_INFO(u"[%i]  Connection: %s", idx, m_pInterface->GetConnectionName());
  LOG_INFO(u"[%i]  Profile: %s", idx, now.attrs.strProfileName);
  LOG_INFO(u"[%i]  Security enabled: %i, enterprise: %i, authentication: %i %s", idx,
           security.bSecurityEnabled, security.bOneXEnabled, security.dot11AuthAlgorithm,
           AuthText(security.dot11AuthAlgorithm));
  LOG_INFO(u"[%i]  %s", idx, hidden ? u"[HIDDEN NETWORK]" : u"[VISIBLE NETWORK]");
  LOG_INFO(u"[%i]  Backup Score: %i, Score: %i", idx, m_pInterface->Link().BackupScore(),
           m_pInterface->GetScoreFromBssEntry(now.ssid, now.bssid, false));
  LOG_INFO(u"[%i]  BSSID: %s, Signal Quality: %lu", idx, now.bssidText, now.quality);
  LOG_INFO(u"[%i]  Rx/Tx: %lu/%lu kbps, Channel: %lu", idx, association.ulRxRate,
           association.ulTxRate, now.channel);
  DumpTraffic(idx, *m_pInterface, *m_pConfig);
}

}  // namespace corvane
