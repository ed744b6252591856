// One policy round: snapshot, lists, publication, one act.

#include <algorithm>

#include "monitors/bluetooth_monitor_singleton.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "policy/candidate_list.h"
#include "policy/decisions.h"
#include "policy/policy.h"
#include "policy/policy_log.h"
#include "policy/policy_text.h"
#include "policy/round_watch.h"
#include "settings/global_config_container.h"
#include "store/csv_helper.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr std::uint64_t kScoreLog = DBG(37);
constexpr std::size_t kRowsKept = 400;  // of CSVHelper; the first ones of a longer list are dropped

class PolicyRound {
 public:
  explicit PolicyRound(CWlanInterface& adapter) : m_Round(adapter) {}

  void Run() {
    SetBluetoothPenalty();
    const BssEntryList inRange = EntriesInRange(m_Round.adapter);
    GatherConnection();

    m_Round.candidates = inRange;
    KeepCandidates(&m_Round.candidates, m_Round.config->m_Denylist.Rows(), m_Round.idx);
    SortCandidates(&m_Round.candidates, m_Round.settings.preferPrivate);
    PublishNetworksInRange();
    if (m_Round.facts.connected && !m_Round.settings.networkSwitching)
      KeepNetwork(&m_Round.candidates, m_Round.facts.ssid, m_Round.idx);
    FilterByAllowlist();
    if (m_Round.facts.connected) m_Round.adapter.m_consec_disconnects = 0;
    LogSettings();
    PublishRows(m_Round.candidates, value::kCandidatesCSV, "SORT");
    m_Round.others = OtherEntries(inRange, m_Round.candidates);
    PublishRows(m_Round.others, value::kNONCandidatesCSV, "OTHER");
    LogScores();
    RoundWatches::Candidates(m_Round.adapter, m_Round.facts, m_Round.candidates);
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
    m_Round.adapter.SetBTPenalty(active ? static_cast<std::int32_t>(config.m_BTPenaltyValue.load())
                                        : 0);
  }

  void GatherConnection() {
    m_Round.facts.connected = m_Round.adapter.GetConnectedSSID(&m_Round.facts);
    if (!m_Round.facts.connected) m_Round.facts.bssid.fill(0xFF);
    CGlobalQUAYPolicy::UpdateAssociateLQPegging(&m_Round.adapter, m_Round.facts.connected,
                                                &m_Round.facts.quality, m_Round.facts.ssid,
                                                m_Round.facts.bssid, "ExecutePolicies");
  }

  void PublishNetworksInRange() {
    bool found = false;
    const WString json = NetworksInRangeJson(m_Round.candidates, m_Round.facts.ssid, &found);
    m_Round.config->SetString(value::kProfiledNetworksInRangeJson, json);
    if (!found) {
      LOG_ADAPTER(
          m_Round.idx, kPolicyLog,
          u"[%i] CGlobalQUAYPolicy::ExecutePolicies: ERROR! %s not found in list of in-range "
          u"candidates\n",
          m_Round.idx, m_Round.facts.ssid);
    }
  }

  void FilterByAllowlist() {
    const ApListRows& rows = m_Round.config->m_Allowlist.Rows();
    const bool active = m_Round.settings.allowlistEnabled && !rows.empty();
    if (active) KeepAllowed(&m_Round.candidates, rows, m_Round.idx);
    m_Round.config->m_allowlist_active = active;
  }

