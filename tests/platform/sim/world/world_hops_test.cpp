// Routers and noise behind access points, as a world's file tells them.

#include <gtest/gtest.h>

#include "platform/sim/world/world_loader.h"

namespace corvane::test {
namespace {

using namespace platform::sim;

std::string WorldOf(const std::string& members) {
  return R"({"accessPoints": [{"ssid": "a", "bssid": "02-00-00-00-00-01", "channel": 36, )" +
         members + "}]}";
}

TEST(WorldHops, AreReadInTheirOrder) {
  const World world =
      ParseWorld(WorldOf(R"("hops": [{"address": "10.0.0.1", "rttMs": 3}, {"address": "2001:db8::1",
                 "rttMs": 0.5}], "noise": [0, 12.5, null])"),
                 "w.json");
  const AccessPoint& ap = world.accessPoints.at(0);
  ASSERT_EQ(ap.hops.size(), 2u);
  EXPECT_EQ(ap.hops[0].rttMs, 3.0);
  EXPECT_EQ(ap.hops[1].address.family, IpAddress::kV6);
  EXPECT_EQ(ap.noise, (std::vector<double>{0.0, 12.5, kEchoLost}));
  const Action action =
      ParseAction(R"({"do": "noise", "bssid": "02-00-00-00-00-01", "noise": [null, 7]})", world);
  EXPECT_EQ(action.kind, ActionKind::kNoise);
  EXPECT_EQ(action.noise, (std::vector<double>{kEchoLost, 7.0}));
}

TEST(WorldHops, RefuseWhatIsNoTime) {
  for (const char* members :
       {R"("noise": [-1])", R"("noise": 5)", R"("noise": ["x"])",
        R"("hops": [{"address": "10.0.0.1"}])", R"("hops": [{"address": "router", "rttMs": 1}])"}) {
    EXPECT_THROW(ParseWorld(WorldOf(members), "w.json"), std::exception) << members;
  }
}

}  // namespace
}  // namespace corvane::test
