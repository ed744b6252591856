#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "platform/sim/world/radio_model.h"

namespace corvane::platform::sim {
namespace {

AccessPoint At(double x, double y, BYTE number = 1) {
  AccessPoint ap;
  ap.bssid = {0x02, 0, 0, 0, 0, number};
  ap.frequencyMhz = 5180;
  ap.at = {x, y};
  return ap;
}

World Bare() {
  World world;
  world.shadowingDb = 0.0;
  return world;
}

TEST(LinkQuality, IsThatOfWindowsAtItsLimitsAndBesideThem) {
  struct Case {
    double dbm;
    ULONG quality;
  };
  const Case kCases[] = {{-120, 0},   {-100, 0},  {-99.5, 1}, {-99, 2},  {-75, 50},
                         {-50.5, 99}, {-50, 100}, {-49, 100}, {-10, 100}};
  for (const Case& each : kCases) EXPECT_EQ(LinkQualityOf(each.dbm), each.quality) << each.dbm;
}

TEST(PathLoss, FollowsTheLogarithmOfDistance) {
  const World world = Bare();
  const AccessPoint ap = At(0, 0);
  const auto heard = [&](double metres) { return SignalDbm(world, ap, {metres, 0}, 0, 1); };
  // Free space over one metre at 5180 MHz: 46.73 dB.
  EXPECT_NEAR(heard(1.0), 20.0 - 46.73, 0.01);
  EXPECT_NEAR(heard(10.0), heard(1.0) - 30.0, 1e-9);
  EXPECT_NEAR(heard(100.0), heard(1.0) - 60.0, 1e-9);
  EXPECT_EQ(heard(0.0), heard(1.0));  // on top of it: no infinity
  AccessPoint low = ap;
  low.frequencyMhz = 2412;
  EXPECT_NEAR(SignalDbm(world, low, {10, 0}, 0, 1) - heard(10.0), 20 * std::log10(5180.0 / 2412.0),
              1e-9);
}

TEST(Shadowing, DependsOnSeedPlaceTimeAndAccessPointAndOnNothingElse) {
  World world = Bare();
  world.shadowingDb = 4.0;
  const AccessPoint one = At(0, 0, 1), two = At(0, 0, 2);
  const double first = SignalDbm(world, one, {10, 5}, 30'000, 7);
  for (std::uint64_t ms = 0; ms < 100'000; ms += 7'000) SignalDbm(world, two, {1, 1}, ms, 9);
  EXPECT_EQ(SignalDbm(world, one, {10, 5}, 30'000, 7), first);
  EXPECT_NE(SignalDbm(world, one, {10, 5}, 30'000, 8), first);
  EXPECT_NE(SignalDbm(world, one, {10, 5}, 90'000, 7), first);
  EXPECT_NE(SignalDbm(world, one, {14, 5}, 30'000, 7) - SignalDbm(Bare(), one, {14, 5}, 30'000, 7),
            first - SignalDbm(Bare(), one, {10, 5}, 30'000, 7));
  EXPECT_NE(SignalDbm(world, two, {10, 5}, 30'000, 7), first);
}

TEST(Shadowing, HasTheDeviationAskedForAndNoStepsAlongAWalk) {
  World world = Bare();
  world.shadowingDb = 4.0;
  double sum = 0, squares = 0, worstStep = 0, last = NAN;
  int count = 0;
  for (int i = 0; i < 20'000; ++i) {
    const Point machine{10 + i * 0.1, 5};  // 0.1 m
    const double noise =
        SignalDbm(world, At(0, 0), machine, 0, 3) - SignalDbm(Bare(), At(0, 0), machine, 0, 3);
    if (!std::isnan(last)) worstStep = std::max(worstStep, std::abs(noise - last));
    last = noise;
    if (i % 20 == 0) {  // at a corner of the squares, where draws are whole
      sum += noise;
      squares += noise * noise;
      ++count;
    }
  }
  const double mean = sum / count;
  EXPECT_LT(std::abs(mean), 2.0);  // the part that changes with time stands still here
  const double deviation = std::sqrt(squares / count - mean * mean);
  EXPECT_GT(deviation, 1.5);
  EXPECT_LT(deviation, 5.0);
  EXPECT_LT(worstStep, 2.0);
}

TEST(SignalTrack, IsEvenBetweenItsPointsAndStaysBeyondThem) {
  const std::vector<SignalPoint> track{{10'000, -50}, {20'000, -70}, {20'001, -40}};
  EXPECT_EQ(TrackSignalAt(track, 0), -50);
  EXPECT_EQ(TrackSignalAt(track, 10'000), -50);
  EXPECT_EQ(TrackSignalAt(track, 15'000), -60);
  EXPECT_EQ(TrackSignalAt(track, 20'000), -70);
  EXPECT_EQ(TrackSignalAt(track, 20'001), -40);
  EXPECT_EQ(TrackSignalAt(track, 99'000), -40);
}

TEST(Walk, ANewOneCutsOffTheOldWhereTheMachineIs) {
  std::vector<Waypoint> path{{}};
  AddWalk(&path, 10'000, {10, 0}, 1.0);
  EXPECT_EQ(PositionAt(path, 5'000).x, 0);
  EXPECT_EQ(PositionAt(path, 14'000).x, 4);
  AddWalk(&path, 14'000, {4, 8}, 2.0);
  EXPECT_EQ(PositionAt(path, 14'000).x, 4);
  EXPECT_EQ(PositionAt(path, 16'000).y, 4);
  EXPECT_EQ(PositionAt(path, 18'000).y, 8);
  EXPECT_EQ(PositionAt(path, 60'000).y, 8);
  EXPECT_EQ(PositionAt(path, 60'000).x, 4);
  EXPECT_EQ(PositionAt(path, 12'000).x, 2);  // what was stays
}

TEST(ConnectOfTheSystem, PrefersAWorthwhileSignalAbove2GHz) {
  EXPECT_GT(ConnectWeight(-60, 5), ConnectWeight(-51, 2));
  EXPECT_LT(ConnectWeight(-60, 5), ConnectWeight(-49, 2));
  EXPECT_GT(ConnectWeight(-75, 6), ConnectWeight(-70, 2));
  EXPECT_LT(ConnectWeight(-76, 5), ConnectWeight(-70, 2)) << "too weak to be worthwhile";
}

TEST(Bands, AtTheirEdges) {
  struct Case {
    ULONG mhz;
    int band;
  };
  const Case kCases[] = {{1999, 0}, {2000, 2}, {2999, 2}, {3000, 0}, {5149, 0},
                         {5150, 5}, {5924, 5}, {5925, 6}, {7129, 6}, {7130, 0}};
  for (const Case& each : kCases) EXPECT_EQ(BandOf(each.mhz), each.band) << each.mhz;
}

}  // namespace
}  // namespace corvane::platform::sim
