// One policy round: snapshot, lists, publication, one act.

#include <algorithm>
#include <optional>
#include <utility>

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
    GatherConnection();
    RoundLists lists = TakeLists();
    m_Round.candidates = std::move(lists.candidates);
    m_Round.others = std::move(lists.others);

    PublishNetworksInRange(lists);
    m_Round.config->m_allowlist_active = lists.inputs.allowlistActive;
    if (m_Round.facts.connected) m_Round.memory.m_consec_disconnects = 0;
    lines::Settings(m_Round);
    PublishRows(m_Round.candidates, lists.candidateRows, value::kCandidatesCSV, "SORT");
    PublishRows(m_Round.others, lists.otherRows, value::kNONCandidatesCSV, "OTHER");
    lines::Scores(m_Round);
    RoundWatches::Candidates(m_Round);
    Act();

    lists.candidates = std::move(m_Round.candidates);
    lists.others = std::move(m_Round.others);
    m_Round.memory.m_lists = std::move(lists);
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
    m_Inputs.inRangeConnected = m_Round.adapter.IsConnected();
    m_Inputs.inRangeBssid = m_Round.adapter.GetConnectedBssid();
    m_Round.facts.connected = m_Round.adapter.GetConnectedSSID(&m_Round.facts);
    if (!m_Round.facts.connected) m_Round.facts.bssid.fill(0xFF);
    m_Round.link = {Os().clock.GetTickCount64(), m_Round.facts.connected, m_Round.facts.bssid,
                    m_Round.facts.quality, m_Round.adapter.GetTrafficMbps()};
    CGlobalQUAYPolicy::UpdateAssociateLQPegging(&m_Round.adapter, m_Round.facts.connected,
                                                &m_Round.facts.quality, m_Round.facts.ssid,
                                                m_Round.facts.bssid, "ExecutePolicies");
  }

  // Those of the round before, where the same would come out again.
  RoundLists TakeLists() {
    CQUAYInterfaceConfig& config = *m_Round.config;
    m_Inputs.air = m_Round.adapter.TakeAirStamp();
    m_Inputs.profiles = m_Round.adapter.TempProfilesKept();
    m_Inputs.scores = m_Round.scores;
    m_Inputs.connected = m_Round.facts.connected;
    m_Inputs.ssid = m_Round.facts.ssid;
    m_Inputs.preferPrivate = m_Round.settings.preferPrivate;
    m_Inputs.networkSwitching = m_Round.settings.networkSwitching;
    m_Inputs.allowlistActive =
        m_Round.settings.allowlistEnabled && !config.m_Allowlist.Rows().empty();
    m_Inputs.denied = config.m_Denylist.Version();
    m_Inputs.allowed = config.m_Allowlist.Version();
    std::optional<RoundLists> last = std::exchange(m_Round.memory.m_lists, std::nullopt);
    if (!last || last->inputs != m_Inputs) return MakeLists();
    for (const PassedOver& one : last->passedOver)
      RoundWatches::Standing(m_Round.idx, *one.entry, one.standing);
    return *std::move(last);
  }

  RoundLists MakeLists() {
    const BssEntryList inRange =
        EntriesInRange(m_Round.adapter, m_Inputs.inRangeConnected, m_Inputs.inRangeBssid);
    RoundLists lists;
    lists.inputs = m_Inputs;
    lists.candidates = inRange;
    KeepCandidates(&lists.candidates, m_Round.config->m_Denylist.Rows(), m_Round.scores,
                   m_Round.idx, &lists.passedOver);
    SortCandidates(&lists.candidates, m_Inputs.preferPrivate, m_Round.scores);
    lists.networksInRange =
        NetworksInRangeJson(lists.candidates, m_Inputs.ssid, &lists.connectedInRange);
    if (m_Inputs.connected && !m_Inputs.networkSwitching)
      KeepNetwork(&lists.candidates, m_Inputs.ssid, m_Round.idx, &lists.passedOver);
    if (m_Inputs.allowlistActive)
      KeepAllowed(&lists.candidates, m_Round.config->m_Allowlist.Rows(), m_Round.idx,
                  &lists.passedOver);
    lists.candidateRows = RowsOf(lists.candidates);
    lists.others = OtherEntries(inRange, lists.candidates, m_Round.scores);
    lists.otherRows = RowsOf(lists.others);
    return lists;
  }

  WString RowsOf(const BssEntryList& entries) {
    auto rows = CSVHelper::CreateObject();
    for (std::size_t i = entries.size() - std::min(entries.size(), kRowsKept); i < entries.size();
         ++i) {
      if (rows->AddString(entries[i]->GetStatusLine(m_Round.scores), true) < 0) {
        lines::RowNotAdded(m_Round);
      }
    }
    return rows->GetString();
  }

  void PublishNetworksInRange(const RoundLists& lists) {
    m_Round.config->SetString(value::kProfiledNetworksInRangeJson, lists.networksInRange);
    if (!lists.connectedInRange) {
      lines::ConnectedNotInRange(m_Round);
    }
  }

  void PublishRows(const BssEntryList& entries, const WString& rows, const char16_t* name,
                   const char* logPrefix) {
    lines::Sorted(m_Round, entries, logPrefix);
    if (!m_Round.config->SetString(name, rows)) {
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
  ListInputs m_Inputs;
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
