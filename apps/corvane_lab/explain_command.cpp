#include <algorithm>
#include <cstdio>
#include <map>
#include <string>

#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "corvane_lab/round_record.h"
#include "corvane_lab/service_run.h"
#include "corvane_lab/simulated_user.h"
#include "corvane_lab/world_source.h"
#include "foundation/format.h"

namespace corvane::lab {

namespace {

// A round that begins before the time asked for may still run; none takes longer.
constexpr std::chrono::minutes kLongestRound(10);

void PrintEntry(const RoundRecord& round, std::size_t place, const EntryRecord& entry) {
  std::printf(
      "%s\n",
      FormatA("%4s  %s %s  %s  quality %u  counter %i  %s", place ? std::to_string(place) : "",
              entry.ssid.empty() ? "(no name)" : entry.ssid, entry.bssid, ScoreText(entry.score),
              entry.quality, entry.counter, ReasonText(round, entry))
          .c_str());
  if (!entry.terms.empty()) std::printf("        %s\n", entry.terms.c_str());
}

std::string Seconds(std::uint64_t ms) { return FormatA("%llu.%03llu s", ms / 1000, ms % 1000); }

// What changes the way a switch is made, or forbids it, and what would end that.
void PrintHolds(const RoundRecord& round) {
  if (round.systemConnected) {
    std::printf(
        "  The system made the connection, not the service: each switch is asked by the dialog, in "
        "every mode, until the service itself connects or the PC resumes.\n");
  }
  if (round.movedMs) {
    std::printf(
        "  No switch since %s, when the service saw that somebody else had moved the adapter. What "
        "ends that: another network, a connect or disconnect by the service itself, more than 30 s "
        "without a connection, airplane mode, suspend, resume, or access points that cannot be "
        "listed.\n",
        Seconds(*round.movedMs).c_str());
  }
}

void PrintPolicy(const RoundRecord& round) {
  const std::string at = round.connected
                             ? FormatA("Connected to %s %s, %s, quality %u", round.ssid,
                                       round.bssid, ScoreText(round.score), round.quality)
                             : std::string("Not connected");
  std::printf("  %s. Mode %s%s.\n", at.c_str(), round.mode,
              round.profile == PolicyProfileKind::kClassic ? "" : ", profile balanced");
  std::printf(
      "%s\n",
      FormatA(
          "  To be ready: quality %u, %u points and %u %% above the connected one, in %i rounds. "
          "Traffic %.3lf Mbps, held back from %.3lf Mbps on%s.",
          round.margins.qualityThreshold, round.margins.scoreThreshold, round.margins.scorePercent,
          round.required, round.mbps, round.gateMbps,
          round.realTimeAudio ? "; real-time audio runs" : "")
          .c_str());
  std::printf("  Candidates, best first%s\n", round.candidates.empty() ? ": none" : "");
  for (std::size_t i = 0; i < round.candidates.size(); ++i)
    PrintEntry(round, i + 1, round.candidates[i]);
  if (!round.others.empty()) std::printf("  No candidates\n");
  for (const EntryRecord& entry : round.others) PrintEntry(round, 0, entry);
}

void Print(const RoundRecord& round) {
  std::printf("%s\n", FormatA("adapter %i, round %llu, from %s to %s", round.adapter, round.number,
                              Seconds(round.beganMs),
                              round.ended ? Seconds(round.endedMs) : std::string("(cut off)"))
                          .c_str());
  const std::string outcome = OutcomeText(round);
  std::printf("  %s\n", outcome.empty() ? "Nothing was decided." : outcome.c_str());
  PrintHolds(round);
  if (round.hasPolicy) PrintPolicy(round);
}

// The rounds that run at a time, by adapter: each that has begun by then and has not ended before.
// Of an adapter without one, that is between two rounds, the last that has ended.
class Wanted {
 public:
  explicit Wanted(std::uint64_t atMs) : m_AtMs(atMs) {}

  // Each round as it ends.
  static void Take(const RoundRecord& round, void* context) {
    auto& self = *static_cast<Wanted*>(context);
    if (round.beganMs > self.m_AtMs) return;
    auto& rounds = self.m_Rounds[round.adapter];
    if (!rounds.empty() && rounds.back().endedMs < self.m_AtMs) rounds.clear();
    rounds.push_back(round);
  }
  const std::vector<RoundRecord>& Of(int adapter) { return m_Rounds[adapter]; }

 private:
  const std::uint64_t m_AtMs;
  std::map<int, std::vector<RoundRecord>> m_Rounds;
};

// Whether a round that began by the time asked for still runs.
struct StillRunning {
  const RoundRecorder& recorder;
  std::uint64_t atMs;
  int first, last;

  static bool HaveEnded(void* context) {
    const auto& self = *static_cast<const StillRunning*>(context);
    for (int adapter = self.first; adapter <= self.last; ++adapter) {
      const RoundRecord* round = self.recorder.Latest(adapter);
      if (round && !round->ended && round->beganMs <= self.atMs) return false;
    }
    return true;
  }
};

void RunTo(platform::sim::SimulatedPc& pc, std::uint64_t ms, SimulatedUser* user) {
  constexpr std::uint64_t kStepMs = 1000;
  for (std::uint64_t done = 0; done < ms;) {
    const std::uint64_t step = std::min(kStepMs, ms - done);
    pc.RunFor(std::chrono::milliseconds(step));
    done += step;
    if (user) user->Look(done);
  }
}

}  // namespace

int ExplainCommand(const std::vector<std::string>& words) {
  const Arguments arguments(
      words, {"--at", "--air", "--recording", "--adapter", "--mode", "--profile", "--seed"},
      {"--json", "--user"});
  const auto at = arguments.Value("--at");
  if (!at) throw UsageError("--at TIME says which round");
  AirReport airReport;
  const platform::sim::World world = WorldOf(arguments, &airReport);
  const int adapters = static_cast<int>(world.adapters.size());
  const bool one = arguments.Value("--adapter").has_value();
  const int first = one ? static_cast<int>(arguments.Number("--adapter", 0)) : 0;
  if (one && first >= adapters) throw UsageError(FormatA("the world has no adapter %i", first));
  const int last = one ? first : adapters - 1;

  platform::sim::PcOptions options;
  options.seed = arguments.Number("--seed", 1);
  platform::sim::SimulatedPc pc(world, options);
  SimulatedUser user(options.seed);
  const std::uint64_t atMs = ParseDuration(*at);
  Wanted wanted(atMs);
  RoundRecorder recorder(pc, world, true, &Wanted::Take, &wanted);
  ServiceRun service(pc);
  service.Start();
  // A round may begin in the very millisecond that is asked for.
  RunTo(pc, atMs + 1, arguments.Has("--user") ? &user : nullptr);
  StillRunning running{recorder, atMs, first, last};
  pc.RunUntil(&StillRunning::HaveEnded, &running, kLongestRound, std::chrono::milliseconds(10));
  for (int adapter = first; adapter <= last; ++adapter) {
    std::vector<RoundRecord> rounds = wanted.Of(adapter);
    const RoundRecord* latest = recorder.Latest(adapter);
    if (latest && !latest->ended && latest->beganMs <= atMs) rounds.push_back(*latest);  // cut off
    if (rounds.empty()) std::printf("adapter %i has begun no round\n", adapter);
    for (const RoundRecord& round : rounds) {
      if (arguments.Has("--json")) {
        std::printf("%s\n", RoundJson(round, RoundDetail::kAll).c_str());
      } else {
        Print(round);
      }
    }
  }
  return 0;
}

}  // namespace corvane::lab
