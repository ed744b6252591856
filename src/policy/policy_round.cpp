// One policy round: snapshot, lists, publication, one act.

#include <algorithm>

#include "monitors/bluetooth_monitor_singleton.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "policy/candidate_list.h"
#include "policy/policy.h"
#include "policy/policy_log.h"
#include "policy/policy_text.h"
#include "policy/round_watch.h"
#include "store/csv_helper.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr std::uint64_t kScoreLog = DBG(37);
constexpr std::size_t kRowsKept = 400;  // of CSVHelper; the first ones of a longer list are dropped

class PolicyRound {
 public:
  explicit PolicyRound(CWlanInterface& adapter)
      : m_Adapter(adapter), m_Idx(adapter.GetConfigIdx()), m_pConfig(adapter.Config()) {}

  void Run() {
    SetBluetoothPenalty();
    const BssEntryList inRange = EntriesInRange(m_Adapter);
    GatherConnection();

    m_Candidates = inRange;
    KeepCandidates(&m_Candidates, m_pConfig->m_Denylist.Rows(), m_Idx);
    SortCandidates(&m_Candidates, m_pConfig->m_PreferPrivateNetwork);
    PublishNetworksInRange();
    if (m_Facts.connected && !m_pConfig->m_network_switching)
      KeepNetwork(&m_Candidates, m_Facts.ssid, m_Idx);
    FilterByAllowlist();
    if (m_Facts.connected) m_Adapter.m_consec_disconnects = 0;
    LogSettings();
    PublishRows(m_Candidates, value::kCandidatesCSV, "SORT");
    m_Others = OtherEntries(inRange, m_Candidates);
    PublishRows(m_Others, value::kNONCandidatesCSV, "OTHER");
    LogScores();
    RoundWatches::Candidates(m_Adapter, m_Facts, m_Candidates);
    Act();
  }

 private:
  // While Bluetooth moves data, it disturbs what shares its band.
  void SetBluetoothPenalty() {
    const auto& config = CGlobalConfigContainer::GetInstance();
    if (!config.m_bBTPenaltyEnabled) return;
    const bool active =
        IsBluetoothActive(CBluetoothMonitorSingleton::GetInstance().GetActivityEndTick(),
                          Os().clock.GetTickCount64());
    m_Adapter.SetBTPenalty(active ? static_cast<std::int32_t>(config.m_BTPenaltyValue.load()) : 0);
  }

  void GatherConnection() {
    m_Facts.connected = m_Adapter.GetConnectedSSID(&m_Facts);
    if (!m_Facts.connected) m_Facts.bssid.fill(0xFF);
    CGlobalQUAYPolicy::UpdateAssociateLQPegging(&m_Adapter, m_Facts.connected, &m_Facts.quality,
                                                m_Facts.ssid, m_Facts.bssid, "ExecutePolicies");
  }

  void PublishNetworksInRange() {
    bool found = false;
    const WString json = NetworksInRangeJson(m_Candidates, m_Facts.ssid, &found);
    m_pConfig->SetString(value::kProfiledNetworksInRangeJson, json);
    if (!found) {
      LOG_ADAPTER(
          m_Idx, kPolicyLog,
          u"[%i] CGlobalQUAYPolicy::ExecutePolicies: ERROR! %s not found in list of in-range "
          u"candidates\n",
          m_Idx, m_Facts.ssid);
    }
  }

  void FilterByAllowlist() {
    const ApListRows& rows = m_pConfig->m_Allowlist.Rows();
    const bool active = CGlobalConfigContainer::GetInstance().m_bAllowlistEnabled && !rows.empty();
    if (active) KeepAllowed(&m_Candidates, rows, m_Idx);
    m_pConfig->m_allowlist_active = active;
  }

  void LogSettings() const {
    const std::uint32_t lqct = m_pConfig->m_LQCThreshold;
    const auto points = static_cast<std::int32_t>(m_pConfig->m_APScoreThreshold.load());
    const int switching = m_pConfig->m_network_switching,
              preferPrivate = m_pConfig->m_PreferPrivateNetwork;
    const int latch = m_pConfig->m_LatchToPrivate;
    if (m_pConfig->IsAutoswitch()) {
      LOG_ADAPTER(
          m_Idx, kPolicyLog,
          u"[%i] LQCT %lu, NS %i, Pref Priv %i, Latch to Priv %i, SD %i, avg qbss scores: %i "
          u"[2Ghz], %i [5Ghz], consec disc %lu, connected=%i\n\n",
          m_Idx, lqct, switching, preferPrivate, latch, points, m_pConfig->m_AvgQBSSScore2.load(),
          m_pConfig->m_AvgQBSSScore5.load(), m_Adapter.m_consec_disconnects, m_Facts.connected);
      return;
    }
    LOG_ADAPTER(
        m_Idx, kPolicyLog,
        u"[%i][PASSIVE - %s] LQCT %lu, NS %i, SD %i, Pref Priv %i, Latch to Priv %i, avg qbss "
        u"scores: %i [2Ghz], %i [5Ghz], consec disc %lu, connected=%i\n\n",
        m_Idx,
        m_Adapter.m_last_suggested_pos < 0 ? WString(u"no suggestion")
                                           : u"last '" + m_Adapter.m_last_suggested_ssid + u"'",
        lqct, switching, points, preferPrivate, latch, m_pConfig->m_AvgQBSSScore2.load(),
        m_pConfig->m_AvgQBSSScore5.load(), m_Adapter.m_consec_disconnects, m_Facts.connected);
  }

