#include "balanced/scan_cadence.h"

#include <algorithm>

namespace corvane::balanced {

namespace {

constexpr std::uint64_t kPendingMs = 10'000, kSteadyMs = 30'000, kSteadyMostMs = 60'000;
constexpr std::uint64_t kDisconnectedMs = 4'000, kDisconnectedMostMs = 30'000;
constexpr std::uint32_t kMostDoublings = 5;
constexpr std::uint32_t kQuickScans = 8;  // that lead to nothing, before the next ones come slower

std::uint64_t Grown(std::uint64_t ms, std::uint32_t dull, std::uint64_t most) {
  return std::min(ms << std::min(dull, kMostDoublings), std::max(ms, most));
}

}  // namespace

std::uint64_t PauseMs(const CadenceFacts& facts, std::uint64_t longestMs) {
  const auto vain = [](std::uint32_t scans) { return scans - std::min(scans, kQuickScans); };
  if (!facts.connected)
    return Grown(kDisconnectedMs, vain(std::max(facts.dullScans, facts.readyScans)),
                 kDisconnectedMostMs);
  if (facts.pending) return Grown(kPendingMs, vain(facts.readyScans), kSteadyMostMs);
  return Grown(kSteadyMs, facts.dullScans, std::min(longestMs, kSteadyMostMs));
}

ScanDecision DecideScan(const ScanInputs& in, const CadenceFacts& facts, bool busy, bool lost) {
  ScanDecision decision;
  decision.netIsIdle = !busy;
  const bool may = !in.connected || !busy || lost;
  if (in.force_scan) {
    decision.rule = ScanRule::kForced;
  } else if (!may) {
    decision.rule = ScanRule::kTraffic;
  } else if (in.forceCounter > 0) {
    decision.rule = ScanRule::kForcedCount;
  } else if (in.deltaMs < PauseMs(facts, std::uint64_t{in.intervalSecs} * 1000)) {
    decision.rule = ScanRule::kTooEarly;
  } else {
    decision.rule = in.connected ? ScanRule::kIdle : ScanRule::kDisconnected;
  }
  return decision;
}

}  // namespace corvane::balanced
