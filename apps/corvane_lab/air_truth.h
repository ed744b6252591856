#pragma once
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/sim/world/world.h"

namespace corvane::lab {

// The air of a world as nobody in it can know it: what each adapter would hear and get of each
// access point. A pure look at the world and its timeline, by the same radio model as that of the
// simulated PC; no random number is drawn, and no program runs.
class AirTruth {
 public:
  // At 0 ms. The adapters and access points count by their positions in the world.
  AirTruth(const platform::sim::World& world, std::uint64_t seed);

  // To a time that is not before the present one.
  void MoveTo(std::uint64_t ms);
  // What the adapter hears of the access point: nothing when it hears nothing.
  std::optional<double> Dbm(std::size_t adapter, std::size_t accessPoint) const;
  // The rate of a link there in Mbps, what the load of the channel leaves of it; 0 when it is not
  // heard, or too weak for any modulation.
  double Mbps(std::size_t adapter, std::size_t accessPoint) const;
  double MbpsAt(std::size_t adapter, std::size_t accessPoint, double dbm) const;
  // Whether a connect could succeed: by a profile, filters, key and refusals. Open networks are
  // out, as the service goes to none by itself.
  bool LetsIn(std::size_t adapter, std::size_t accessPoint) const;
  // What the adapter is asked to carry, in and out.
  double TrafficMbps(std::size_t adapter) const;

 private:
  void Carry(const platform::sim::Action& action);
  void CarryForAdapters(const platform::sim::Action& action);
  void CarryProfile(const platform::sim::Action& action);
  bool CanSend(std::size_t adapter) const;
  // What a link of an adapter can use of an access point.
  struct Shape {
    platform::LONG phy = 0;
    int widthMhz = 20, streams = 1;
  };

  const std::uint64_t m_Seed;
  platform::sim::World m_World;  // as the timeline has made it by now
  std::vector<std::optional<double>> m_Fixed;
  std::vector<double> m_Busy;                // share of the air that others take, by access point
  std::vector<std::vector<Shape>> m_Shapes;  // by adapter, then by access point
  std::size_t m_Next = 0;                    // in the timeline
  std::uint64_t m_Ms = 0;
  platform::sim::Point m_Place;
  bool m_bService = true, m_bSuspended = false;
};

// Traffic from here on is a phase that nobody may disturb; what is less is background.
inline constexpr double kPhaseMbps = 0.5;

// The rate in Mbps that a signal of so many dBm carries, before load: SNR over -95 dBm, 3 dB less
// for each doubling of 20 MHz, one modulation after the other from 2, 5, 9, 11, 15, 18, 20, 25, 29,
// 31, 34 and 36 dB on. `streams` are those of both sides; more than two count as two.
double RateMbps(platform::LONG phy, int widthMhz, int streams, double dbm);

// The truth second by second, each by its middle.
struct AdapterTruth {
  // By access point, then by second.
  std::vector<std::vector<float>> mbps;
  std::vector<std::vector<std::uint8_t>> heard, letsIn;
  std::vector<std::uint8_t> busy;  // by second: a phase of traffic
};
struct Truth {
  std::size_t seconds = 0, accessPoints = 0;
  std::vector<AdapterTruth> adapters;
  int TrafficPhases() const;  // of all adapters
};
Truth LookAhead(const platform::sim::World& world, std::uint64_t seed, std::size_t seconds);

}  // namespace corvane::lab