  void PublishRows(const BssEntryList& entries, const char16_t* name, const char* logPrefix) {
    auto rows = CSVHelper::CreateObject();
    for (const auto& entry : entries) {
      LOG_ADAPTER(m_Idx, kCandidateDetailLog, u"%s", SortLine(m_Idx, *entry, logPrefix));
    }
    for (std::size_t i = entries.size() - std::min(entries.size(), kRowsKept); i < entries.size();
         ++i) {
      if (rows->AddString(entries[i]->GetStatusLine(), true) < 0) {
        LOG_ERROR(u"[%i] -->FALIED to add to CSV\n", m_Idx);
      }
    }
    if (!m_pConfig->SetString(name, rows->GetString())) {
      LOG_ERROR(u"[%i] ===========> SetRegistry_%s() FAILED!\n", m_Idx, name);
    }
  }

  void LogScores() const {
    const log::Open open(m_Idx, kScoreLog);
    if (!open) return;
    for (const auto& entry : m_Candidates) {
      const MacAddress mac = entry->GetBssid();
      LOG_ADAPTER(m_Idx, kScoreLog,
                  u"[%i] SCORE LOG: [% 16s] {%02x-%02x-%02x-%02x-%02x-%02x} ++ %hs%hs\n", m_Idx,
                  entry->m_SSIDW, MAC_ARGS(mac), entry->m_ScoreLog, entry->m_FinalScoreLog);
    }
  }

  // One act at most: what people ask for comes first. A client's order lives for one round; one
  // that comes while it is carried out waits for the next.
  void Act() {
    if (CGlobalQUAYPolicy::CheckAcceptSuggestion(&m_Adapter, m_Candidates, m_Facts)) {
      LogSkippedChoice(u"TRIED PASSIVE (SUGGESTION-ACCEPTANCE) CONNECT");
      return;
    }
    const UIConnectRequest order = m_pConfig->TakeUIConnectRequest();
    if (CGlobalQUAYPolicy::CheckExecuteConnectFromUI(&m_Adapter, order, m_Candidates, m_Facts)) {
      LogSkippedChoice(u"EXECUTED UI CONNEC CMD - PROFILES");
    } else if (CGlobalQUAYPolicy::CheckExecuteConnectFromUI(&m_Adapter, order, m_Others, m_Facts)) {
      LogSkippedChoice(u"EXECUTED UI CONNEC CMD - NON-PROFILES");
    } else {
      CGlobalQUAYPolicy::MakeChoice(&m_Adapter, m_Candidates, m_Facts);
    }
  }

  void LogSkippedChoice(const char16_t* why) const {
    const RoundFlags flags(*m_pConfig);
    LOG_ADAPTER(m_Idx, kPolicyLog,
                u"\n[%i][Pilot=%i][SKIP CHOICE - %s][ENABLED %i/%i][ROAM-E %i/%i]\n", m_Idx,
                flags.pilot, why, flags.enabled, flags.serviceEnabled, flags.roaming,
                flags.gatewayRoaming);
  }

  CWlanInterface& m_Adapter;
  const int m_Idx;
  const CSmartPointer<CQUAYInterfaceConfig> m_pConfig;
  ConnectionFacts m_Facts;
  BssEntryList m_Candidates;  // BssEntriesList, best first
  BssEntryList m_Others;      // OtherEntriesList: in range, but no candidates
};

}  // namespace

void CGlobalQUAYPolicy::ExecutePolicies(CWlanInterface* pIf) {
  if (!pIf) {
    LOG_DEBUG(kNullInterfaceLog, u"ExecutePolicies: pIf is NULL!\n");
    return;
  }
  const CSmartPointer<CWlanInterface> adapter(pIf);
  PolicyRound(*adapter).Run();
}

void CGlobalQUAYPolicy::UpdateAssociateLQPegging(CWlanInterface* pIf, bool connected,
                                                 std::uint32_t* quality, const WString& ssid,
                                                 const MacAddress& bssid, const char* tag) {
  const int idx = pIf->GetConfigIdx();
  if (!connected) {
    pIf->m_peg_active = false;
    pIf->m_assoc_lq = -1;
    pIf->m_bss_lq = -1;
    LOG_ADAPTER(
        idx, kPolicyLog,
        u"\n[%i]CGlobalQUAYPolicy::UpdateAssociateLQPegging[%S]: NOT CONNECTED: set PEG=false, "
        u"assoc SQ=-1, last BSS SQ=-1\n",
        idx, tag);
    return;
  }
  pIf->m_assoc_lq = static_cast<std::int32_t>(*quality);
  CSmartPointer<CWlanBssEntry> entry;
  const bool known = pIf->FindBssEntry(ssid, bssid, &entry);
  if (known) pIf->m_bss_lq = static_cast<std::int32_t>(entry->GetLQ());
  if (known && entry->GetLQ() > *quality) {
    LOG_ADAPTER(
        idx, kPolicyLog,
        u"\n[%i]CGlobalQUAYPolicy::UpdateAssociateLQPegging[%S]: SET PEG BEACON-SQ: change %lu "
        u"--to--> %lu\n",
        idx, tag, *quality, entry->GetLQ());
    *quality = entry->GetLQ();
    pIf->m_peg_active = true;
  } else {
    pIf->m_peg_active = false;
    LOG_ADAPTER(
        idx, kPolicyLog,
        u"\n[%i]CGlobalQUAYPolicy::UpdateAssociateLQPegging[%S]: CLEAR PEG SQ [USE ASSOCIATION "
        u"SQ]: keep %lu\n",
        idx, tag, *quality);
  }
}

}  // namespace corvane
