#include "corvane_lab/decision_audit.h"

#include "config/settings/global_config_container.h"
#include "select/policy/policy.h"
#include "select/policy/switch_rules.h"
#include "wlan/binding/wifi_client_container.h"

namespace corvane::lab {

using platform::sim::Cause;

namespace {

bool IsBusy(const CWlanInterface& adapter) {
  return IsLinkBusy(CGlobalConfigContainer::GetInstance().m_rt_audio, adapter.GetTrafficMbps(),
                    adapter.Config()->m_rate_gate_high);
}

}  // namespace

DecisionAudit::DecisionAudit(const platform::sim::World& world, Report report, void* context)
    : m_Report(report), m_pContext(context) {
  for (const auto& accessPoint : world.accessPoints) {
    if (accessPoint.security.auth == platform::DOT11_AUTH_ALGO_80211_OPEN) m_Open.insert(MacTextA(accessPoint.bssid));
  }
  RoundWatches::Add(this);
}

void DecisionAudit::OnCandidates(CWlanInterface& adapter, const ConnectionFacts&, const BssEntryList&) {
  Link& link = m_Links[adapter.GetConfigIdx()];
  link.busyAtStart = IsBusy(adapter);
  link.targets.clear();
}

// A connect that the service gave up may still end on the radio: the targets of one round count together.
void DecisionAudit::OnStep(int adapter, RoundStep step, CWlanBssEntry* about) {
  Link& link = m_Links[adapter];
  switch (step) {
    case RoundStep::kSwitch:
    case RoundStep::kFirstConnect:
      link.targets.insert(MacTextA(about->GetBssid()));
      CheckMove(adapter, *about, step == RoundStep::kSwitch);
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

void DecisionAudit::CheckMove(int adapter, CWlanBssEntry& target, bool isSwitch) {
  ++m_Moves;
  const auto self = CWifiClientContainer::GetInstance().GetInterface(adapter);
  if (!self) return;
  const std::string bssid = MacTextA(target.GetBssid());
  if (IsDenied(self->Config()->m_Denylist.Rows(), target.m_SSIDW, target.GetBssid())) {
    Broken(adapter, "goes to a denied access point", bssid);
  }
  if (m_Open.contains(bssid)) Broken(adapter, "goes to an open access point", bssid);
  // Where the other adapter is counts from when the service can know it.
  for (const auto& [other, link] : m_Links) {
    if (other != adapter && link.bssid == bssid && CanBeKnown(other, link)) {
      Broken(adapter, "goes where another adapter is", bssid);
    }
  }
  if (!isSwitch) return;
  if (m_Links[adapter].busyAtStart && IsBusy(*self)) Broken(adapter, "switches on a busy link", bssid);
  if (target.GetCandidate() < CGlobalQUAYPolicy::RequiredCandidateCount()) {
    Broken(adapter, "switches to an unripe candidate", bssid);
  }
}

// It connected the adapter there itself, or has seen the connection; and no query has failed since.
bool DecisionAudit::CanBeKnown(int adapter, const Link& link) {
  const auto other = CWifiClientContainer::GetInstance().GetInterface(adapter);
  return other && other->IsConnected() &&
         (link.settled == link.bssid || MacTextA(other->GetConnectedBssid()) == link.bssid);
}

void DecisionAudit::OnConnected(int adapter, Cause cause, const std::string& bssid) {
  Link& link = m_Links[adapter];
  link.bssid = bssid;
  if (cause != Cause::kProgram) {
    link.settled.clear();
  } else if (!link.targets.empty() && !link.targets.contains(bssid)) {
    Broken(adapter, "ends up where it did not decide to go", bssid);
  }
}

void DecisionAudit::OnGone(int adapter) {
  m_Links[adapter].bssid.clear();
  m_Links[adapter].settled.clear();
}

void DecisionAudit::Broken(int adapter, const std::string& what, const std::string& bssid) {
  m_Report(adapter, what + ": " + bssid, m_pContext);
}

}  // namespace corvane::lab
