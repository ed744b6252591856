#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "core/foundation/format.h"
#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "corvane_lab/round_record.h"
#include "corvane_lab/service_run.h"
#include "corvane_lab/world_source.h"

namespace corvane::lab {

namespace {

// A round that begins before the time asked for may still run; none takes longer.
constexpr std::chrono::minutes kLongestRound(10);

// The rule that settled the entry, or what else there is to say of it.
const char* WhyOf(const RoundRecord& round, const EntryRecord& entry) {
  if (entry.standing) return CandidateStandingText(*entry.standing);
  if (round.connected && entry.bssid == round.bssid) return "it is the connected one";
  const bool onBest = std::ranges::any_of(round.steps, [](const StepRecord& s) { return s.step == RoundStep::kOnBest; });
  return onBest ? "it ranks behind the connected one" : "the round did not come to weigh it";
}

void PrintEntry(const RoundRecord& round, std::size_t place, const EntryRecord& entry) {
  std::printf("%s\n", FormatA("%4s  %s %s  score %i  quality %u  counter %i  %s", place ? std::to_string(place) : "",
                              entry.ssid.empty() ? "(no name)" : entry.ssid, entry.bssid, entry.score, entry.quality,
                              entry.counter, WhyOf(round, entry))
                          .c_str());
  if (!entry.terms.empty()) std::printf("        %s\n", entry.terms.c_str());
}

void PrintPolicy(const RoundRecord& round) {
  const std::string at = round.connected ? FormatA("Connected to %s %s, score %i, quality %u", round.ssid, round.bssid,
                                                   round.score, round.quality)
                                         : std::string("Not connected");
  std::printf("  %s. Mode %s.\n", at.c_str(), round.mode);
  std::printf("%s\n", FormatA("  To be ready: quality %u, %u points and %u %% above the connected one, in %i rounds. "
                              "Traffic %.3lf Mbps, held back from %.3lf Mbps on%s.",
                              round.margins.qualityThreshold, round.margins.scoreThreshold,
                              round.margins.scorePercent, round.required, round.mbps, round.gateMbps,
                              round.realTimeAudio ? "; real-time audio runs" : "")
                          .c_str());
  std::printf("  Candidates, best first%s\n", round.candidates.empty() ? ": none" : "");
  for (std::size_t i = 0; i < round.candidates.size(); ++i) PrintEntry(round, i + 1, round.candidates[i]);
  if (!round.others.empty()) std::printf("  No candidates\n");
  for (const EntryRecord& entry : round.others) PrintEntry(round, 0, entry);
}

std::string Seconds(std::uint64_t ms) { return FormatA("%llu.%03llu s", ms / 1000, ms % 1000); }

void Print(const RoundRecord& round) {
  std::printf("%s\n", FormatA("adapter %i, round %llu, from %s to %s", round.adapter, round.number,
                              Seconds(round.beganMs), round.ended ? Seconds(round.endedMs) : std::string("(cut off)"))
                          .c_str());
  const std::string outcome = OutcomeText(round);
  std::printf("  %s\n", outcome.empty() ? "Nothing was decided." : outcome.c_str());
  if (round.hasPolicy) PrintPolicy(round);
}

}  // namespace

int ExplainCommand(const std::vector<std::string>& words) {
  const Arguments arguments(words, {"--at", "--air", "--adapter", "--mode", "--seed"}, {"--json"});
  const auto at = arguments.Value("--at");
  if (!at) throw UsageError("--at TIME says which round");
  const platform::sim::World world = WorldOf(arguments);
  const int only = arguments.Value("--adapter") ? static_cast<int>(arguments.Number("--adapter", 0)) : -1;
  if (only >= static_cast<int>(world.adapters.size())) {
    throw UsageError(FormatA("the world has no adapter %i", only));
  }
  platform::sim::PcOptions options;
  options.seed = arguments.Number("--seed", 1);
  platform::sim::SimulatedPc pc(world, options);
  RoundRecorder rounds(pc, world, true, nullptr, nullptr);
  ServiceRun service(pc);
  service.Start();
  pc.RunFor(std::chrono::milliseconds(ParseDuration(*at)));
  for (int adapter = 0; adapter < static_cast<int>(world.adapters.size()); ++adapter) {
    if (only >= 0 && adapter != only) continue;
    const RoundRecord* round = rounds.Latest(adapter);
    if (!round) {
      std::printf("adapter %i has begun no round\n", adapter);
      continue;
    }
    const auto ended = [](void* record) { return static_cast<const RoundRecord*>(record)->ended; };
    RoundRecord* running = const_cast<RoundRecord*>(round);
    pc.RunUntil(ended, running, kLongestRound, std::chrono::milliseconds(10));
    arguments.Has("--json") ? (void)std::printf("%s\n", RoundJson(*round).c_str()) : Print(*round);
  }
  return 0;
}

}  // namespace corvane::lab
