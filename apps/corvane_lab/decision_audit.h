#pragma once
#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "corvane_lab/adapter_numbers.h"
#include "platform/sim/devices/pc_observer.h"
#include "platform/sim/world/world.h"
#include "policy/round_watch.h"

namespace corvane::lab {

// Holds every move that the service makes by its own decision against what it must never do: go to
// a denied or an open access point, go where another adapter is, switch while the rate gate or
// real-time audio holds, switch to a candidate that has not ripened, end up elsewhere than it
// decided. What people ask for, and the return to the old network, are no decisions of its own.
class DecisionAudit final : public IRoundWatch {
 public:
  using Report = void (*)(int number, const std::string& fault, void* context);
  DecisionAudit(const platform::sim::World& world, Report report, void* context);
  ~DecisionAudit() { RoundWatches::Remove(this); }
  DecisionAudit(const DecisionAudit&) = delete;
  DecisionAudit& operator=(const DecisionAudit&) = delete;

  std::uint64_t Moves() const { return m_Moves; }  // that were held against the rules

  void OnRoundBegins(int adapter, const CWlanInterface& wlan) override {
    m_Numbers.Learn(adapter, wlan);
  }
  void OnCandidates(const Round& round) override;
  void OnStep(int adapter, RoundStep step, CWlanBssEntry* about) override;
  void OnRoundEnds(int adapter) override { m_Links[m_Numbers.OfIndex(adapter)].round = nullptr; }

  // What the radios do, by number.
  void OnConnected(int number, platform::sim::Cause cause, const std::string& bssid);
  void OnGone(int number);  // not connected any more, or not known to be

 private:
  struct Link {
    std::string bssid;              // that the radio is on; empty for none
    std::string settled;            // where the service's last good connect went
    const Round* round = nullptr;   // that runs its policy
    bool busyAtStart = false;       // of that round
    std::int32_t score = -1;        // of that round's connection
    std::set<std::string> targets;  // of the present moves; empty when somebody else decides
  };

  void CheckMove(int number, CWlanBssEntry& target, bool isSwitch);
  bool CanBeKnown(int number, const Link& link) const;
  void Broken(int number, const std::string& what, const std::string& bssid);

  std::set<std::string> m_Open;  // BSSIDs of open networks
  Report m_Report;
  void* m_pContext;
  AdapterNumbers m_Numbers;
  std::map<int, Link> m_Links;  // by number
  std::uint64_t m_Moves = 0;
};

}  // namespace corvane::lab
