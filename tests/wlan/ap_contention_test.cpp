#include "platform/sim/kernel/sim_event_trace.h"
#include "wlan/adapter_fixture.h"

namespace corvane::test {
namespace {

class ContentionTest : public AdapterTest {
 protected:
  // Counts the contenders of Office's first access point; the events that tell of them, each as its
  // text of BSSIDs, "none" for the event of no contention.
  std::vector<WString> Count(std::uint32_t channel, const std::uint8_t connected = 1) {
    adapter->UpdateContentionAPs(u"Office", MacText(Bssid(connected)), channel);
    std::vector<WString> told;
    for (const auto& event : kernel.EventTrace().TakeEvents()) {
      told.push_back(event.Text("opp_bssids_csv").value_or(u"none"));
    }
    return told;
  }
  using Told = std::vector<WString>;
};

// Channel 149 is at 5745 MHz and at 6695 MHz, channel 5 at 2432 MHz and at 5975 MHz.
TEST_F(ContentionTest, TellsOfTheOthersOnItsChannelAndBandWhenTheyChange) {
  wlan.networks = {"Office", "Cafe"};
  wlan.entries = {{"Office", Bssid(1), 60, 5745000}, {"Office", Bssid(2), 50, 5745000},
                  {"Cafe", Bssid(3), 40, 5745000},   {"Cafe", Bssid(4), 40, 6695000},
                  {"Cafe", Bssid(5), 40, 5180000},   {"Cafe", Bssid(6), 40, 2432000},
                  {"Cafe", Bssid(7), 40, 5975000}};
  Start();
  EXPECT_EQ(Count(149), Told{}) << "without a scan nobody knows";
  Discover();
  const Told both{MacText(Bssid(3)) + u", " + MacText(Bssid(2))};
  EXPECT_EQ(Count(149), both);
  EXPECT_EQ(adapter->ContentionText(),
            u"Cafe[02-11-22-33-44-03(SQ 40)], Office[02-11-22-33-44-02(SQ 50)]");
  EXPECT_EQ(Count(149), Told{});
  wlan.entries[1].quality = 20;
  Discover();
  EXPECT_EQ(Count(149), Told{}) << "a quality is no change";
  EXPECT_EQ(Count(161), Told{u"none"});
  EXPECT_EQ(Count(5, 9), Told{MacText(Bssid(6)) + u", " + MacText(Bssid(7))})
      << "of an entry that is not there";
  adapter->ClearContention();
  EXPECT_EQ(adapter->ContentionText(), u"none");
  kernel.EventTrace().TakeEvents();
  RunFor(121s);
  EXPECT_EQ(Count(149), Told{}) << "by a scan of two minutes ago";
}

TEST_F(ContentionTest, OnlyAScanOfThisConnectionCountsForLong) {
  wlan.networks = {"Office"};
  wlan.entries = {{"Office", Bssid(1), 60, 5745000}, {"Office", Bssid(2), 50, 5745000}};
  StartConnected("Office", Bssid(1));
  Discover();
  RunFor(121s);
  EXPECT_EQ(Count(149), Told{MacText(Bssid(2))});
  wlan.NotifyConnection(platform::wlan_notification_acm_disconnected, "Office");
  EXPECT_EQ(adapter->ContentionText(), u"none");
  kernel.EventTrace().TakeEvents();
  EXPECT_EQ(Count(149), Told{}) << "the next connection may be in other surroundings";
}

}  // namespace
}  // namespace corvane::test