  void LogSettings() const {
    const std::uint32_t lqct = m_Round.settings.qualityThreshold;
    const auto points = static_cast<std::int32_t>(m_Round.config->m_APScoreThreshold.load());
    const int switching = m_Round.settings.networkSwitching,
              preferPrivate = m_Round.settings.preferPrivate;
    const int latch = m_Round.config->m_LatchToPrivate;
    if (!m_Round.settings.passive) {
      LOG_ADAPTER(
          m_Round.idx, kPolicyLog,
          u"[%i] LQCT %lu, NS %i, Pref Priv %i, Latch to Priv %i, SD %i, avg qbss scores: %i "
          u"[2Ghz], %i [5Ghz], consec disc %lu, connected=%i\n\n",
          m_Round.idx, lqct, switching, preferPrivate, latch, points,
          m_Round.config->m_AvgQBSSScore2.load(), m_Round.config->m_AvgQBSSScore5.load(),
          m_Round.adapter.m_consec_disconnects, m_Round.facts.connected);
      return;
    }
    LOG_ADAPTER(
        m_Round.idx, kPolicyLog,
        u"[%i][PASSIVE - %s] LQCT %lu, NS %i, SD %i, Pref Priv %i, Latch to Priv %i, avg qbss "
        u"scores: %i [2Ghz], %i [5Ghz], consec disc %lu, connected=%i\n\n",
        m_Round.idx,
        m_Round.adapter.m_last_suggested_pos < 0
            ? WString(u"no suggestion")
            : u"last '" + m_Round.adapter.m_last_suggested_ssid + u"'",
        lqct, switching, points, preferPrivate, latch, m_Round.config->m_AvgQBSSScore2.load(),
        m_Round.config->m_AvgQBSSScore5.load(), m_Round.adapter.m_consec_disconnects,
        m_Round.facts.connected);
  }

  void PublishRows(const BssEntryList& entries, const char16_t* name, const char* logPrefix) {
    auto rows = CSVHelper::CreateObject();
    for (const auto& entry : entries) {
      LOG_ADAPTER(m_Round.idx, kCandidateDetailLog, u"%s",
                  SortLine(m_Round.idx, *entry, logPrefix));
    }
    for (std::size_t i = entries.size() - std::min(entries.size(), kRowsKept); i < entries.size();
         ++i) {
      if (rows->AddString(entries[i]->GetStatusLine(), true) < 0) {
        LOG_ERROR(u"[%i] -->FALIED to add to CSV\n", m_Round.idx);
      }
    }
    if (!m_Round.config->SetString(name, rows->GetString())) {
      LOG_ERROR(u"[%i] ===========> SetRegistry_%s() FAILED!\n", m_Round.idx, name);
    }
  }

  void LogScores() const {
    const log::Open open(m_Round.idx, kScoreLog);
    if (!open) return;
    for (const auto& entry : m_Round.candidates) {
      const MacAddress mac = entry->GetBssid();
      LOG_ADAPTER(m_Round.idx, kScoreLog,
                  u"[%i] SCORE LOG: [% 16s] {%02x-%02x-%02x-%02x-%02x-%02x} ++ %hs%hs\n",
                  m_Round.idx, entry->m_SSIDW, MAC_ARGS(mac), entry->m_ScoreLog,
                  entry->m_FinalScoreLog);
    }
  }

  // One act at most: what people ask for comes first. A client's order lives for one round; one
  // that comes while it is carried out waits for the next.
  void Act() {
    if (CheckAcceptSuggestion(m_Round)) {
      LogSkippedChoice(u"TRIED PASSIVE (SUGGESTION-ACCEPTANCE) CONNECT");
      return;
    }
    const UIConnectRequest order = m_Round.config->TakeUIConnectRequest();
    if (CheckExecuteConnectFromUI(m_Round, order, m_Round.candidates)) {
      LogSkippedChoice(u"EXECUTED UI CONNEC CMD - PROFILES");
    } else if (CheckExecuteConnectFromUI(m_Round, order, m_Round.others)) {
      LogSkippedChoice(u"EXECUTED UI CONNEC CMD - NON-PROFILES");
    } else {
      MakeChoice(m_Round);
    }
  }

  void LogSkippedChoice(const char16_t* why) const {
    const RoundSettings& settings = m_Round.settings;
    LOG_ADAPTER(m_Round.idx, kPolicyLog,
                u"\n[%i][Pilot=%i][SKIP CHOICE - %s][ENABLED %i/%i][ROAM-E %i/%i]\n", m_Round.idx,
                settings.pilot, why, settings.enabled, settings.serviceEnabled, settings.roaming,
                settings.gatewayRoaming);
  }

  Round m_Round;
};

}  // namespace

void ExecutePolicies(CWlanInterface& adapter) { PolicyRound(adapter).Run(); }

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
