// The choice: when a decision happens, not which access point wins.

#include <algorithm>
#include <set>

#include "foundation/guarded.h"
#include "launch/launcher.h"
#include "monitors/adapters_addresses.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "policy/bss_entry_reports.h"
#include "policy/decisions.h"
#include "policy/policy_text.h"
#include "policy/round_lines.h"
#include "policy/suggesting.h"
#include "rules/choice_rules.h"
#include "store/value_names.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

namespace {

constexpr std::uint32_t kDenyDeferMs = 10000;
constexpr std::uint32_t kDenySleepMs = 3000;

// The facts of one choice, with the state asked from the platform at each use: it may change
// between two questions.
class Choice {
 public:
  explicit Choice(const Round& round) : m_Round(round) {}

  void Run() {
    if (LeaveDeniedAp()) return;
    if (m_Round.candidates.empty()) {
      lines::NoCandidates(m_Round);
      return;
    }
    if (IsRoamingInhibited()) return;
    CheckLastSuggestion();
    CountRedNetworks();
    ReportScore();
    if (!IsStateConnected() || m_Round.HasGoodQuality()) m_Round.memory.m_emergency_armed = true;
    NoteWeighing();
    if (SkipStaleRound()) return;
    RaiseEmergency();
    lines::Deciding(m_Round);
    if (IsStateConnected()) {
      DecideConnected();
    } else {
      DecideDisconnected();
    }
  }

 private:
  bool IsStateConnected() const {
    return m_Round.adapter.GetInterfaceState() == platform::wlan_interface_state_connected;
  }
  static std::uint64_t Now() { return Os().clock.GetTickCount64(); }

  // True when the connection was to a denied access point and has been ended.
  bool LeaveDeniedAp() {
    if (!m_Round.settings.IsEnabled()) {
      lines::Disabled(m_Round);
      return false;
    }
    if (!m_Round.facts.connected ||
        !IsDenied(m_Round.config->m_Denylist.Rows(), m_Round.facts.ssid, m_Round.facts.bssid)) {
      return false;
    }
    const auto leave = [this] {
      lines::LeavingDenied(m_Round);
      const WString name =
          NetworkDisplayName(m_Round.facts.ssid, m_Round.adapter.GetCurrentChannel());
      m_Round.adapter.DisconnectSynchronous(name);
      m_Round.config->SetString(value::kDisconnectedNetwork, name);
      m_Round.config->m_deny_defer_until = Now() + kDenyDeferMs;
      lines::LeftDenied(m_Round);
      Os().threads.Sleep(kDenySleepMs);
      return true;
    };
    return Contained(leave, [this](const Failure& failure) {
      lines::NotLeftDenied(m_Round, failure.Kind(), failure.what);
      return false;
    });
  }

  bool IsRoamingInhibited() const {
    const std::uint64_t since = m_Round.config->GetRoamingInhibitTick();
    if (!m_Round.profile.KeepsStill(since, m_Round.link)) return false;
    lines::RoamingInhibited(m_Round, since);
    return true;
  }

  // A suggestion stands as long as it keeps its place in the list; else it is withdrawn.
  void CheckLastSuggestion() {
    const std::int32_t position = m_Round.memory.m_last_suggested_pos;
    const bool inList =
        position >= 0 && static_cast<std::size_t>(position) < m_Round.candidates.size();
    const WString* there =
        inList ? &m_Round.candidates[static_cast<std::size_t>(position)]->m_BSSIDText : nullptr;
    const SuggestionCheck check =
        CheckSuggestion(position, there, m_Round.memory.m_last_suggested_bssid);
    if (check == SuggestionCheck::kNone || check == SuggestionCheck::kStands) return;
    if (m_Round.profile.GetHabits().suggestsAnew && IsSuggestionListed()) return;
    lines::SuggestionWithdrawn(m_Round);
    if (check == SuggestionCheck::kDisplaced) {
      m_Round.config->SetString(value::kSuggestedNetwork, u"");
      m_Round.config->SetString(value::kSuggestedNetworkSSID, u"");
      m_Round.config->SetString(value::kSuggestedNetworkBSSID, u"");
    }
    if (m_Round.settings.IsEventMode()) {
      MacAddress bssid{};
      CSmartPointer<CWlanBssEntry> entry;
      if (MacStringToBinary(u'-', m_Round.memory.m_last_suggested_bssid, &bssid) &&
          m_Round.adapter.FindBssEntry(m_Round.memory.m_last_suggested_ssid, bssid, &entry)) {
        NotifyAlreadyBestAP(*entry, m_Round.config->m_Etw,
                            m_Round.profile.GetHabits().suggestsAnew);
      }
    }
    if (m_Round.profile.GetHabits().closesOvertakenDialog && m_Round.settings.popup)
      KillNudgeDialog();
    ForgetSuggestion(m_Round);
  }

