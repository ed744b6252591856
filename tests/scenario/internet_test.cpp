// What the score of a network without internet goes by: the connection of this moment, and what is
// remembered of it once there is none.

#include "scenario/service_fixture.h"
#include "store/address_text.h"

namespace corvane::test {

class InternetScenario : public ServiceTest {
 protected:
  // The terms of the last score of Office's access point.
  std::string Terms() {
    MacAddress bssid{};
    EXPECT_TRUE(MacStringToBinary(u'-', u"02-50-00-00-00-01", &bssid));
    CSmartPointer<CWlanBssEntry> entry;
    return Wlan()->FindBssEntry(u"Office", bssid, &entry) ? entry->ScoreLog() : "";
  }
};

TEST_F(InternetScenario, LossCountsAtOnceAndIsRememberedWhenTheSurroundingsAreForgotten) {
  WorldBuilder world = OfficeWorld(-60.0);
  world->adapters[0].autoConnect = false;
  Start(world);
  RunUntil(62'000);  // the network list is read anew at 60 s and at 90 s
  EXPECT_EQ(Terms().find("INTERNET(-"), std::string::npos) << Terms();
  Do(R"({"do": "network", "network": "Office", "internet": false, "connectivity": 32})");
  RunFor(15s);
  EXPECT_NE(Terms().find("INTERNET(-"), std::string::npos) << Terms();

  Do(R"({"do": "disconnect"})");
  ASSERT_TRUE(RunUntilTrue([&] { return !IsOn(1); }, 10s));
  RunFor(1s);
  Wlan()->ClearNetworks();
  ASSERT_TRUE(RunUntilTrue([&] { return !Terms().empty(); }, 30s));
  EXPECT_NE(Terms().find("/DISCON)"), std::string::npos) << Terms();
  EXPECT_NE(Terms().find("INTERNET(-"), std::string::npos) << Terms();
}

}  // namespace corvane::test
