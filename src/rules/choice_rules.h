#pragma once
// When a decision happens. Pure: plain inputs, plain results.

#include <cstdint>

#include "foundation/text.h"

namespace corvane {

// Scans that are asked for when something needs to be seen soon.
inline constexpr std::int32_t kForcedScans = 3;

// Networks of which some entry went missing, seen by a disconnected adapter.
enum class RedNetworks { kFew, kAlreadyForced, kForceScans };
RedNetworks JudgeRedNetworks(std::size_t networks, std::int32_t forcedScans);

// Milliseconds between two reports of the connection's score: the sleep of the loop, 10 seconds at
// least.
bool IsScoreReportDue(std::uint64_t now, std::uint64_t last, std::uint32_t sleepMs);

// A round without a fresh scan, on a good connection of an enabled adapter.
struct StalenessInputs {
  bool scanFresh = false;
  bool connected = false;
  bool goodQuality = false;
  bool enabled = false;
};
bool IsStale(const StalenessInputs& in);
// What a stale round leads to. `decideAnyway` is ULScan.
enum class StaleAction { kDecide, kSkip, kFastScan };
StaleAction ActOnStaleRound(bool decideAnyway, std::uint32_t scanIntervalSecs);

// A connection gone weak asks for scans, once until it recovers.
enum class Emergency { kNone, kAlreadyForced, kForceScans };
struct EmergencyInputs {
  bool connected = false;
  bool goodQuality = false;
  bool enabled = false;
  bool armed = false;
  std::int32_t forcedScans = 0;
};
Emergency JudgeEmergency(const EmergencyInputs& in);

// The last suggestion, looked for at its place in the sorted list.
enum class SuggestionCheck {
  kNone,       // nothing was suggested
  kStands,     // still there
  kDisplaced,  // another entry has taken its place
  kGone,       // the list has become too short
};
// `bssidAtPosition` is null past the end of the list.
SuggestionCheck CheckSuggestion(std::int32_t position, const WString* bssidAtPosition,
                                WStringView suggestedBssid);

// The disconnected decision waits after a denied access point was left: until `deferUntil`
// included.
enum class DenyDeferral { kNone, kWait, kOver };
DenyDeferral JudgeDenyDeferral(std::uint64_t deferUntil, std::uint64_t now);

// Disconnected rounds count by 10, by 1 in the quick loop of a no-delay window; from 30 on an
// adapter may be connected.
inline constexpr std::uint32_t kDisconnectsForDecision = 30;
constexpr std::uint32_t DisconnectStep(bool noDelay) { return noDelay ? 1 : 10; }

// The week since the installation, 1 at first. Seconds since 1970.
constexpr std::uint32_t WeekSince(std::uint64_t installed, std::uint64_t now) {
  constexpr std::uint64_t kWeekSecs = 604800;
  return static_cast<std::uint32_t>(now > installed ? (now - installed) / kWeekSecs : 0) + 1;
}

}  // namespace corvane
