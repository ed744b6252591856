// Connecting an adapter that has no connection, or suggesting what to connect to.

#include "policy/connect_attempt.h"
#include "policy/decisions.h"
#include "policy/policy_log.h"
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
      RoundWatches::Step(m_Round.idx, RoundStep::kNoneEligible);
    }
    return done;
  }

 private:
  CandidateStanding Judge(CWlanBssEntry& entry) {
    const MacAddress mac = entry.GetBssid();
    if (CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(&entry, &m_Round.adapter)) {
      LOG_ADAPTER(m_Round.idx, kPolicyLog,
                  u"[%i] [SKIP DUE TO CONN ON OTHER-IF] %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
                  m_Round.idx, entry.m_SSIDW, MAC_ARGS(mac));
      return CandidateStanding::kTakenElsewhere;
    }
    if (entry.m_last_reason_code == platform::WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE) {
      LOG_ADAPTER(m_Round.idx, kPolicyLog,
                  u"[%i] [SKIP DUE TO 'WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE'] %s "
                  u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
                  m_Round.idx, entry.m_SSIDW, MAC_ARGS(mac));
      return CandidateStanding::kUnavailable;
    }
    if (m_bAutoOnly && !entry.m_AutoConnect) {
      LOG_ADAPTER(
          m_Round.idx, kPolicyLog,
          u"[%i] [AUTO=%i][AutOnly=%i] NOT connecting to %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
          m_Round.idx, entry.m_AutoConnect, m_bAutoOnly, entry.m_SSIDW, MAC_ARGS(mac));
      return CandidateStanding::kNotAutomatic;
    }
    return CandidateStanding::kEligible;
  }

  bool Take(CWlanBssEntry& entry, std::int32_t position) {
    const MacAddress mac = entry.GetBssid();
    if (m_Round.settings.IsMonitorMode()) {
      LOG_ADAPTER(
          m_Round.idx, kPolicyLog,
          u"[%i] [DISABLED IN MONITOR MODE] ConnectToBestNoDebounce: _NO_ Connect/Suggest: %s "
          u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
          m_Round.idx, entry.m_SSIDW, MAC_ARGS(mac));
      RoundWatches::Step(m_Round.idx, RoundStep::kMonitorMode, &entry);
      return true;
    }
    const MoveWay way = WayOfConnect(m_Round.Mode());
    LOG_ADAPTER(m_Round.idx, kPolicyLog,
                u"[%i] [allowAutoConnectOutOfSleep=%i/%i][AUTO=%i][AutOnly=%i] %s %s "
                u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
                m_Round.idx, 0, 0, entry.m_AutoConnect, m_bAutoOnly,
                way == MoveWay::kConnect ? u"Connecting to" : u"SUGGESTING", entry.m_SSIDW,
                MAC_ARGS(mac));
    if (way == MoveWay::kConnect) return Connect(entry);
    const bool byEvent = way == MoveWay::kSuggestByEvent;
    const bool accepted = byEvent ? AskByEvent(entry) : AskByPopup(entry);
    RoundWatches::Step(m_Round.idx, StepOfSuggestion(byEvent, accepted), &entry);
    if (accepted) RememberSuggestion(m_Round.adapter, entry, position);
    return true;
  }

  bool AskByEvent(CWlanBssEntry& entry) {
    return SuggestByEvent(*m_Round.config, entry, 0, 0, ShortApSummary(SummaryOf(entry)),
                          kNoConnection);
  }

  bool AskByPopup(CWlanBssEntry& entry) {
    const bool accepted = SuggestByPopup(*m_Round.config, entry, 0, 0, 0,
                                         ShortApSummary(SummaryOf(entry)), kNoConnectionMbps);
    LOG_ADAPTER(m_Round.idx, kPolicyLog,
                u"[%i] CGlobalQUAYPolicy::ConnectToBestNoDebounce: [***INHIBIT QUAY 5000 ***]\n",
                m_Round.idx);
    m_Round.config->Set_InhibitQUAY(kInhibitAfterPopupMs, "con-pop");
    m_Round.adapter.TakeReservation(entry.GetBssid());
    return accepted;
  }

  bool Connect(CWlanBssEntry& entry) {
    RoundWatches::Step(m_Round.idx, RoundStep::kFirstConnect, &entry);
    const ConnectOutcome outcome = TryConnectCounted(m_Round, entry, "newconnect");
    if (!outcome.connected) return !outcome.failed;
    CountMove(false);
    LOG_ADAPTER(
        m_Round.idx, kPolicyLog,
        u"[%i] ConnectToBestNoDebounce: Success connecting to %s [STATs: failed=%i, good=%i]\n",
        m_Round.idx, entry.m_SSIDW, entry.m_connect_failed, entry.m_connect_good);
    PublishConnection(m_Round.adapter, *m_Round.config, entry);
    const ApSummary after = SummaryOf(entry);
    LogInfo(Format(u"[Adapter%i] AUTOCONNECT (from disconnnected adapter): %s", m_Round.idx,
                   BriefText(after)));
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
