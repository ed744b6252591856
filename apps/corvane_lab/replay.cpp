#include "corvane_lab/replay.h"

#include <algorithm>
#include <map>
#include <span>
#include <stdexcept>
#include <utility>

#include "corvane_lab/recorded_world.h"
#include "corvane_lab/round_record.h"
#include "corvane_lab/service_run.h"
#include "foundation/format.h"
#include "platform/sim/simulated_pc.h"

namespace corvane::lab {

namespace {

constexpr std::uint64_t kNearMs = 5000;  // half a round
constexpr std::uint64_t kStepMs = 1000;

// The rounds of a run, by adapter, in their order.
struct Rounds {
  std::map<int, std::vector<RoundRecord>> of;
  static void Keep(const RoundRecord& round, void* self) {
    static_cast<Rounds*>(self)->of[round.adapter].push_back(round);
  }
};

Rounds RunService(const platform::sim::World& world, std::uint64_t seed) {
  Rounds rounds;
  platform::sim::PcOptions options;
  options.seed = seed;
  platform::sim::SimulatedPc pc(world, options);
  const RoundRecorder recorder(pc, world, false, &Rounds::Keep, &rounds);
  ServiceRun service(pc);
  service.Start();
  for (std::uint64_t done = 0; done < world.durationMs; done += kStepMs) {
    pc.RunFor(std::chrono::milliseconds(kStepMs));
    if (!service.IsRunning()) throw std::runtime_error("the service ended by itself");
  }
  if (!service.Stop()) throw std::runtime_error("the service did not end within three minutes");
  return rounds;
}

std::string Text(const std::vector<Recording::Step>& steps) {
  std::string text;
  for (const Recording::Step& step : steps) {
    if (!text.empty()) text += ", ";
    text += step.name;
    if (!IsZero(step.bssid)) text += " " + MacTextA(step.bssid);
  }
  return text.empty() ? "nothing" : text;
}

std::string Text(const RoundRecord& round) {
  std::string text;
  for (const StepRecord& step : round.steps) {
    if (!text.empty()) text += ", ";
    text += RoundStepName(step.step);
    if (!step.bssid.empty()) text += " " + step.bssid;
  }
  return text.empty() ? "nothing" : text;
}

class Comparison {
 public:
  explicit Comparison(const Recording& run) : m_Run(run) {}

  ReplayResult Against(const Rounds& replayed) {
    for (const Recording::Round& round : m_Run.rounds) {
      const auto place =
          std::ranges::find(m_Run.adapters, round.adapter, &Recording::Adapter::index);
      const auto at = replayed.of.find(static_cast<int>(place - m_Run.adapters.begin()));
      const auto beside = at == replayed.of.end() ? Span() : Around(at->second, round.ms);
      if (beside.empty()) {
        ++m_Result.unmatched;
      } else {
        Hold(round, beside);
      }
    }
    return std::move(m_Result);
  }

 private:
  using Span = std::span<const RoundRecord>;

  static Span Around(const std::vector<RoundRecord>& rounds, std::uint64_t ms) {
    const auto first =
        std::ranges::lower_bound(rounds, ms - std::min(ms, kNearMs), {}, &RoundRecord::endedMs);
    const auto last = std::ranges::upper_bound(rounds, ms + kNearMs, {}, &RoundRecord::endedMs);
    return {first, last};
  }

  void Hold(const Recording::Round& recorded, Span beside) {
    const RoundRecord& replayed =
        *std::ranges::min_element(beside, {}, [&](const RoundRecord& one) {
          return one.endedMs > recorded.ms ? one.endedMs - recorded.ms : recorded.ms - one.endedMs;
        });
    std::string unlike;
    std::size_t compared = 0;
    if (recorded.weighed) {
      for (const auto* list : {&replayed.candidates, &replayed.others}) {
        for (const EntryRecord& entry : *list) {
          MacAddress bssid{};
          if (!MacStringToBinary(u'-', Widen(entry.bssid), &bssid)) continue;
          const auto at = recorded.scores.find(bssid);
          if (at == recorded.scores.end()) continue;
          ++compared;
          if (at->second == entry.score) {
            ++m_Result.scoresSame;
          } else {
            unlike += FormatA(" %s %d/%d", entry.bssid.c_str(), at->second, entry.score);
          }
        }
      }
    }
    m_Result.scores += compared;
    ++m_Result.rounds;
    const std::string was = Text(recorded.steps), is = Text(replayed);
    if (std::ranges::any_of(beside, [&](const RoundRecord& one) { return Text(one) == was; })) {
      ++m_Result.roundsSame;
      return;
    }
    std::string why = unlike.empty() ? std::string() : "scores, recorded/replayed:" + unlike;
    m_Result.differences.push_back({recorded.ms, recorded.adapter, was, is, std::move(why)});
  }

  const Recording& m_Run;
  ReplayResult m_Result;
};

}  // namespace

SameRounds CompareReplays(const Recording& one, const Recording& other) {
  const Rounds first = RunService(WorldOfRecording(one), 1);
  const Rounds second = RunService(WorldOfRecording(other), 1);
  SameRounds same;
  const auto alike = [&](const RoundRecord& a, const RoundRecord& b) {
    const auto entries = [&](const std::vector<EntryRecord>& as,
                             const std::vector<EntryRecord>& bs) {
      same.scores += as.size();
      return std::ranges::equal(as, bs, [](const EntryRecord& x, const EntryRecord& y) {
        return x.score == y.score && x.quality == y.quality && x.standing == y.standing &&
               x.counter == y.counter;
      });
    };
    return a.endedMs == b.endedMs && entries(a.candidates, b.candidates) &&
           entries(a.others, b.others) &&
           std::ranges::equal(a.steps, b.steps, {}, &StepRecord::step, &StepRecord::step);
  };
  for (const auto& [adapter, rounds] : first.of) {
    const auto at = second.of.find(adapter);
    const std::size_t others = at == second.of.end() ? 0 : at->second.size();
    for (std::size_t i = 0; i < rounds.size() && same.unlike.empty(); ++i, ++same.rounds) {
      if (i >= others || !alike(rounds[i], at->second[i]))
        same.unlike = FormatA("round %llu of adapter %i", rounds[i].number, adapter);
    }
    if (same.unlike.empty() && others != rounds.size())
      same.unlike = FormatA("the rounds of adapter %i", adapter);
  }
  return same;
}

ReplayResult Replay(const Recording& run, const platform::sim::World& world, std::uint64_t seed) {
  return Comparison(run).Against(RunService(world, seed));
}

}  // namespace corvane::lab