  // Wherever it stands by now.
  bool IsSuggestionListed() const {
    return std::any_of(m_Round.candidates.begin(), m_Round.candidates.end(),
                       [this](const auto& entry) {
                         return entry->m_BSSIDText == m_Round.memory.m_last_suggested_bssid;
                       });
  }

  // A disconnected adapter whose surroundings have changed asks for fresh scans.
  void CountRedNetworks() {
    if (IsStateConnected()) return;
    std::set<WStringView> red;
    for (const auto& entry : m_Round.candidates) {
      if (entry->m_unscanned_count > 0) red.insert(entry->m_SSIDW);
    }
    const std::int32_t forced = m_Round.config->m_force_scan_counter;
    const RedNetworks verdict = JudgeRedNetworks(red.size(), forced);
    if (verdict == RedNetworks::kForceScans) m_Round.config->m_force_scan_counter = kForcedScans;
    lines::RedNetworksSeen(m_Round, verdict, red.size(), forced);
  }

  void ReportScore() {
    if (!IsStateConnected()) return;
    const std::uint64_t now = Now();
    if (!IsScoreReportDue(now, m_Round.memory.m_last_score_notify_tick,
                          m_Round.config->GetMainLoopSleepMs()))
      return;
    m_Round.memory.NotifyCurrentNetworkScore(
        m_Round.adapter.GetScoreFromBssEntry(m_Round.facts.ssid, m_Round.facts.bssid, true),
        m_Round.facts.bssid);
    m_Round.memory.m_last_score_notify_tick = now;
  }

  // Without a fresh scan there is nothing to decide for a good connection; at most a burst of scans
  // is asked for.
  bool SkipStaleRound() {
    if (!IsStale({m_Round.adapter.IsScanFresh(), IsStateConnected(), m_Round.HasGoodQuality(),
                  m_Round.settings.IsEnabled()}))
      return false;
    if (m_Round.settings.IsEventMode()) {
      CheckEarlySuggestedBest(m_Round);
    }
    const std::uint32_t interval = m_Round.config->GetScanIntervalSecs();
    const StaleAction action = m_Round.profile.OnStaleRound(m_Round.settings.decideStale, interval);
    if (action == StaleAction::kDecide) return false;
    lines::FoundStale(m_Round);
    if (action == StaleAction::kFastScan) {
      EnabledFastScan_connected(m_Round);
    }
    lines::SkippedStale(m_Round, interval);
    return true;
  }

  void RaiseEmergency() {
    const std::int32_t forced = m_Round.config->m_force_scan_counter;
    const Emergency verdict =
        JudgeEmergency({IsStateConnected(), m_Round.HasGoodQuality(), m_Round.settings.IsEnabled(),
                        m_Round.memory.m_emergency_armed, forced});
    lines::WeakConnection(m_Round, verdict, forced);
    if (verdict != Emergency::kForceScans) return;
    m_Round.config->m_force_scan_counter = kForcedScans;
    m_Round.memory.m_emergency_armed = false;
  }

  void DecideConnected() {
    const std::int32_t state = m_Round.adapter.GetInterfaceState();
    if (state == platform::wlan_interface_state_connected) {
      m_Round.memory.m_consec_disconnects = 0;
      MakeChoice_connected(m_Round);
    } else {
      m_Round.memory.RollSwitchPeriod();
      lines::StateUnclear(m_Round, state);
    }
  }

