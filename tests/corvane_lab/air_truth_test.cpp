#include "corvane_lab/air_truth.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "corvane_lab/made_world.h"
#include "platform/sim/devices/pc_observer.h"
#include "platform/sim/world/beacon_builder.h"
#include "platform/sim/world/world_loader.h"
#include "platform/sim/world/world_text.h"
#include "support/pc_fixture.h"
#include "support/world_builder.h"

namespace corvane::lab {
namespace {

using namespace platform;
using platform::sim::AKM_PSK;
using test::Beacon;
using test::WorldBuilder;

TEST(AirTruthTest, ARateFollowsFromSignalWidthAndStreams) {
  struct Case {
    LONG phy;
    int width, streams;
    double dbm, mbps;
    const char* what;
  };
  const Case cases[] = {
      {dot11_phy_type_vht, 80, 2, -40, 866.6, "MCS 9"},
      {dot11_phy_type_vht, 80, 4, -40, 866.6, "more than two streams count as two"},
      {dot11_phy_type_vht, 80, 1, -40, 433.3, "one stream"},
      {dot11_phy_type_vht, 80, 2, -87, 65.0, "SNR 2 dB in 80 MHz: the first modulation"},
      {dot11_phy_type_vht, 80, 2, -87.1, 0.0, "and nothing below"},
      {dot11_phy_type_vht, 20, 2, -87.1, 28.8, "which 20 MHz still carries: SNR 7.9 dB, MCS 1"},
      {dot11_phy_type_ht, 20, 2, -40, 144.4, "MCS 7 is the last of HT"},
      {dot11_phy_type_he, 160, 2, -50, 2401.9, "SNR 36 dB in 160 MHz: MCS 11"},
      {dot11_phy_type_he, 160, 2, -50.1, 2161.7, "one modulation less"},
      {dot11_phy_type_ofdm, 20, 1, -40, 54.0, "802.11a"},
      {dot11_phy_type_hrdsss, 20, 1, -40, 11.0, "802.11b"},
  };
  for (const Case& one : cases)
    EXPECT_NEAR(RateMbps(one.phy, one.width, one.streams, one.dbm), one.mbps, 0.1) << one.what;
}

sim::World Room() {
  return WorldBuilder()
      .Adapter()
      .Ap(Beacon(u8"Home").Channel(36).Vht80(2).Rsn({AKM_PSK}), 1, -50)
      .Ap(Beacon(u8"Home").Channel(6).Ht20(2).Rsn({AKM_PSK}).QbssLoad(9, 51), 2, -50)
      .Ap(Beacon(u8"Open").Channel(11).Ht20(2), 3, -50)
      .Ap(Beacon(u8"Next door").Channel(1).Ht20(2).Rsn({AKM_PSK}), 4, -50)
      .Profile("Home")
      .Profile("Open")
      .Build();
}

TEST(AirTruthTest, ALoadLeavesSoMuchOfTheRateAndABandItsUsualShare) {
  const AirTruth air(Room(), 1);
  EXPECT_NEAR(air.Mbps(0, 0), 866.6 * 0.9, 0.1);
  EXPECT_NEAR(air.Mbps(0, 1), 144.4 * 0.8, 0.1);
  EXPECT_NEAR(air.Mbps(0, 2), 144.4 * 0.7, 0.1);
  EXPECT_TRUE(air.LetsIn(0, 0));
  EXPECT_FALSE(air.LetsIn(0, 2)) << "open";
  EXPECT_FALSE(air.LetsIn(0, 3)) << "without a profile";
}

TEST(AirTruthTest, FollowsTheTimeline) {
  WorldBuilder builder{};
  builder.Adapter()
      .Ap(Beacon(u8"Home").Channel(36).Vht80(2).Rsn({AKM_PSK}), 1, -50)
      .Profile("Home")
      .Traffic(6000, 9000, 5.0);
  const std::string bssid = R"("bssid": "02-50-00-00-00-01")";
  builder.At(1000, R"({"do": "signal", "dbm": -70, )" + bssid + "}");
  builder.At(2000, R"({"do": "load", "utilisation": 255, )" + bssid + "}");
  builder.At(3000, R"({"do": "refuse", "reason": 7, )" + bssid + "}");
  builder.At(4000, R"({"do": "accessPoint", "on": false, )" + bssid + "}");
  builder.At(5000, R"({"do": "accessPoint", "on": true, )" + bssid + "}");
  builder.At(7000, R"({"do": "radio", "on": false})");
  AirTruth air(builder.Build(), 1);
  air.MoveTo(1000);
  EXPECT_EQ(air.Dbm(0, 0), -70.0);
  air.MoveTo(2000);
  EXPECT_EQ(air.Mbps(0, 0), 0.0);
  EXPECT_TRUE(air.LetsIn(0, 0));
  air.MoveTo(3000);
  EXPECT_FALSE(air.LetsIn(0, 0));
  air.MoveTo(4500);
  EXPECT_EQ(air.Dbm(0, 0), std::nullopt);
  air.MoveTo(6000);
  EXPECT_EQ(air.Dbm(0, 0), -70.0);
  EXPECT_EQ(air.TrafficMbps(0), 5.0);
  air.MoveTo(7000);
  EXPECT_EQ(air.Dbm(0, 0), std::nullopt) << "the radio is off";

  const Truth truth = LookAhead(builder.Build(), 1, 10);
  EXPECT_EQ(truth.adapters[0].busy, (std::vector<std::uint8_t>{0, 0, 0, 0, 0, 0, 1, 1, 1, 0}));
  EXPECT_EQ(truth.adapters[0].heard[0], (std::vector<std::uint8_t>{1, 1, 1, 1, 0, 1, 1, 0, 0, 0}));
}

// Scans of a client of the WLAN service, and when they ended.
class TruthAndScanTest : public test::PcTest, public sim::IPcObserver {
 protected:
  void OnScanEnded(int, sim::Cause, bool) override {
    endedMs = static_cast<std::uint64_t>(Pc().Now().count());
  }

