#include "corvane_lab/recorded_switches.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>

#include "corvane_lab/recorded_track.h"

namespace corvane::lab {

namespace {

// `sees` tells whether a round saw it; nothing of one that did not look.
RecordedSwitches SwitchesOf(const Recording& run, auto&& sees) {
  std::map<std::uint64_t, bool> seen;  // by the time at which the round began
  for (const Recording::Round& round : run.rounds)
    if (const std::optional<bool> on = sees(round)) seen[round.BeganMs()] = *on;
  RecordedSwitches switches;
  std::uint64_t lastMs = 0;
  bool last = false;
  for (const auto& [ms, on] : seen) {
    if (on != last) switches.emplace_back(Middle(lastMs, ms), on);
    last = on;
    lastMs = ms;
  }
  return switches;
}

}  // namespace

// One that is passed over holds no round, and is told all the same.
RecordedSwitches VpnSwitches(const Recording& run) {
  return SwitchesOf(run, [&](const Recording::Round& round) -> std::optional<bool> {
    if (round.Has("vpn")) return true;
    if (!round.weighed) return std::nullopt;
    const auto behind =
        std::ranges::upper_bound(run.machine, round.ms, {}, &Recording::Machine::ms);
    return behind != run.machine.begin() && std::prev(behind)->vpn;
  });
}

// A round without a connection looks for one.
RecordedSwitches WiredSwitches(const Recording& run) {
  return SwitchesOf(run, [](const Recording::Round& round) -> std::optional<bool> {
    if (round.Has("wired-lan")) return true;
    return round.weighed ? std::optional(false) : std::nullopt;
  });
}

RecordedSwitches AirplaneSwitches(const Recording& run) {
  return SwitchesOf(run, [](const Recording::Round& round) -> std::optional<bool> {
    return round.Has("airplane-mode");
  });
}

}  // namespace corvane::lab
