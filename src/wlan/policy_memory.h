#pragma once
// What the policy keeps of an adapter from one round to the next.

#include <cstdint>
#include <list>
#include <optional>

#include "model/wlan_network.h"
#include "wlan/adapter_identity.h"
#include "wlan/candidate_claim.h"
#include "wlan/round_lists.h"
#include "wlan/switch_rate.h"

namespace corvane {

// On the adapter's worker only, but for the claim, which the workers of the other adapters read.
class PolicyMemory {
 public:
  // The networks are walked under the interface lock.
  PolicyMemory(const AdapterIdentity& adapter, CCritSec& interfaceLock, const NetworkMap& networks)
      : m_Adapter(adapter), m_Lock(interfaceLock), m_Networks(networks), m_Claim(interfaceLock) {}

  CandidateClaim& Claim() { return m_Claim; }

  // Both drop the claim as well. `reason` goes only to the log.
  void ClearAllCandidateCounters(const char* reason);
  // Lowers each counter by one; where that lowered any, scans that are forced already last longer.
  void DecrementAllCandidateCounters();
  // A connection whose score is on the rise takes a step from every candidate.
  void NotifyCurrentNetworkScore(std::int32_t score, const MacAddress& bssid);

  void IncSwitchAttempt();  // a switch or a suggestion
  void RollSwitchPeriod();  // at the end of a walk without an attempt
  void AddScoreDiffSummary(const CandidateSummary& summary);  // keeps 120
  // Least minimum and greatest maximum; empties the list.
  CandidateSummary TakeScoreDiffSummary();

  // Of a connection whose quality the scan knows to be better: -1 while it is not known.
  bool m_peg_active = false;
  std::int32_t m_assoc_lq = -1;
  std::int32_t m_bss_lq = -1;

  std::uint32_t m_consec_disconnects = 0;
  bool m_emergency_armed = false;
  std::uint64_t m_last_score_notify_tick = 0;

  WString m_last_suggested_bssid;
  WString m_last_suggested_ssid;
  std::int32_t m_last_suggested_pos = -1;  // in the sorted list; -1 without a suggestion

  std::optional<RoundLists> m_lists;  // of the last round that came to its end

 private:
  void ProcessSwitchesPerMin();

  const AdapterIdentity& m_Adapter;
  CCritSec& m_Lock;
  const NetworkMap& m_Networks;
  CandidateClaim m_Claim;
  SwitchRate m_SwitchRate;
  std::list<CandidateSummary> m_score_diff_summaries;  // newest last
  std::int32_t m_last_notified_score = 0;
  std::uint32_t m_score_rise_streak = 0;
  MacAddress m_last_notified_bssid{};
};

}  // namespace corvane