  // What the last scan heard of each access point, by BSSID; where a beacon may be missed, nothing.
  void Compare(const sim::World& world, AirTruth* air) {
    WLAN_BSS_LIST* list = nullptr;
    ASSERT_EQ(Os().wlan.WlanGetNetworkBssList(client, &world.adapters[0].guid, nullptr,
                                              dot11_BSS_type_any, FALSE, nullptr, &list),
              0u);
    air->MoveTo(endedMs);
    std::map<std::string, LONG> heard;
    for (DWORD i = 0; i < list->dwNumberOfItems; ++i) {
      sim::Mac mac;
      std::memcpy(mac.data(), list->wlanBssEntries[i].dot11Bssid, mac.size());
      heard[sim::MacText(mac)] = list->wlanBssEntries[i].lRssi;
    }
    Os().wlan.WlanFreeMemory(list);
    constexpr double kSureDb = 6.0;  // above the sensitivity: no beacon is missed from there on
    for (std::size_t ap = 0; ap < world.accessPoints.size(); ++ap) {
      const auto dbm = air->Dbm(0, ap);
      const std::string bssid = sim::MacText(world.accessPoints[ap].bssid);
      if (!dbm || *dbm < world.adapters[0].sensitivityDbm + kSureDb) continue;
      ASSERT_TRUE(heard.contains(bssid)) << world.name << " " << bssid << " at " << endedMs;
      EXPECT_EQ(heard[bssid], std::lround(*dbm)) << world.name << " " << bssid << " " << endedMs;
      ++compared;
    }
  }

  HANDLE client = nullptr;
  std::uint64_t endedMs = 0;
  int compared = 0;
};

class TruthOfKindTest : public TruthAndScanTest, public testing::WithParamInterface<const char*> {};

// The same radio model, walk and timeline: what is looked up is what a scan hears.
TEST_P(TruthOfKindTest, IsWhatAScanHears) {
  sim::World world = sim::ParseWorld(MadeWorldText(GetParam(), 3, {}), GetParam());
  for (auto& adapter : world.adapters) {
    adapter.autoConnect = false;  // a link is heard between two scans, too
    adapter.connectedTo = {};
  }
  Boot(world, {.seed = 5, .observer = this});
  AirTruth air(world, 5);
  DWORD version = 0;
  ASSERT_EQ(Os().wlan.WlanOpenHandle(2, nullptr, &version, &client), 0u);
  for (int scan = 0; scan < 40; ++scan) {
    const std::uint64_t before = endedMs;
    Os().wlan.WlanScan(client, &world.adapters[0].guid, nullptr, nullptr, nullptr);
    RunFor(std::chrono::seconds(20));
    ASSERT_GT(endedMs, before);
    Compare(world, &air);
  }
  EXPECT_GT(compared, 50);
  Os().wlan.WlanCloseHandle(client, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Kinds, TruthOfKindTest,
                         testing::Values("carried", "dying", "bands", "train"),
                         [](const auto& kind) { return std::string(kind.param); });

}  // namespace
}  // namespace corvane::lab
