// Leaving a connection for a better access point, or suggesting it.

#include "platform/clock_api.h"
#include "platform/platform.h"
#include "policy/connect_attempt.h"
#include "policy/decisions.h"
#include "policy/move_lines.h"
#include "policy/policy_text.h"
#include "policy/roaming.h"
#include "policy/suggesting.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

namespace {

constexpr std::uint32_t kInhibitAfterPopupMs = 5000;

// One walk down the sorted list, from the head.
class Switch {
 public:
  Switch(const Round& round, std::int32_t score) : m_Round(round), m_Score(score) {}

  bool Run() {
    Step step = Step::kNext;
    for (std::size_t i = 0; i < m_Round.candidates.size() && step == Step::kNext; ++i) {
      if (IsTarget(*m_Round.candidates[i]))
        step = Take(*m_Round.candidates[i], static_cast<std::int32_t>(i));
    }
    if (!m_bAttempted && step != Step::kSuggested) m_Round.memory.RollSwitchPeriod();
    return step != Step::kNext;
  }

 private:
  enum class Step { kNext, kSettled, kSuggested };

  bool IsTarget(CWlanBssEntry& entry) {
    const bool ready = IsCandidateReady(m_Round, entry, m_Score);
    if (CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(&entry, &m_Round.adapter)) {
      lines::TargetElsewhere(m_Round, entry, ready);
      return false;
    }
    if (!ready) {
      lines::TargetNotReady(m_Round, entry);
      return false;
    }
    lines::TargetFound(m_Round, entry, m_Score);
    m_Round.config->m_force_scan_counter = 0;
    return true;
  }

  Step Take(CWlanBssEntry& entry, std::int32_t position) {
    if (m_Round.settings.IsMonitorMode()) {
      lines::HeldByMonitorMode(m_Round, "SwitchConnectionToBest", entry);
      return Step::kSettled;
    }
    if (entry.GetBssid() == m_Round.facts.bssid) {
      lines::AlreadyThere(m_Round, entry);
      m_Round.config->SetConnectedNetwork(NetworkDisplayName(m_Round.facts.ssid, entry.m_Channel),
                                          m_Round.facts.ssid, entry.m_BSSIDText);
      return Step::kSettled;
    }
    const SuggestionMode mode = m_Round.Mode(entry);
    const bool roam = IsRoam(m_Round, entry) && !IsVetoed(entry);
    const MoveWay way = WayOfSwitch(mode, roam, m_Round.settings.roaming);
    if (way == MoveWay::kConnect) return Connect(entry, roam) ? Step::kSettled : Step::kNext;
    Suggest(entry, position, way);
    return Step::kSuggested;
  }

  // While the suggestion of this very access point is open, the user decides.
  bool IsVetoed(const CWlanBssEntry& entry) {
    if (!IsSuggested(m_Round, entry)) return false;
    lines::RoamVetoed(m_Round, entry);
    return true;
  }

  void Suggest(CWlanBssEntry& entry, std::int32_t position, MoveWay way) {
    lines::Suggesting(m_Round, entry);
    m_Round.memory.ClearAllCandidateCounters("BEFORE PASSIVE SUGGEST");

    const ApSummary suggested = SummaryOf(entry, m_Round.scores);
    const ApSummary current = SummaryOfConnection(m_Round.adapter, m_Round.facts, m_Score);
    const bool byEvent = way == MoveWay::kSuggestByEvent;
    const bool accepted =
        byEvent ? AskByEvent(entry, suggested, current) : AskByPopup(entry, suggested, current);
    lines::Asked(m_Round, entry, byEvent, accepted);
    if (!accepted) return;
    m_Round.memory.IncSwitchAttempt();
    RememberSuggestion(m_Round, entry, position);
    lines::Suggested(m_Round, current, suggested);
  }

  bool AskByEvent(CWlanBssEntry& entry, const ApSummary& suggested, const ApSummary& current) {
    const SuggestionPercent percent = Percent(suggested.score, m_Round.config->m_APScoreThreshold);
    return percent.shown &&
           SuggestByEvent(*m_Round.config, entry, percent.percent, m_Round.facts.quality,
                          ShortApSummary(suggested), ShortApSummary(current));
  }

  bool AskByPopup(CWlanBssEntry& entry, const ApSummary& suggested, const ApSummary& current) {
    const SuggestionPercent percent = Percent(suggested.score, 0);
    const bool accepted =
        percent.shown && SuggestByPopup(*m_Round.config, entry, percent.percent,
                                        m_Round.facts.quality, m_Round.settings.qualityThreshold,
                                        ShortApSummary(suggested), ShortApSummary(current));
    lines::InhibitedByDialog(m_Round, "SwitchConnectionToBest");
    m_Round.config->Set_InhibitQUAY(kInhibitAfterPopupMs, "sw-pop");
    m_Round.memory.Claim().ClaimSuggested(entry.GetBssid(), Os().clock.GetTickCount64());
    return accepted;
  }

  SuggestionPercent Percent(std::int32_t score, std::uint32_t minimumPoints) const {
    return m_Round.profile.PercentOf(score, m_Score, minimumPoints, m_Round.settings.scorePercent);
  }

  bool Connect(CWlanBssEntry& entry, bool roam) {
    m_bAttempted = true;
    m_Round.memory.IncSwitchAttempt();
    const ApSummary before = SummaryOfConnection(m_Round.adapter, m_Round.facts, m_Score);
    lines::Switching(m_Round, entry, roam);
    const ConnectOutcome outcome = TryConnectCounted(m_Round, entry, "switch");
    if (outcome == ConnectOutcome::kFailed) {
      entry.m_candidate_counter = 0;
      m_Round.memory.Claim().GiveUp(entry.GetBssid());
      return false;
    }
    if (outcome != ConnectOutcome::kConnected) return true;
    CountMove(roam);
    lines::SwitchConnected(m_Round, entry, roam);
    PublishConnection(m_Round.adapter, *m_Round.config, entry);
    const ApSummary after = SummaryOf(entry, m_Round.scores, m_Round.adapter);
    lines::Switched(m_Round, before, after);
    NotifyConnectionChange(m_Round.adapter, *m_Round.config, u"Autoswitch", LongApSummary(after),
                           LongApSummary(before));
    return true;
  }

  const Round& m_Round;
  const std::int32_t m_Score;
  bool m_bAttempted = false;
};

}  // namespace

bool SwitchConnectionToBest(const Round& round, std::int32_t current) {
  return Switch(round, current).Run();
}

}  // namespace corvane
