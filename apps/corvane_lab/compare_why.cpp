#include "corvane_lab/compare_why.h"

#include <algorithm>
#include <numeric>

namespace corvane::lab {

namespace {

constexpr std::uint64_t kSecondMs = 1000, kMiddleMs = 500;

// How the round stood to an access point.
std::string StandingText(const RoundNote& note, int accessPoint) {
  const RoundNote::Entry* entry = note.Find(accessPoint);
  if (!entry) return "unheard";
  if (entry->standing) return CandidateStandingName(*entry->standing);
  return entry->score <= note.score ? "scored-lower" : "not-weighed";
}

bool TellsNothingOfOthers(RoundStep step) {
  switch (step) {
    case RoundStep::kRadioOff:
    case RoundStep::kAirplaneMode:
    case RoundStep::kDisabled:
    case RoundStep::kInhibited:
    case RoundStep::kVpn:
    case RoundStep::kOvertaken:
    case RoundStep::kRoamingInhibit:
    case RoundStep::kStateUnclear:
      return true;
    default:
      return false;
  }
}

// The round that holds in a second: one that moves while it runs, else the last one that has ended.
RoundNotes::const_iterator NoteAt(const RoundNotes& notes, std::uint64_t ms) {
  const auto next = std::upper_bound(
      notes.begin(), notes.end(), ms,
      [](std::uint64_t time, const RoundNote& note) { return time < note.endedMs; });
  if (next != notes.end() && next->moves && next->beganMs <= ms) return next;
  return next == notes.begin() ? notes.end() : std::prev(next);
}

std::string RoundText(const AdapterTruth& truth, const RoundNotes& notes,
                      RoundNotes::const_iterator note, int wanted);

// A link that is busy tells nothing of what kept the service from moving before it was.
std::string BusyText(const AdapterTruth& truth, const RoundNotes& notes,
                     RoundNotes::const_iterator note, int wanted) {
  const std::size_t second = std::min(note->endedMs / kSecondMs, truth.busy.size() - 1);
  std::string text = truth.busy[second] ? "link-busy (traffic)" : "link-busy (background)";
  while (note != notes.begin() && note->step == RoundStep::kLinkBusy) --note;
  if (note->step == RoundStep::kLinkBusy) return text;
  return text + " after " + RoundText(truth, notes, note, wanted);
}

std::string RoundText(const AdapterTruth& truth, const RoundNotes& notes,
                      RoundNotes::const_iterator note, int wanted) {
  if (!note->step) return "round without a decision";
  if (*note->step == RoundStep::kLinkBusy) return BusyText(truth, notes, note, wanted);
  std::string text = RoundStepName(*note->step);
  if (*note->step == RoundStep::kInhibited) return text + " (" + note->inhibit + ")";
  if (TellsNothingOfOthers(*note->step)) return text;
  return text + ", " + StandingText(*note, wanted);
}

std::string CauseAt(const AdapterTruth& truth, const RoundNotes& notes, std::uint64_t ms, int own,
                    int wanted, bool shared) {
  if (own == wanted && shared) return "shared with the other adapter";
  if (own == wanted || wanted == kNoLink) return "at the edge of a move";
  const auto note = NoteAt(notes, ms);
  const bool known = note != notes.end();
  if (own == kNoLink && known && note->moves && note->endedMs > ms) return "moving";
  const std::string text =
      known ? RoundText(truth, notes, note, wanted) : std::string("no round yet");
  return own == kNoLink ? "no link: " + text : text;
}

}  // namespace

std::map<std::string, Loss> WhyBehind(const Truth& truth, const PolicyRun& run,
                                      const PolicyTrace& oracle) {
  constexpr double kLeastMbps = 0.01, kPercent = 100.0;
  std::map<std::string, Loss> causes;
  double whole = 0.0;
  for (std::size_t i = 0; i < truth.adapters.size(); ++i) {
    const std::vector<float> best = RatesOf(truth, oracle, i), own = RatesOf(truth, run.trace, i);
    whole += std::accumulate(best.begin(), best.end(), 0.0);
    for (std::size_t second = 0; second < truth.seconds; ++second) {
      const double lost = best[second] - own[second];
      if (lost < kLeastMbps && lost > -kLeastMbps) continue;
      const std::uint64_t ms = second * kSecondMs + kMiddleMs;
      const int at = run.trace[i].At(ms);
      const bool shared = std::ranges::count_if(run.trace, [&](const AdapterTrace& one) {
                            return one.At(ms) == at;
                          }) > 1;
      Loss& loss = causes[lost < 0.0 ? "ahead of the oracle"
                                     : CauseAt(truth.adapters[i], run.rounds[i], ms, at,
                                               oracle[i].At(ms), shared)];
      loss.points += lost;
      ++loss.seconds;
    }
  }
  for (auto& [cause, loss] : causes) loss.points *= whole > 0.0 ? kPercent / whole : 0.0;
  return causes;
}

}  // namespace corvane::lab
