#pragma once
// Whether a round may scan. Pure.

#include <cstdint>
#include <span>

namespace corvane {

// Scan intervals above this have the long rules: a scan held back by traffic leaves the clock, and
// the growing time lets it through in the end. Up to it, the count of scans held back does.
inline constexpr std::uint32_t kLongIntervalAboveSecs = 30;
inline constexpr std::uint32_t kLongRuleExtraSecs = 60;
inline constexpr std::uint32_t kDeferralsNeeded = 3;
inline constexpr std::size_t kRatesRemembered = 2;

struct ScanInputs {
  bool force_scan = false;
  bool connected = false;
  bool ulScan = false;        // a connected adapter scans only when asked or held back for long
  std::uint64_t deltaMs = 0;  // since the clock of the scan interval moved
  std::uint32_t intervalSecs = 0;
  std::uint32_t mainLoopSleepMs = 0;
  std::uint32_t deferrals = 0;  // scans held back by traffic in a row
  std::int32_t forceCounter = 0;
  double rate = 0.0;                      // Mbps, transmit and receive
  double gateLow = 0.0;                   // Mbps; idle below it
  double gateHigh = 0.0;                  // Mbps; almost idle below it
  std::span<const double> previousRates;  // of the last rounds
};

// The rule that decided, in the order in which they are tried.
enum class ScanRule : std::uint8_t {
  kForcedCount = 1,  // scans; the counter falls by one
  kForced,           // scans
  kLongHeldBack,     // scans
  kDeferrals,        // scans; the count of deferrals starts anew
  kTooEarly,         // no scan
  kDisconnected,     // scans
  kIdle,             // scans
  kTraffic,          // no scan
};

struct ScanDecision {
  ScanRule rule = ScanRule::kTooEarly;
  bool netIsIdle = false;
  bool idleVetoed = false;      // this rate was idle, one of the rounds before was not
  bool countsDeferral = false;  // held back by traffic with a short interval: the clock moves, too

  bool Scans() const { return rule != ScanRule::kTooEarly && rule != ScanRule::kTraffic; }
};

ScanDecision DecideScan(const ScanInputs& in);

}  // namespace corvane
