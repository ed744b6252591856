#include "platform/sim/world/radio_model.h"

#include <algorithm>
#include <cmath>

#include "platform/sim/kernel/seeded_random.h"

namespace corvane::platform::sim {

namespace {

constexpr double kSquareMetres = 2.0;
constexpr std::uint64_t kSlotMs = 10'000;
constexpr double kFadingShare =
    1.0 / 3.0;  // of what changes with time, beside what stands in space

template <class Value>
Value Between(Value from, Value to, double share) {
  return from + (to - from) * share;
}

double Distance(const Point& a, const Point& b) { return std::hypot(a.x - b.x, a.y - b.y); }

// One draw near the normal distribution N(0, 1), never beyond 3.5: the sum of four even draws.
// Unlike a true normal draw it needs no function whose last digits differ between machines.
double NormalDraw(std::uint64_t seed, const Mac& bssid, std::int64_t a, std::int64_t b) {
  std::uint64_t key = 0;
  for (const BYTE byte : bssid) key = key << 8 | byte;
  std::uint64_t state = SeededRandom(seed ^ key).Next();
  state = SeededRandom(state ^ static_cast<std::uint64_t>(a)).Next();
  SeededRandom random(state ^ static_cast<std::uint64_t>(b));
  constexpr double kScale = 1.7320508075688772;  // of four even draws, to a deviation of 1
  return (random.Unit() + random.Unit() + random.Unit() + random.Unit() - 2.0) * kScale;
}

// Drawn at the corners of squares and even between them: the signal has no steps along a walk.
double Shadowing(std::uint64_t seed, const Mac& bssid, const Point& machine) {
  const double x = machine.x / kSquareMetres, y = machine.y / kSquareMetres;
  const double left = std::floor(x), low = std::floor(y);
  const auto corner = [&](int dx, int dy) {
    return NormalDraw(seed, bssid, static_cast<std::int64_t>(left) + dx,
                      static_cast<std::int64_t>(low) + dy);
  };
  return Between(Between(corner(0, 0), corner(1, 0), x - left),
                 Between(corner(0, 1), corner(1, 1), x - left), y - low);
}

double Fading(std::uint64_t seed, const Mac& bssid, std::uint64_t ms) {
  constexpr std::uint64_t kOtherSeed = 0x5EED;  // so that time and place draw apart
  const auto draw = [&](std::uint64_t slot) {
    return NormalDraw(seed ^ kOtherSeed, bssid, static_cast<std::int64_t>(slot), 0);
  };
  const std::uint64_t slot = ms / kSlotMs;
  return Between(draw(slot), draw(slot + 1),
                 static_cast<double>(ms % kSlotMs) / static_cast<double>(kSlotMs));
}

// How far `ms` is on the way from one time to a later one, 0 to 1.
double ShareOf(std::uint64_t fromMs, std::uint64_t toMs, std::uint64_t ms) {
  return static_cast<double>(ms - fromMs) / static_cast<double>(toMs - fromMs);
}

// The first entry that lies behind `ms`.
template <class Entry>
auto FirstBehind(const std::vector<Entry>& entries, std::uint64_t ms) {
  return std::upper_bound(entries.begin(), entries.end(), ms,
                          [](std::uint64_t time, const Entry& entry) { return time < entry.atMs; });
}

}  // namespace

Point PositionAt(const std::vector<Waypoint>& path, std::uint64_t ms) {
  if (path.empty()) return {};
  const auto next = FirstBehind(path, ms);
  if (next == path.begin()) return next->at;
  const auto last = std::prev(next);
  if (next == path.end()) return last->at;
  const double share = ShareOf(last->atMs, next->atMs, ms);
  return {Between(last->at.x, next->at.x, share), Between(last->at.y, next->at.y, share)};
}

void AddWalk(std::vector<Waypoint>* path, std::uint64_t nowMs, const Point& to,
             double metresPerSecond) {
  const Point from = PositionAt(*path, nowMs);
  path->erase(FirstBehind(*path, nowMs), path->end());
  path->push_back({nowMs, from});
  const double ms = Distance(from, to) / metresPerSecond * 1000.0;
  path->push_back({nowMs + static_cast<std::uint64_t>(std::llround(ms)), to});
}

double TrackSignalAt(const std::vector<SignalPoint>& track, std::uint64_t ms) {
  const auto next = FirstBehind(track, ms);
  if (next == track.begin()) return next->dbm;
  const auto last = std::prev(next);
  if (next == track.end()) return last->dbm;
  return Between(last->dbm, next->dbm, ShareOf(last->atMs, next->atMs, ms));
}

std::optional<double> HeardAt(const HeardTrack& track, std::uint64_t ms) {
  const auto next = FirstBehind(track, ms);
  if (next == track.begin()) return std::nullopt;
  const auto last = std::prev(next);
  if (std::isnan(last->dbm)) return std::nullopt;
  if (next == track.end() || std::isnan(next->dbm)) return last->dbm;
  return Between(last->dbm, next->dbm, ShareOf(last->atMs, next->atMs, ms));
}

const std::shared_ptr<const std::vector<BYTE>>* SentAt(const AccessPoint& accessPoint,
                                                       std::uint64_t ms) {
  if (accessPoint.sent.empty()) return nullptr;
  const auto next = FirstBehind(accessPoint.sent, ms);
  return &(next == accessPoint.sent.begin() ? next : std::prev(next))->bytes;
}

std::optional<DWORD> TookAt(const std::vector<Took>& recorded, std::uint64_t ms) {
  constexpr std::uint64_t kNearMs = 5000;
  const auto distance = [ms](const Took& one) {
    return one.atMs > ms ? one.atMs - ms : ms - one.atMs;
  };
  const auto behind = FirstBehind(recorded, ms);
  const Took* nearest = nullptr;
  if (behind != recorded.begin()) nearest = &*std::prev(behind);
  if (behind != recorded.end() && (!nearest || distance(*behind) < distance(*nearest)))
    nearest = &*behind;
  if (!nearest || distance(*nearest) > kNearMs) return std::nullopt;
  return nearest->ms;
}

double SignalDbm(const World& world, const AccessPoint& accessPoint, const Point& machine,
                 std::uint64_t ms, std::uint64_t seed) {
  if (!accessPoint.track.empty()) return TrackSignalAt(accessPoint.track, ms);
  constexpr double kNearest = 1.0;  // metres; nearer, the model does not hold
  // Free-space loss over the first metre: 20 lg(d / km) + 20 lg(f / MHz) + 32.44 dB.
  const double firstMetre =
      20.0 * std::log10(static_cast<double>(accessPoint.frequencyMhz)) - 27.56;
  const double distance = std::max(kNearest, Distance(machine, accessPoint.at));
  const double loss = firstMetre + 10.0 * world.pathLossExponent * std::log10(distance);
  double noise = 0.0;
  if (world.shadowingDb > 0.0) {
    noise = world.shadowingDb * (Shadowing(seed, accessPoint.bssid, machine) +
                                 kFadingShare * Fading(seed, accessPoint.bssid, ms));
  }
  return accessPoint.txPowerDbm - loss + noise;
}

std::optional<double> HeardDbm(const World& world, const Adapter& adapter,
                               const AccessPoint& accessPoint, const std::optional<double>& fixed,
                               const Point& machine, std::uint64_t ms, std::uint64_t seed) {
  if (!accessPoint.heard.empty() && !fixed) {
    const auto at = std::ranges::find(world.adapters, adapter.mac, &Adapter::mac);
    const auto place = static_cast<std::size_t>(at - world.adapters.begin());
    return place < accessPoint.heard.size() ? HeardAt(accessPoint.heard[place], ms) : std::nullopt;
  }
  if (!IsAlive(accessPoint, ms)) return std::nullopt;
  const int band = BandOf(accessPoint.frequencyMhz);
  if (std::ranges::find(adapter.bands, band) == adapter.bands.end()) return std::nullopt;
  const double dbm = fixed ? *fixed : SignalDbm(world, accessPoint, machine, ms, seed);
  if (dbm < adapter.sensitivityDbm) return std::nullopt;
  return dbm;
}

ULONG LinkQualityOf(double dbm) {
  return static_cast<ULONG>(std::lround(std::clamp(2.0 * (dbm + 100.0), 0.0, 100.0)));
}

bool IsAlive(const AccessPoint& accessPoint, std::uint64_t ms) {
  return accessPoint.alive.empty() ||
         std::any_of(accessPoint.alive.begin(), accessPoint.alive.end(),
                     [ms](const Span& span) { return span.Holds(ms); });
}

double ConnectWeight(double dbm, int band) {
  constexpr double kWorthwhileDbm = -75.0, kBonusDb = 10.0;
  return band >= 5 && dbm >= kWorthwhileDbm ? dbm + kBonusDb : dbm;
}

int BandOf(ULONG frequencyMhz) {
  if (2000 <= frequencyMhz && frequencyMhz < 3000) return 2;
  if (5150 <= frequencyMhz && frequencyMhz < 5925) return 5;
  if (5925 <= frequencyMhz && frequencyMhz < 7130) return 6;
  return 0;
}

}  // namespace corvane::platform::sim
