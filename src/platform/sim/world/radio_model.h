#pragma once
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/sim/world/world.h"

namespace corvane::platform::sim {

// Pure functions: the same arguments give the same answer, at any time and in any order.

// Where the machine is.
Point PositionAt(const std::vector<Waypoint>& path, std::uint64_t ms);

// Cuts the path off at `nowMs` and walks from there to `to`, at `metresPerSecond` (above 0).
void AddWalk(std::vector<Waypoint>* path, std::uint64_t nowMs, const Point& to,
             double metresPerSecond);

// A signal track between its points, evenly; before the first and after the last it stays.
double TrackSignalAt(const std::vector<SignalPoint>& track, std::uint64_t ms);

// A recorded track; nothing before its first point and in its gaps.
std::optional<double> HeardAt(const HeardTrack& track, std::uint64_t ms);
// What a recorded access point sent then; null for one that is not recorded.
const std::shared_ptr<const std::vector<BYTE>>* SentAt(const AccessPoint& accessPoint,
                                                       std::uint64_t ms);

// How long one took that was recorded within half a round of this time; nothing: none was.
std::optional<DWORD> TookAt(const std::vector<Took>& recorded, std::uint64_t ms);

// What an adapter at the machine's place hears of the access point, in dBm: its track, or the
// log-distance model (free space to 1 m, then pathLossExponent) with shadowing. Shadowing is one
// value for each access point and square of two metres, plus a small one for each span of ten
// seconds; it depends on the seed. Whether the access point is alive is not asked.
double SignalDbm(const World& world, const AccessPoint& accessPoint, const Point& machine,
                 std::uint64_t ms, std::uint64_t seed);

// The same as an adapter's ears have it, at `fixed` where the timeline has set that: nothing when
// the access point is dead, or too weak or on a band that the adapter does not hear.
std::optional<double> HeardDbm(const World& world, const Adapter& adapter,
                               const AccessPoint& accessPoint, const std::optional<double>& fixed,
                               const Point& machine, std::uint64_t ms, std::uint64_t seed);

// wlanSignalQuality of Windows: 0 at -100 dBm and below, 100 at -50 dBm and above, even between.
ULONG LinkQualityOf(double dbm);

bool IsAlive(const AccessPoint& accessPoint, std::uint64_t ms);

// How the system's own connect compares the access points of a name: 5 and 6 GHz are worth 10 dB
// while the signal there is good enough to be worthwhile.
double ConnectWeight(double dbm, int band);

// The band of a frequency in MHz: 2, 5, 6, or 0.
int BandOf(ULONG frequencyMhz);

}  // namespace corvane::platform::sim
