// The interference detector and the diagnosis of the link, in the running service.

#include <cmath>

#include "foundation/log_lines.h"
#include "pipe/diagnosis.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/world/world_text.h"
#include "scenario/service_fixture.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"

namespace corvane::test {

class LinkProbesScenario : public ServiceTest {
 protected:
  static WorldBuilder ProbedWorld() {
    WorldBuilder world = OfficeWorld(-50.0);
    platform::sim::IpSettings& ip = world->networks[0].ip;
    EXPECT_TRUE(platform::sim::ReadIpAddress("10.3.0.20", &ip.unicast.emplace_back()));
    EXPECT_TRUE(platform::sim::ReadIpAddress("10.3.0.1", &ip.gateways.emplace_back()));
    return world;
  }
  std::size_t Detections() const { return CountNotices(u"Detector", u"Interface"); }
  Notice LastDetection() const { return LastNotice(u"Detector"); }
  std::size_t Routes() { return Pc().Devices().CountOutstanding().routes; }
  std::string Diag() {
    const CCritSecLock lock(CGlobalConfigContainer::GetInstance().GetLock());
    return WideToUtf8(Diagnose());
  }
  static double FigureOf(const std::string& reply) {
    const std::string before = "\"blast\":\"";
    const std::size_t at = reply.find(before);
    return at == std::string::npos ? -1.0 : std::stod(reply.substr(at + before.size()));
  }
};

// Every second echo is the first hop's, so that it meets the first and the third of the noise in
// turn, and the second hop the others: five times each in a full history.
TEST_F(LinkProbesScenario, NoisyAccessPointRaisesAnEventWithItsFigures) {
  constexpr double kNear = 3.0, kFar = 12.0;            // ms, of the two hops
  constexpr double kNoise[] = {0.0, 10.0, 40.0, 70.0};  // as in the timeline
  const double first[] = {kNear + kNoise[0], kNear + kNoise[2]};
  const double second[] = {kFar + kNoise[1], kFar + kNoise[3]};
  const double beyond[] = {second[0] - first[0], second[1] - first[1]};
  const auto means = [](const double(&a)[2], const double(&b)[2]) {
    return Widen(std::to_string((a[0] + a[1]) / 2) + "," + std::to_string((b[0] + b[1]) / 2));
  };
  // Of two values, each as often as the other: half of their distance.
  const auto deviations = [](const double(&a)[2], const double(&b)[2]) {
    return Widen(std::to_string(std::abs(a[1] - a[0]) / 2) + "," +
                 std::to_string(std::abs(b[1] - b[0]) / 2));
  };
  WorldBuilder world = ProbedWorld();
  auto& hops = world->accessPoints[0].hops;
  hops.resize(2);
  hops[0].rttMs = kNear, hops[1].rttMs = kFar;
  EXPECT_TRUE(platform::sim::ReadIpAddress("10.3.0.1", &hops[0].address));
  EXPECT_TRUE(platform::sim::ReadIpAddress("203.0.113.1", &hops[1].address));
  Start(world.Ap(OfficeBeacon(52), 2, -50.0)
            .At(60'000, R"({"do": "noise", "bssid": "02-50-00-00-00-01",
                            "noise": [0, 10, 40, 70]})")
            .At(150'000, R"({"do": "roam", "bssid": "02-50-00-00-00-02"})"));
  RunUntil(20'000);
  EXPECT_EQ(Detections(), 0u) << "the detector is off";
  WriteHome(u"IDET", 1);
  RunUntil(55'000);
  EXPECT_EQ(LastDetection().data1, u"0");
  EXPECT_EQ(LastDetection().data2, u"0.000000,0.000000");
  const std::size_t quiet = Detections();
  EXPECT_GE(quiet, 1u);
  EXPECT_LE(quiet, 2u) << "the same figures are told once";

  RunUntil(110'000);
  EXPECT_EQ(LastDetection().data2, deviations(first, second));
  EXPECT_EQ(LastDetection().data3, means(first, second));
  EXPECT_EQ(LastDetection().data4, deviations(first, beyond));
  EXPECT_EQ(LastDetection().data5, means(first, beyond));
  const std::size_t noisy = Detections();
  EXPECT_GT(noisy, quiet + 5);
  RunUntil(140'000);
  EXPECT_EQ(Detections(), noisy) << "the noise goes on as it was";

  RunUntil(200'000);
  ASSERT_TRUE(IsOn(2));
  EXPECT_EQ(LastDetection().data2, u"0.000000,0.000000") << "of the new access point alone";
  EXPECT_EQ(Routes(), 0u);
  EXPECT_TRUE(Stop());
}

TEST_F(LinkProbesScenario, DiagnosisDependsOnTheConnectionAndOnAScan) {
  Start(ProbedWorld());
  RunUntil(30'000);
  const std::string connected = Diag();
  EXPECT_NE(connected.find("\"status\":\"ok\" } }"), std::string::npos) << connected;
  const double link = Number(value::kConnectedLinkRateTX) / 1000.0;
  EXPECT_NEAR(FigureOf(connected), link, link / 100.0);

  Do(R"({"do": "disconnect"})");
  RunFor(1s);
  const std::string disconnected = Diag();
  EXPECT_NE(disconnected.find("\"status\":\"error, not connected\""), std::string::npos)
      << disconnected;
  Do(R"({"do": "connect", "ssid": "Office"})");
  RunFor(30s);
  ASSERT_TRUE(IsOn(1));

  ASSERT_TRUE(RunUntilTrue([&] { return Wlan()->IsScanInFlight(); }, 120s));
  const std::string scanning = Diag();
  EXPECT_FALSE(Wlan()->IsScanInFlight()) << "a scan of all networks is waited for";
  EXPECT_NEAR(FigureOf(scanning), link, link / 100.0) << scanning;
}

// Whichever operation of the routes fails for a while, none of them stands when the service ends.
TEST_F(LinkProbesScenario, TwoAdaptersUnderTestLeaveNoRouteBehind) {
  WorldBuilder world = ProbedWorld();
  world.Adapter().Connected(1).AutoSwitch(10, 1);
  Start(world);
  RunUntil(10'000);
  WriteHome(u"IDET", 1);
  std::uint64_t at = 20'000;
  for (const char* operation : {"CreateIpForwardEntry", "DeleteIpForwardEntry", "GetIpForwardTable",
                                "GetIpInterfaceEntry"}) {
    Pc().Faults().FailDuring(operation, at, at + 10'000, platform::ERROR_GEN_FAILURE);
    RunUntil(at + 5'000);
    Diag();
    RunUntil(at += 20'000);
    Diag();
    EXPECT_GT(Detections(), 0u) << operation;
  }
  EXPECT_TRUE(Stop());
  EXPECT_EQ(Routes(), 0u);
}

}  // namespace corvane::test
