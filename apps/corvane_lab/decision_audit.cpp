#include "corvane_lab/decision_audit.h"

#include "policy/policy.h"
#include "rules/switch_rules.h"
#include "settings/global_config_container.h"

namespace corvane::lab {

using platform::sim::Cause;

namespace {

bool IsBusy(CWlanInterface& adapter) {
  return adapter.Profile().IsBusy(CGlobalConfigContainer::GetInstance().m_rt_audio,
                                  adapter.GetTrafficMbps(), adapter.Config()->m_rate_gate_high);
}

}  // namespace

DecisionAudit::DecisionAudit(const platform::sim::World& world, Report report, void* context)
    : m_Report(report), m_pContext(context), m_Numbers(world) {
  for (const auto& accessPoint : world.accessPoints) {
    if (accessPoint.security.auth == platform::DOT11_AUTH_ALGO_80211_OPEN)
      m_Open.insert(MacTextA(accessPoint.bssid));
  }
  RoundWatches::Add(this);
}

void DecisionAudit::OnCandidates(CWlanInterface& adapter, const ConnectionFacts& facts,
                                 const BssEntryList&) {
  Link& link = m_Links[m_Numbers.Of(adapter)];
  link.ssid = facts.ssid;
  link.score = adapter.GetScoreFromBssEntry(facts.ssid, facts.bssid, true);
  link.profile = &adapter.Profile();  // a setting that changes now counts from the next round on
  link.busyAtStart = IsBusy(adapter);
  link.targets.clear();
}

// A connect that the service gave up may still end on the radio: the targets of one round count
// together.
void DecisionAudit::OnStep(int adapter, RoundStep step, CWlanBssEntry* about) {
  const int number = m_Numbers.OfIndex(adapter);
  Link& link = m_Links[number];
  switch (step) {
    case RoundStep::kSwitch:
    case RoundStep::kFirstConnect:
      link.targets.insert(MacTextA(about->GetBssid()));
      CheckMove(number, *about, step == RoundStep::kSwitch);
      return;
    case RoundStep::kConnected:
      link.settled = MacTextA(about->GetBssid());
      return;
    case RoundStep::kRequestedConnect:
    case RoundStep::kRestore:
      link.targets.clear();
      return;
    default:
      return;
  }
}

void DecisionAudit::CheckMove(int number, CWlanBssEntry& target, bool isSwitch) {
  ++m_Moves;
  const auto self = m_Numbers.Find(number);
  if (!self) return;
  const std::string bssid = MacTextA(target.GetBssid());
  if (IsDenied(self->Config()->m_Denylist.Rows(), target.m_SSIDW, target.GetBssid())) {
    Broken(number, "goes to a denied access point", bssid);
  }
  if (m_Open.contains(bssid)) Broken(number, "goes to an open access point", bssid);
  // Where the other adapter is counts from when the service can know it.
  for (const auto& [other, link] : m_Links) {
    if (other != number && link.bssid == bssid && CanBeKnown(other, link)) {
      Broken(number, "goes where another adapter is", bssid);
    }
  }
  if (!isSwitch) return;
  if (m_Links[number].busyAtStart && IsBusy(*self))
    Broken(number, "switches on a busy link", bssid);
  const Contender contender{target.GetBssid(), target.GetScore(false, self->GetScoreContext()),
                            m_Links[number].score, target.GetLQ(),
                            target.m_SSIDW == m_Links[number].ssid};
  const std::int32_t rounds =
      m_Links[number].profile->RoundsToWin(CGlobalQUAYPolicy::RequiredCandidateCount(), contender);
  if (target.GetCandidate() < rounds) {
    Broken(number, "switches to an unripe candidate", bssid);
  }
}

// It connected the adapter there itself, or has seen the connection; and no query has failed since.
bool DecisionAudit::CanBeKnown(int number, const Link& link) const {
  const auto other = m_Numbers.Find(number);
  return other && other->IsConnected() &&
         (link.settled == link.bssid || MacTextA(other->GetConnectedBssid()) == link.bssid);
}

void DecisionAudit::OnConnected(int number, Cause cause, const std::string& bssid) {
  Link& link = m_Links[number];
  link.bssid = bssid;
  if (cause != Cause::kProgram) {
    link.settled.clear();
  } else if (!link.targets.empty() && !link.targets.contains(bssid)) {
    Broken(number, "ends up where it did not decide to go", bssid);
  }
}

void DecisionAudit::OnGone(int number) {
  m_Links[number].bssid.clear();
  m_Links[number].settled.clear();
}

void DecisionAudit::Broken(int number, const std::string& what, const std::string& bssid) {
  m_Report(number, what + ": " + bssid, m_pContext);
}

}  // namespace corvane::lab
