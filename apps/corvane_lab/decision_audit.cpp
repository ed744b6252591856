#include "corvane_lab/decision_audit.h"

#include "policy/round.h"
#include "settings/global_config_container.h"

namespace corvane::lab {

using platform::sim::Cause;

namespace {

bool IsBusy(const Round& round) {
  return round.profile.IsBusy(CGlobalConfigContainer::GetInstance().m_rt_audio,
                              round.adapter.GetTrafficMbps(), round.config->m_rate_gate_high);
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

void DecisionAudit::OnCandidates(const Round& round) {
  Link& link = m_Links[m_Numbers.Of(round.adapter)];
  link.score = round.adapter.GetScoreFromBssEntry(round.facts.ssid, round.facts.bssid, true);
  link.round = &round;
  link.busyAtStart = IsBusy(round);
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
  const Link& link = m_Links[number];
  if (!link.round) return Broken(number, "switches outside of a round", bssid);
  if (link.busyAtStart && IsBusy(*link.round)) Broken(number, "switches on a busy link", bssid);
  if (target.GetCandidate() < link.round->Required(target, link.score)) {
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
