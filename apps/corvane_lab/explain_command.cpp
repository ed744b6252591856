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
  std::printf("%s\n", FormatA("%4s  %s %s  score %i  quality %u  counter %i  %s",
                              place ? std::to_string(place) : "",
                              entry.ssid.empty() ? "(no name)" : entry.ssid, entry.bssid,
                              entry.score, entry.quality, entry.counter, ReasonText(round, entry))
                          .c_str());
  if (!entry.terms.empty()) std::printf("        %s\n", entry.terms.c_str());
}

void PrintPolicy(const RoundRecord& round) {
  const std::string at = round.connected
                             ? FormatA("Connected to %s %s, score %i, quality %u", round.ssid,
                                       round.bssid, round.score, round.quality)
                             : std::string("Not connected");
  std::printf("  %s. Mode %s.\n", at.c_str(), round.mode);
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

std::string Seconds(std::uint64_t ms) { return FormatA("%llu.%03llu s", ms / 1000, ms % 1000); }

void Print(const RoundRecord& round) {
  std::printf("%s\n", FormatA("adapter %i, round %llu, from %s to %s", round.adapter, round.number,
                              Seconds(round.beganMs),
                              round.ended ? Seconds(round.endedMs) : std::string("(cut off)"))
                          .c_str());
  const std::string outcome = OutcomeText(round);
  std::printf("  %s\n", outcome.empty() ? "Nothing was decided." : outcome.c_str());
  if (round.hasPolicy) PrintPolicy(round);
}

// The rounds that are asked for, by adapter: as they have ended, or the number to wait for.
struct Wanted {
  std::map<int, std::uint64_t> running;
  std::map<int, RoundRecord> rounds;

  static void Take(const RoundRecord& round, void* context) {
    auto& self = *static_cast<Wanted*>(context);
    const auto wanted = self.running.find(round.adapter);
    if (wanted == self.running.end() || wanted->second != round.number) return;
    self.rounds[round.adapter] = round;
    self.running.erase(wanted);
  }
  static bool HaveEnded(void* context) { return static_cast<Wanted*>(context)->running.empty(); }

  // As they stand at the moment.
  void Ask(const RoundRecorder& recorder, int adapter) {
    const RoundRecord* round = recorder.Latest(adapter);
    if (!round) return;
    rounds[adapter] = *round;
    if (!round->ended) running[adapter] = round->number;
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
  const Arguments arguments(words, {"--at", "--air", "--adapter", "--mode", "--seed"},
                            {"--json", "--user"});
  const auto at = arguments.Value("--at");
  if (!at) throw UsageError("--at TIME says which round");
  const platform::sim::World world = WorldOf(arguments);
  const int adapters = static_cast<int>(world.adapters.size());
  const bool one = arguments.Value("--adapter").has_value();
  const int first = one ? static_cast<int>(arguments.Number("--adapter", 0)) : 0;
  if (one && first >= adapters) throw UsageError(FormatA("the world has no adapter %i", first));
  const int last = one ? first : adapters - 1;

  platform::sim::PcOptions options;
  options.seed = arguments.Number("--seed", 1);
  platform::sim::SimulatedPc pc(world, options);
  SimulatedUser user(options.seed);
  Wanted wanted;
  RoundRecorder recorder(pc, world, true, &Wanted::Take, &wanted);
  ServiceRun service(pc);
  service.Start();
  RunTo(pc, ParseDuration(*at), arguments.Has("--user") ? &user : nullptr);
  for (int adapter = first; adapter <= last; ++adapter) wanted.Ask(recorder, adapter);
  pc.RunUntil(&Wanted::HaveEnded, &wanted, kLongestRound, std::chrono::milliseconds(10));
  for (int adapter = first; adapter <= last; ++adapter) {
    const auto round = wanted.rounds.find(adapter);
    if (round == wanted.rounds.end()) {
      std::printf("adapter %i has begun no round\n", adapter);
    } else if (arguments.Has("--json")) {
      std::printf("%s\n", RoundJson(round->second, RoundDetail::kAll).c_str());
    } else {
      Print(round->second);
    }
  }
  return 0;
}

}  // namespace corvane::lab
