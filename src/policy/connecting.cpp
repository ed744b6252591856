// Connecting an adapter that has no connection, or suggesting what to connect to.

#include "platform/clock_api.h"
#include "platform/platform.h"
#include "policy/connect_attempt.h"
#include "policy/decisions.h"
#include "policy/move_lines.h"
#include "policy/policy_text.h"
#include "policy/round_watch.h"
#include "policy/suggesting.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

namespace {

constexpr std::uint32_t kInhibitAfterPopupMs = 5000;
constexpr char16_t kNoConnection[] =
    u"Score -1, 00-00-00-00-00-00, SQ 0, Channel 0, Max datarate 0, disconnected";
constexpr char16_t kNoConnectionMbps[] =
    u"Score -1, 00-00-00-00-00-00, SQ 0, Channel 0, Max datarate 0 mbps, disconnected";

// One walk down the sorted list, from the head. There is no debounce.
class FirstConnect {
 public:
  FirstConnect(const Round& round, bool autoOnly) : m_Round(round), m_bAutoOnly(autoOnly) {}

  bool Run() {
    bool eligible = false, done = false;
    for (std::size_t i = 0; i < m_Round.candidates.size() && !done; ++i) {
      const CandidateStanding standing = Judge(*m_Round.candidates[i]);
      RoundWatches::Standing(m_Round.idx, *m_Round.candidates[i], standing);
      if (standing != CandidateStanding::kEligible) continue;
      eligible = true;
      m_Round.config->m_force_scan_counter = 0;
      done = Take(*m_Round.candidates[i], static_cast<std::int32_t>(i));
    }
    if (eligible) {
      m_Round.config->ClearStatusMessage(kStatusNoAutoConnectProfile);
    } else {
      m_Round.config->SetStatusMessage(kStatusNoAutoConnectProfile);
      lines::NoneEligible(m_Round);
    }
    return done;
  }

 private:
  CandidateStanding Judge(CWlanBssEntry& entry) {
    const bool takesAsked = m_Round.profile.GetHabits().questionsYield &&
                            WayOfConnect(m_Round.Mode(entry)) == MoveWay::kConnect;
    if (CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(
            &entry, &m_Round.adapter,
            takesAsked ? ClaimsThatCount::kUnasked : ClaimsThatCount::kAll)) {
      lines::FirstIsElsewhere(m_Round, entry);
      return CandidateStanding::kTakenElsewhere;
    }
    if (m_Round.IsBarred(entry)) {
      lines::FirstWasUnavailable(m_Round, entry);
      return CandidateStanding::kUnavailable;
    }
    if (m_bAutoOnly && !entry.m_AutoConnect) {
      lines::FirstNotAutomatic(m_Round, entry);
      return CandidateStanding::kNotAutomatic;
    }
    return CandidateStanding::kEligible;
  }

  bool Take(CWlanBssEntry& entry, std::int32_t position) {
    if (m_Round.settings.IsMonitorMode()) {
      lines::HeldByMonitorMode(m_Round, "ConnectToBestNoDebounce", entry);
      return true;
    }
    const MoveWay way = WayOfConnect(m_Round.Mode(entry));
    if (way == MoveWay::kConnect) return Connect(entry);
    lines::SuggestingFirst(m_Round, entry, m_bAutoOnly);
    const bool byEvent = way == MoveWay::kSuggestByEvent;
    const bool accepted = byEvent ? AskByEvent(entry) : AskByPopup(entry);
    lines::Asked(m_Round, entry, byEvent, accepted);
    if (accepted) RememberSuggestion(m_Round, entry, position);
    return true;
  }

  bool AskByEvent(CWlanBssEntry& entry) {
    return SuggestByEvent(*m_Round.config, entry, 0, 0,
                          ShortApSummary(SummaryOf(entry, m_Round.scores)), kNoConnection);
  }

  bool AskByPopup(CWlanBssEntry& entry) {
    const bool accepted =
        SuggestByPopup(*m_Round.config, entry, 0, 0, 0,
                       ShortApSummary(SummaryOf(entry, m_Round.scores)), kNoConnectionMbps);
    lines::InhibitedByDialog(m_Round, "ConnectToBestNoDebounce");
    m_Round.config->Set_InhibitQUAY(kInhibitAfterPopupMs, "con-pop");
    m_Round.memory.Claim().ClaimSuggested(entry.GetBssid(), Os().clock.GetTickCount64());
    return accepted;
  }

  bool Connect(CWlanBssEntry& entry) {
    lines::ConnectingFirst(m_Round, entry, m_bAutoOnly);
    const ConnectOutcome outcome = TryConnectCounted(m_Round, entry, "newconnect");
    if (outcome != ConnectOutcome::kConnected) return outcome != ConnectOutcome::kFailed;
    CountMove(false);
    lines::FirstConnected(m_Round, entry);
    PublishConnection(m_Round.adapter, *m_Round.config, entry);
    const ApSummary after = SummaryOf(entry, m_Round.scores);
    lines::ConnectedByItself(m_Round, after);
    NotifyConnectionChange(m_Round.adapter, *m_Round.config, u"NewConnection",
                           ShortApSummary(after), u"None");
    return true;
  }

  const Round& m_Round;
  const bool m_bAutoOnly;
};

}  // namespace

bool ConnectToBestNoDebounce(const Round& round, bool autoOnly) {
  return FirstConnect(round, autoOnly).Run();
}

}  // namespace corvane
