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

struct EntryRecord {
  std::string ssid, bssid;
  int score = -1;
  unsigned quality = 0;
  int counter = 0;
  std::optional<CandidateStanding> standing;  // nothing: the round did not come to weigh it
  std::string terms;                          // of the score
};

struct StepRecord {
  RoundStep step;
  std::string ssid, bssid;  // empty for what concerns no entry
};

// One round of one adapter, as it decided.
struct RoundRecord {
  int adapter = 0;           // its number
  std::uint64_t number = 0;  // of this adapter, from 1
  std::uint64_t beganMs = 0, endedMs = 0;
  bool ended = false;
  std::vector<StepRecord> steps;

  // What the policy weighed, when the round came to it.
  bool hasPolicy = false;
  bool connected = false;
  std::string ssid, bssid;
  int score = -1;
  unsigned quality = 0;
  const char* mode = "";
  PolicyProfileKind profile = PolicyProfileKind::kClassic;
  int required = 0;
  CandidateMargins margins;
  double mbps = 0.0, gateMbps = 0.0;
  bool realTimeAudio = false;
  bool systemConnected = false;          // so each switch is asked by the dialog
  std::optional<std::uint64_t> movedMs;  // when the service saw somebody else's move that holds it
  std::vector<EntryRecord> candidates;   // best first
  std::vector<EntryRecord> others;       // in range, but not admitted
};

// "score 77", or that there is none yet.
std::string ScoreText(int score);
// What the round decided, in a sentence.
std::string OutcomeText(const RoundRecord& round);
// The rule that settled the entry, or what else there is to say of it.
const char* ReasonText(const RoundRecord& round, const EntryRecord& entry);
// kJudged leaves out the entries that the round did not come to weigh, and the terms of the scores.
enum class RoundDetail { kJudged, kAll };
std::string RoundJson(const RoundRecord& round, RoundDetail detail);

// Keeps the present round of each adapter and hands on those that have ended. On the threads of the
// simulated PC, of which one runs at a time.
class RoundRecorder final : public IRoundWatch {
 public:
  using Listener = void (*)(const RoundRecord& round, void* context);
  // `terms`: with the terms of every score. The PC outlives the recorder.
  RoundRecorder(const platform::sim::SimulatedPc& pc, const platform::sim::World& world, bool terms,
                Listener listener, void* context)
      : m_Pc(pc), m_bTerms(terms), m_Listener(listener), m_pContext(context), m_Numbers(world) {
    RoundWatches::Add(this);
  }
  ~RoundRecorder() { RoundWatches::Remove(this); }
  RoundRecorder(const RoundRecorder&) = delete;
  RoundRecorder& operator=(const RoundRecorder&) = delete;

  // The round begun last; null before the first.
  const RoundRecord* Latest(int adapter) const;

  void OnRoundBegins(int adapter, const CWlanInterface& wlan) override;
  void OnCandidates(const Round& round) override;
  void OnStanding(int adapter, CWlanBssEntry& entry, CandidateStanding standing) override;
  void OnStep(int adapter, RoundStep step, CWlanBssEntry* about) override;
  void OnRoundEnds(int adapter) override;

 private:
  std::uint64_t Now() const { return static_cast<std::uint64_t>(m_Pc.Now().count()); }
  EntryRecord Read(CWlanBssEntry& entry, const ScoreContext& scores) const;
  void ReadHolds(const CWlanInterface& adapter, RoundRecord* round) const;
  RoundRecord& Round(int index) { return m_Rounds[m_Numbers.OfIndex(index)]; }

  const platform::sim::SimulatedPc& m_Pc;
  const bool m_bTerms;
  const Listener m_Listener;
  void* const m_pContext;
  AdapterNumbers m_Numbers;
  std::map<int, RoundRecord> m_Rounds;              // by number
  std::map<int, const CWlanInterface*> m_Adapters;  // of the present rounds, by index
};

}  // namespace corvane::lab
