// One policy round: snapshot, lists, publication, one act.

#include <algorithm>

#include "monitors/bluetooth_monitor_singleton.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "policy/candidate_list.h"
#include "policy/decisions.h"
#include "policy/policy.h"
#include "policy/round_lines.h"
#include "policy/round_watch.h"
#include "settings/global_config_container.h"
#include "store/csv_helper.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr std::size_t kRowsKept = 400;  // of CSVHelper; the first ones of a longer list are dropped

class PolicyRound {
 public:
  explicit PolicyRound(CWlanInterface& adapter) : m_Round(adapter) {}

  void Run() {
    SetBluetoothPenalty();
    const BssEntryList inRange = EntriesInRange(m_Round.adapter);
    GatherConnection();

    m_Round.candidates = inRange;
    KeepCandidates(&m_Round.candidates, m_Round.config->m_Denylist.Rows(), m_Round.scores,
                   m_Round.idx);
    SortCandidates(&m_Round.candidates, m_Round.settings.preferPrivate, m_Round.scores);
    PublishNetworksInRange();
    if (m_Round.facts.connected && !m_Round.settings.networkSwitching)
      KeepNetwork(&m_Round.candidates, m_Round.facts.ssid, m_Round.idx);
    FilterByAllowlist();
    if (m_Round.facts.connected) m_Round.memory.m_consec_disconnects = 0;
    lines::Settings(m_Round);
    PublishRows(m_Round.candidates, value::kCandidatesCSV, "SORT");
    m_Round.others = OtherEntries(inRange, m_Round.candidates, m_Round.scores);
    PublishRows(m_Round.others, value::kNONCandidatesCSV, "OTHER");
    lines::Scores(m_Round);
    RoundWatches::Candidates(m_Round);
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
    m_Round.link = {Os().clock.GetTickCount64(), m_Round.facts.connected, m_Round.facts.bssid,
                    m_Round.facts.quality, m_Round.adapter.GetTrafficMbps()};
    CGlobalQUAYPolicy::UpdateAssociateLQPegging(&m_Round.adapter, m_Round.facts.connected,
                                                &m_Round.facts.quality, m_Round.facts.ssid,
                                                m_Round.facts.bssid, "ExecutePolicies");
  }

  void PublishNetworksInRange() {
    bool found = false;
    const WString json = NetworksInRangeJson(m_Round.candidates, m_Round.facts.ssid, &found);
    m_Round.config->SetString(value::kProfiledNetworksInRangeJson, json);
    if (!found) {
      lines::ConnectedNotInRange(m_Round);
    }
  }

  void FilterByAllowlist() {
    const ApListRows& rows = m_Round.config->m_Allowlist.Rows();
    const bool active = m_Round.settings.allowlistEnabled && !rows.empty();
    if (active) KeepAllowed(&m_Round.candidates, rows, m_Round.idx);
    m_Round.config->m_allowlist_active = active;
  }

  void PublishRows(const BssEntryList& entries, const char16_t* name, const char* logPrefix) {
    auto rows = CSVHelper::CreateObject();
    for (const auto& entry : entries) {
      lines::Sorted(m_Round, *entry, logPrefix);
    }
    for (std::size_t i = entries.size() - std::min(entries.size(), kRowsKept); i < entries.size();
         ++i) {
      if (rows->AddString(entries[i]->GetStatusLine(m_Round.scores), true) < 0) {
        lines::RowNotAdded(m_Round);
      }
    }
    if (!m_Round.config->SetString(name, rows->GetString())) {
      lines::RowsNotPublished(m_Round, name);
    }
  }

  // One act at most: what people ask for comes first. A client's order lives for one round; one
  // that comes while it is carried out waits for the next.
  void Act() {
    if (CheckAcceptSuggestion(m_Round)) {
      lines::SkippedChoice(m_Round, u"TRIED PASSIVE (SUGGESTION-ACCEPTANCE) CONNECT");
      return;
    }
    const UIConnectRequest order = m_Round.config->TakeUIConnectRequest();
    if (CheckExecuteConnectFromUI(m_Round, order, m_Round.candidates)) {
      lines::SkippedChoice(m_Round, u"EXECUTED UI CONNEC CMD - PROFILES");
    } else if (CheckExecuteConnectFromUI(m_Round, order, m_Round.others)) {
      lines::SkippedChoice(m_Round, u"EXECUTED UI CONNEC CMD - NON-PROFILES");
    } else {
      MakeChoice(m_Round);
    }
  }

  Round m_Round;
};

}  // namespace

void ExecutePolicies(CWlanInterface& adapter) { PolicyRound(adapter).Run(); }

void CGlobalQUAYPolicy::UpdateAssociateLQPegging(CWlanInterface* pIf, bool connected,
                                                 std::uint32_t* quality, const WString& ssid,
                                                 const MacAddress& bssid, const char* tag) {
  const int idx = pIf->GetConfigIdx();
  PolicyMemory& memory = pIf->Policy();
  if (!connected) {
    memory.m_peg_active = false;
    memory.m_assoc_lq = -1;
    memory.m_bss_lq = -1;
    lines::NotPegged(idx, tag);
    return;
  }
  memory.m_assoc_lq = static_cast<std::int32_t>(*quality);
  CSmartPointer<CWlanBssEntry> entry;
  const bool known = pIf->FindBssEntry(ssid, bssid, &entry);
  if (known) memory.m_bss_lq = static_cast<std::int32_t>(entry->GetLQ());
  if (known && entry->GetLQ() > *quality) {
    lines::Pegged(idx, tag, *quality, entry->GetLQ());
    *quality = entry->GetLQ();
    memory.m_peg_active = true;
  } else {
    memory.m_peg_active = false;
    lines::PegCleared(idx, tag, *quality);
  }
}

}  // namespace corvane
