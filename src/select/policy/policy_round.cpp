// One policy round: snapshot, lists, publication, choice.

#include "config/settings/global_config_container.h"
#include "config/store/csv_helper.h"
#include "config/store/value_names.h"
#include "core/log/log.h"
#include "select/policy/candidate_list.h"
#include "select/policy/policy.h"
#include "select/policy/policy_text.h"

namespace corvane {

namespace {

constexpr std::uint64_t kPolicyLog = DBG(16) | DBG(17);
constexpr std::uint64_t kScoreLog = DBG(37);

void PublishNetworksInRange(int idx, CQUAYInterfaceConfig& config, const BssEntryList& entries,
                            const WString& connectedSsid) {
  bool found = false;
  const WString json = NetworksInRangeJson(entries, connectedSsid, &found);
  config.SetString(value::kProfiledNetworksInRangeJson, json);
  if (!found) {
    LOG_ADAPTER(idx, kPolicyLog,
                u"[%i] CGlobalQUAYPolicy::ExecutePolicies: ERROR! %s not found in list of in-range "
                u"candidates\n",
                idx, connectedSsid);
  }
}

void PublishRows(int idx, CQUAYInterfaceConfig& config, const BssEntryList& entries,
                 const char16_t* name) {
  auto rows = CSVHelper::CreateObject();
  for (const auto& entry : entries) {
    if (rows->AddString(entry->GetStatusLine(), true) < 0) LOG_ERROR(u"[%i] -->FALIED to add to CSV\n", idx);
  }
  if (!config.SetString(name, rows->GetString())) {
    LOG_ERROR(u"[%i] ===========> SetRegistry_%s() FAILED!\n", idx, name);
  }
}

void LogSettings(int idx, const CQUAYInterfaceConfig& config, std::uint32_t consecDisconnects,
                 bool connected) {
  const std::uint32_t lqct = config.m_LQCThreshold;
  const std::int32_t delta = static_cast<std::int32_t>(config.m_APScoreThreshold.load());
  if (config.IsAutoswitch()) {
    LOG_ADAPTER(idx, kPolicyLog,
                u"[%i] LQCT %lu, NS %i, Pref Priv %i, Latch to Priv %i, SD %i, avg qbss scores: %i "
                u"[2Ghz], %i [5Ghz], consec disc %lu, connected=%i\n\n",
                idx, lqct, config.m_network_switching.load(), config.m_PreferPrivateNetwork.load(),
                config.m_LatchToPrivate.load(), delta, config.m_AvgQBSSScore2.load(),
                config.m_AvgQBSSScore5.load(), consecDisconnects, connected);
  } else {
    LOG_ADAPTER(idx, kPolicyLog,
                u"[%i][PASSIVE - no suggestion] LQCT %lu, NS %i, SD %i, Pref Priv %i, Latch to Priv %i, "
                u"avg qbss scores: %i [2Ghz], %i [5Ghz], consec disc %lu, connected=%i\n\n",
                idx, lqct, config.m_network_switching.load(), delta, config.m_PreferPrivateNetwork.load(),
                config.m_LatchToPrivate.load(), config.m_AvgQBSSScore2.load(),
                config.m_AvgQBSSScore5.load(), consecDisconnects, connected);
  }
}

void LogScores(int idx, const BssEntryList& entries) {
  for (const auto& entry : entries) {
    const MacAddress mac = entry->GetBssid();
    LOG_ADAPTER(idx, kScoreLog,
                u"[%i] SCORE LOG: [% 16s] {%02x-%02x-%02x-%02x-%02x-%02x} ++ %hs%hs\n", idx,
                entry->m_SSIDW, MAC_ARGS(mac), entry->m_ScoreLog, entry->m_FinalScoreLog);
  }
}

}  // namespace

void CGlobalQUAYPolicy::ExecutePolicies(CWlanInterface* pIf) {
  if (!pIf) {
    LOG_DEBUG(DBG(18), u"ExecutePolicies: pIf is NULL!\n");
    return;
  }
  const CSmartPointer<CWlanInterface> adapter(pIf);
  const CSmartPointer<CQUAYInterfaceConfig> config = adapter->Config();
  const int idx = adapter->GetConfigIdx();

  const BssEntryList inRange = EntriesInRange(*adapter);
  ConnectionFacts facts;
  facts.connected = adapter->GetConnectedSSID(&facts);
  if (!facts.connected) facts.bssid.fill(0xFF);
  UpdateAssociateLQPegging(adapter.get(), facts.connected, &facts.quality, facts.ssid, facts.bssid,
                           "ExecutePolicies");

  BssEntryList candidates = inRange;
  KeepCandidates(&candidates);
  SortCandidates(&candidates, config->m_PreferPrivateNetwork);
  PublishNetworksInRange(idx, *config, candidates, facts.ssid);
  if (facts.connected && !config->m_network_switching) {
    std::erase_if(candidates, [&](const CSmartPointer<CWlanBssEntry>& entry) {
      return entry->m_SSIDW.empty() || !EqualsIgnoreCase(entry->m_SSIDW, facts.ssid);
    });
  }
  if (facts.connected) adapter->m_consec_disconnects = 0;

  LogSettings(idx, *config, adapter->m_consec_disconnects, facts.connected);
  PublishRows(idx, *config, candidates, value::kCandidatesCSV);
  PublishRows(idx, *config, OtherEntries(inRange, candidates), value::kNONCandidatesCSV);
  if (log::IsOpen(idx, kScoreLog)) LogScores(idx, candidates);

  MakeChoice(adapter.get(), candidates, facts);
}

void CGlobalQUAYPolicy::UpdateAssociateLQPegging(CWlanInterface* pIf, bool connected,
                                                 std::uint32_t* quality, const WString& ssid,
                                                 const MacAddress& bssid, const char* tag) {
  const int idx = pIf->GetConfigIdx();
  if (!connected) {
    pIf->m_peg_active = false;
    pIf->m_assoc_lq = -1;
    pIf->m_bss_lq = -1;
    LOG_ADAPTER(idx, kPolicyLog,
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
    LOG_ADAPTER(idx, kPolicyLog,
                u"\n[%i]CGlobalQUAYPolicy::UpdateAssociateLQPegging[%S]: SET PEG BEACON-SQ: change %lu "
                u"--to--> %lu\n",
                idx, tag, *quality, entry->GetLQ());
    *quality = entry->GetLQ();
    pIf->m_peg_active = true;
  } else {
    pIf->m_peg_active = false;
    LOG_ADAPTER(idx, kPolicyLog,
                u"\n[%i]CGlobalQUAYPolicy::UpdateAssociateLQPegging[%S]: CLEAR PEG SQ [USE ASSOCIATION "
                u"SQ]: keep %lu\n",
                idx, tag, *quality);
  }
}

}  // namespace corvane
