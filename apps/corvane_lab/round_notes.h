#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "corvane_lab/adapter_numbers.h"
#include "platform/sim/simulated_pc.h"
#include "policy/round_watch.h"

namespace corvane::lab {

// A short note of each round of an adapter, for whoever asks afterwards why it was where it was.
struct RoundNote {
  // An access point as the round weighed it.
  struct Entry {
    int accessPoint = -1;
    int score = -1;
    std::optional<CandidateStanding> standing;  // nothing: the round did not come to weigh it
  };
  std::uint64_t beganMs = 0, endedMs = 0;
  bool moves = false;             // it asked for a connect
  std::optional<RoundStep> step;  // the last thing that it decided; nothing: it had nothing to say
  std::string inhibit;            // reason of the inhibit clock, where that held it
  int score = -1;                 // of the connected access point
  std::vector<Entry> entries;
  const Entry* Find(int accessPoint) const;
};
using RoundNotes = std::vector<RoundNote>;  // by rising time

// Takes the notes. On the threads of the simulated PC, of which one runs at a time.
class RoundNotetaker final : public IRoundWatch {
 public:
  explicit RoundNotetaker(const platform::sim::World& world);
  ~RoundNotetaker() { RoundWatches::Remove(this); }
  RoundNotetaker(const RoundNotetaker&) = delete;
  RoundNotetaker& operator=(const RoundNotetaker&) = delete;

  void Attach(const platform::sim::SimulatedPc& pc) { m_pPc = &pc; }  // which outlives it
  std::vector<RoundNotes> Take() { return std::move(m_Notes); }       // by adapter

  void OnRoundBegins(int adapter, const CWlanInterface& wlan) override;
  void OnCandidates(const Round& round) override;
  void OnStanding(int adapter, CWlanBssEntry& entry, CandidateStanding standing) override;
  void OnStep(int adapter, RoundStep step, CWlanBssEntry* about) override;
  void OnRoundEnds(int adapter) override;

 private:
  std::uint64_t Now() const;
  RoundNote::Entry* EntryOf(RoundNote* note, const MacAddress& bssid);

  const platform::sim::SimulatedPc* m_pPc = nullptr;
  std::map<MacAddress, int> m_Numbers;  // of access points
  AdapterNumbers m_Adapters;
  std::map<int, RoundNote> m_Present;  // by number of the adapter
  std::vector<RoundNotes> m_Notes;
};

}  // namespace corvane::lab