  // What can be seen, for the next look around; a question about it stays open.
  void NoteWeighing() {
    if (!m_Round.profile.GetHabits().weighsEachRound) return;
    const std::int32_t current =
        m_Round.facts.connected
            ? m_Round.adapter.GetScoreFromBssEntry(m_Round.facts.ssid, m_Round.facts.bssid, true)
            : -1;
    std::int32_t best = -1;
    for (const auto& entry : m_Round.candidates) {
      if (!IsWorthAMove(*entry, current)) continue;
      best = std::max(best, entry->GetScore(false, m_Round.scores));
      m_Round.memory.Claim().RenewSuggested(entry->GetBssid(), Os().clock.GetTickCount64());
    }
    m_Round.profile.OnWeighed(best, current, m_Round.adapter.IsScanFresh());
  }

  bool IsWorthAMove(CWlanBssEntry& entry, std::int32_t current) const {
    return (!m_Round.facts.connected || IsEnoughBetter(entry, current)) &&
           !m_Round.IsBarred(entry) &&
           !CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(&entry, &m_Round.adapter);
  }

  bool IsEnoughBetter(CWlanBssEntry& entry, std::int32_t current) const {
    const CandidateMargins margins = m_Round.Margins(entry, current);
    return entry.GetBssid() != m_Round.facts.bssid && entry.GetLQ() >= margins.qualityThreshold &&
           PassesPointTest(entry.GetScore(false, m_Round.scores), current, margins.scoreThreshold);
  }

  void DecideDisconnected() {
    m_Round.memory.RollSwitchPeriod();
    if (WaitsAfterDeny()) return;
    ResetReporter();
    // On battery a window runs out with its flag still on: it has no effect.
    m_Round.memory.m_consec_disconnects += m_Round.profile.DisconnectStep(
        m_Round.config->m_no_delay && m_Round.config->IsNoDelayOpen());
    const std::uint32_t count = m_Round.memory.m_consec_disconnects;
    if (count >= kDisconnectsForDecision) {
      lines::DecidesDisconnected(m_Round, count);
      MakeChoice_disconnected(m_Round);
    } else {
      lines::CountsDisconnects(m_Round, count);
    }
  }

  bool WaitsAfterDeny() const {
    const std::uint64_t until = m_Round.config->m_deny_defer_until, now = Now();
    const DenyDeferral deferral = JudgeDenyDeferral(until, now);
    lines::AfterDeny(m_Round, deferral, until, now);
    return deferral == DenyDeferral::kWait;
  }

  // What was said of the connection is over: the next one is reported anew.
  void ResetReporter() {
    if (m_Round.settings.IsEventMode()) m_Round.config->m_Etw.NotifyClearPreviousSignalQualityBAD();
    m_Round.config->m_Etw.ResetBest();
    m_Round.config->m_Etw.ResetQualityBad();
    m_Round.config->m_Etw.ResetQualityGood();
  }

  const Round& m_Round;
};

// A wired connection keeps the adapter quiet.
std::uint32_t CountConnectedLans() {
  const auto adapters = CAdaptersAddresses::CreateObject();
  adapters->Initialize();
  std::uint32_t total = 0, lans = 0;
  adapters->CountConnectedAdapters(&total, &lans);
  return lans;
}

}  // namespace

void MakeChoice(const Round& round) { Choice(round).Run(); }

void MakeChoice_disconnected(const Round& round) {
  const RoundSettings& settings = round.settings;
  round.memory.ClearAllCandidateCounters("TOP OF MakeChoice_disconnected");
  if (!settings.IsEnabled()) {
    lines::DisconnectedButDisabled(round);
    return;
  }
  if (const std::uint32_t lans = CountConnectedLans(); lans >= 1) {
    lines::WiredLan(round, lans);
    return;
  }
  if (!settings.forceAutoConnect && !settings.networkSwitching) {
    lines::SwitchingOff(round);
    return;
  }
  ConnectToBestNoDebounce(round, !settings.forceAutoConnect);
}

}  // namespace corvane
