#include "wlan/adapter_link.h"

#include "wlan/part_fixture.h"

namespace corvane::test {
namespace {

class AdapterLinkTest : public PartTest {
 protected:
  AdapterLink link{identity};
};

TEST_F(AdapterLinkTest, OnlyAMoveFromOneAccessPointToAnotherIsAChange) {
  EXPECT_FALSE(link.SetConnectedBssid({1})) << "the first";
  EXPECT_FALSE(link.SetConnectedBssid({1}));
  EXPECT_TRUE(link.SetConnectedBssid({2}));
  EXPECT_EQ(link.Get().m_connected_dot11Bssid, MacAddress{2});
  link.ClearConnectedBssid();
  EXPECT_FALSE(link.SetConnectedBssid({3}));
}

TEST_F(AdapterLinkTest, LastSsidThatIsForgottenIsNewAgain) {
  EXPECT_TRUE(link.SetLastConnectedSsid(u"Office"));
  EXPECT_FALSE(link.SetLastConnectedSsid(u"Office"));
  link.ForgetLastConnectedSsid();
  EXPECT_EQ(link.LastConnectedSsid(), u"");
  EXPECT_EQ(link.Get().m_last_connected_ssid, u"");
  EXPECT_TRUE(link.SetLastConnectedSsid(u"Office"));
  EXPECT_EQ(link.LastConnectedSsid(), u"Office");
}

TEST_F(AdapterLinkTest, DisconnectionIsAsOldAsItsFirstRound) {
  EXPECT_EQ(link.DisconnectedAgeMs(), 0u);
  link.SetDisconnectedTick(true);
  RunFor(3s);
  link.SetDisconnectedTick(true);
  EXPECT_EQ(link.DisconnectedAgeMs(), 3000u);
  link.SetDisconnectedTick(false);
  EXPECT_EQ(link.DisconnectedAgeMs(), 0u);
}

}  // namespace
}  // namespace corvane::test
