#include "wlan/adapter_fixture.h"
#include "wlan/fake_counters.h"

namespace corvane::test {
namespace {

class TrafficTest : public AdapterTest {
 protected:
  // A second of this traffic, as a round sees it; the gate that holds a switch back.
  double GateAfter(double mbps) {
    counters.mbps = mbps;
    RunFor(1s);
    adapter->Pdh()->PollPDHCollection();
    adapter->ProcessIdleThresholds();
    return adapter->Config()->m_rate_gate_high;
  }
  Counters& counters = Install<Counters>();
};

TEST_F(TrafficTest, GatesOfAQuietConnectionAreSettledUntilItEnds) {
  StartConnected("Office", Bssid(1));
  GateAfter(0.02);
  RunFor(35s);
  GateAfter(0.02);  // quiet for 36 s
  for (int i = 0; i < 10; ++i) EXPECT_EQ(GateAfter(0.05), 0.06);

  wlan.NotifyConnection(platform::wlan_notification_acm_disconnected, "Office");
  GateAfter(0.05);
  RunFor(30s);
  EXPECT_GT(GateAfter(0.05), 0.06) << "the next connection may have a background";
  wlan.NotifyConnection(platform::wlan_notification_acm_disconnected, "Office");
  EXPECT_EQ(adapter->Config()->m_rate_gate_high, 0.06);
  EXPECT_EQ(adapter->Config()->m_rate_gate_low, 0.04);
}

}  // namespace
}  // namespace corvane::test
