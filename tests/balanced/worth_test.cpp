// What an access point is worth: its link by the elements, the rate at a signal, the points.

#include "balanced/worth.h"

#include <gtest/gtest.h>

#include "elements/element_decoder.h"
#include "platform/sim/world/beacon_builder.h"

namespace corvane::balanced::test {

using platform::sim::Beacon;

namespace {

ElementFields FieldsOf(const Beacon& beacon) {
  const auto bytes = beacon.Bytes();
  ElementFields fields;
  ElementNotes notes(0);
  DecodeElements({bytes.data(), bytes.size()}, fields, notes);
  return fields;
}

Link HeLink(std::uint32_t width) { return {Generation::kHe, width, 2, 11, false}; }

}  // namespace

TEST(LinkRate, TheWidthIsTheOneThatAccessPointsSignalToday) {
  struct Case {
    Beacon beacon;
    int band;
    bool adapterHe;
    Generation generation;
    std::uint32_t width;
  };
  const Case cases[] = {
      {Beacon("a").Channel(6).He20(2), 2, true, Generation::kHe, 20},
      {Beacon("a").Channel(6).Ht40(2), 2, true, Generation::kHt, 40},
      {Beacon("a").Channel(36).He80(2), 5, true, Generation::kHe, 80},
      {Beacon("a").Channel(36).He160(2), 5, true, Generation::kHe, 160},
      {Beacon("a").Channel(36).He160(2), 5, false, Generation::kVht, 160},
      {Beacon("a").Channel(36).Vht40(2), 5, true, Generation::kVht, 40},
      {Beacon("a").Channel6GHz(37).He20(2), 6, true, Generation::kHe, 20},
      {Beacon("a").Channel6GHz(37).He40(2), 6, true, Generation::kHe, 40},
      {Beacon("a").Channel6GHz(37).He80(2), 6, true, Generation::kHe, 80},
      {Beacon("a").Channel6GHz(37).He160(2), 6, true, Generation::kHe, 160},
  };
  for (const Case& c : cases) {
    const Link link = LinkOf(FieldsOf(c.beacon), c.band, c.adapterHe);
    EXPECT_EQ(link.widthMhz, c.width) << c.band;
    EXPECT_EQ(link.generation, c.generation) << c.band << " " << c.width;
    EXPECT_EQ(link.streams, 2u);
  }
}

TEST(LinkRate, ALinkIsNoBetterThanItsWeakerSide) {
  EXPECT_EQ(LinkOf(FieldsOf(Beacon("a").Channel(36).He80(4)), 5, true).streams, 2u);
  const Link link = LinkOf(FieldsOf(Beacon("a").Channel(1).Ht20(1)), 2, true);
  EXPECT_EQ(link.generation, Generation::kHt);
  EXPECT_EQ(link.streams, 1u);
  EXPECT_EQ(link.topMcs, 7u);
  const Link old = LinkOf(ElementFields{}, 2, true);
  EXPECT_EQ(old.generation, Generation::kLegacy);
  EXPECT_NEAR(PhyMbps(old, -40), 54, 0.01);
  EXPECT_NEAR(PhyMbps(LinkOf(FieldsOf(Beacon("a").Channel(1).Only80211b()), 2, true), -40), 11,
              0.01);
}

TEST(LinkRate, EachWidthAndSignalHasItsRate) {
  EXPECT_NEAR(PhyMbps(HeLink(20), -95 + 36), 286.8, 0.1);  // MCS 11, two streams
  EXPECT_NEAR(PhyMbps(HeLink(20), -40), 286.8, 0.1);       // no more beyond it
  EXPECT_NEAR(PhyMbps(HeLink(80), -40), 1201.0, 0.1);
  EXPECT_NEAR(PhyMbps(HeLink(160), -40), 2402.0, 0.1);
  EXPECT_NEAR(PhyMbps({Generation::kVht, 80, 2, 9, false}, -40), 866.7, 0.1);
  EXPECT_NEAR(PhyMbps(HeLink(20), -93), 17.2, 0.1);  // MCS 0
  EXPECT_NEAR(PhyMbps(HeLink(20), -94), 8.6, 0.1);   // half way to silence
  EXPECT_EQ(PhyMbps(HeLink(20), -100), 0.0);
  // Each doubling of the width doubles the noise.
  EXPECT_NEAR(SnrOf(-70, 80), SnrOf(-70, 20) - 6.0, 1e-9);
  // Never falls with the signal.
  for (double dbm = -100; dbm < -40; dbm += 0.5)
    EXPECT_LE(PhyMbps(HeLink(80), dbm), PhyMbps(HeLink(80), dbm + 0.5)) << dbm;
}

TEST(Worth, LoadLeavesItsShareOfTheAir) {
  EXPECT_NEAR(FreeShare({5, 25.0, 90}), 0.75, 1e-9);  // its own word counts first
  const double usual = FreeShare({5, -1.0, 255});     // what others say counts for a quarter
  EXPECT_NEAR(FreeShare({5, -1.0, 60}), usual + 0.25 * (0.40 - usual), 1e-9);
  EXPECT_GT(FreeShare({5, -1.0, 255}), FreeShare({2, -1.0, 255}));
  EXPECT_GT(FreeShare({6, -1.0, 255}), FreeShare({5, -1.0, 255}));
  EXPECT_GT(FreeShare({2, 100.0, 255}), 0.0);
}

TEST(Worth, NinePointsAreTwiceTheRate) {
  EXPECT_EQ(PointsOf(0), 0);
  EXPECT_EQ(PointsOf(1), 9);
  EXPECT_EQ(PointsOf(100), 60);
  EXPECT_EQ(PointsOf(1e6), 100);
  EXPECT_EQ(PointsOf(-5), 0);
  EXPECT_EQ(PointsOf(401) - PointsOf(200), 9);
  for (std::int32_t points = 0; points < 100; points += 7)
    EXPECT_EQ(PointsOf(MbpsOf(points)), points);
}

TEST(Worth, StandsForTheRadioAndLeavesTheRest) {
  const ElementFields fields = FieldsOf(Beacon("Net").Channel(36).He80(2));
  RadioFacts radio;
  radio.htPresent = radio.vhtPresent = radio.heCapsGood = true;
  radio.securityMask = 0x04;
  radio.loadPct = 50.0;
  SubtotalInputs in;
  in.quality = 80;
  in.radio = &radio;
  in.network.isPrivate = true;
  in.network.connectivityKnown = true;
  in.network.connectivity = 0x440;
  const HeardLink heard{&fields, -60.0, 5, true, 255};
  std::string log;
  const SubtotalResult there = Subtotal(in, heard, &log);
  const double mbps = ExpectedMbps(LinkOf(fields, 5, true), -60.0, {5, 50.0, 255});
  EXPECT_EQ(there.points, PointsOf(mbps) + 1 + 6);
  EXPECT_EQ(there.loadPoints, 0);  // nothing is added for the load later
  EXPECT_TRUE(log.starts_with("WORTH(" + std::to_string(PointsOf(mbps)) + "/")) << log;
  EXPECT_EQ(log.find("SIGQ"), std::string::npos) << log;

  in.network.connectivity = 0x111;  // no internet
  EXPECT_EQ(Subtotal(in, heard, &log).points, there.points - 20);
  in.network.connectivity = 0x440;
  in.pegQuality = 60;  // the connection says: 10 dB less
  EXPECT_LT(Subtotal(in, heard, &log).points, there.points);
  in.pegQuality = 90;
  EXPECT_GT(Subtotal(in, heard, &log).points, there.points);
  in.pegQuality = 0;
  HeardLink shared = heard;  // with an adapter that was there before
  shared.shared = true;
  EXPECT_EQ(Subtotal(in, shared, &log).points, PointsOf(mbps / 6.0) + 1 + 6);
}

}  // namespace corvane::balanced::test
