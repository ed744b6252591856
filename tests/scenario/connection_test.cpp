// What follows from a connection, its change and its loss.

#include "platform/sim/kernel/sim_files.h"
#include "platform/sim/kernel/sim_registry.h"
#include "scenario/service_fixture.h"

namespace corvane::test {

class ConnectionScenario : public ServiceTest {
 protected:
  // The network's gateway 10.n.0.1, whose MAC 02-60-00-00-00-n is known from the start or later.
  static void GiveGateway(WorldBuilder& world, std::size_t network, platform::BYTE n,
                          bool isKnown) {
    platform::sim::IpAddress address;
    address.bytes = {10, n, 0, 1};
    world->networks[network].ip.gateways = {address};
    if (isKnown) world->networks[network].neighbours = {{address, {0x02, 0x60, 0, 0, 0, n}}};
  }
};

TEST_F(ConnectionScenario, TellsOfAConnectionOnceAndOfItsEnd) {
  Start(OfficeWorld(-50.0)
            .At(80'000, R"({"do": "disconnect", "adapter": 0})")
            .At(80'000, R"({"do": "accessPoint", "bssid": "02-50-00-00-00-01", "on": false})")
            .At(180'000, R"({"do": "accessPoint", "bssid": "02-50-00-00-00-01", "on": true})"));
  ASSERT_TRUE(
      RunUntilTrue([&] { return CountNotices(u"ConnectionStatus", u"Connected") == 1; }, 5s));
  EXPECT_NE(LastNotice(u"ConnectionStatus").data1.find(u"Band unknown"), WString::npos);
  EXPECT_TRUE(HistoryRows().empty()) << "a row of an access point that no scan has seen yet";
  RunUntil(50'000);
  EXPECT_EQ(CountNotices(u"ConnectionStatus", u"Connected"), 1u);
  EXPECT_NE(LastNotice(u"ConnectionStatus").data1.find(u", 02-50-00-00-00-01, SQ "), WString::npos);
  EXPECT_EQ(HistoryRows(",connected,Office,02-50-00-00-00-01,").size(), 1u);
  EXPECT_NE(Number(value::kConnectedLinkRateTX), 0u);

  Config()->m_bReportStatusPending = true;  // somebody subscribes
  RunFor(20s);
  EXPECT_EQ(CountNotices(u"ConnectionStatus", u"Connected"), 2u)
      << "a new subscriber learns nothing";

  RunUntil(80'100);
  Config()->m_bReportStatusPending = true;
  RunUntil(170'000);
  EXPECT_EQ(Text(value::kConnectedNetwork), u"");
  EXPECT_EQ(Number(value::kConnectedLinkRateTX), 0u);
  EXPECT_EQ(CountNotices(u"ConnectionStatus", u"Disconnected"), 1u);
  EXPECT_EQ(HistoryRows(",disconnected,na,").size(), 1u) << "one row for one disconnect";

  RunUntil(330'000);
  EXPECT_TRUE(IsOn(1));
  EXPECT_EQ(HistoryRows(",connected,Office,").size(), 2u);
}

TEST_F(ConnectionScenario, AHistoryOfNoSizeKeepsNoRow) {
  Start(OfficeWorld());
  Pc().Files().Write(u"/data/Palisade/PalisadeOptimizer/network_telemetry/NetworkConnections.csv",
                     "head\nrow\n");
  WriteHome(u"TelemetryConnectionsCSVFileSizeMB", 0);
  ASSERT_EQ(HistoryRows().size(), 1u);
  RunUntil(40'000);
  EXPECT_TRUE(HistoryRows().empty());
}

TEST_F(ConnectionScenario, AnOutsideRoamHoldsTheAdapterWhereItIs) {
  Start(OfficeWorld(-70.0)
            .Ap(OfficeBeacon(52), 2, -70.0)
            .Ap(OfficeBeacon(149), 3, -95.0)
            .Signal({{0, -95.0}, {80'000, -95.0}, {81'000, -45.0}})
            .At(60'000, R"({"do": "roam", "adapter": 0, "bssid": "02-50-00-00-00-02"})"));
  RunUntil(50'000);
  ASSERT_TRUE(IsOn(1));
  RunUntil(79'000);
  EXPECT_TRUE(IsOn(2));
  EXPECT_NE(Config()->GetRoamingInhibitTick(), 0u);
  EXPECT_EQ(Text(value::kStatusMessage), LookUpStatusText(kStatusExternalRoaming));
  RunUntil(240'000);
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 0u) << "a switch undid somebody else's roam";
  EXPECT_GE(Count(AirEvent::kScanStarted, 80'000), 1u) << "it should go on looking";
  EXPECT_TRUE(IsOn(2));
}

TEST_F(ConnectionScenario, AnOutsideMoveIntoAnotherNetworkIsNoRoam) {
  WorldBuilder world =
      OfficeWorld(-50.0).Ap(LabBeacon(149), 2, -50.0).Profile("Lab").Network("Lab", 1);
  Start(world.At(60'000, R"({"do": "connect", "adapter": 0, "ssid": "Lab"})"));
  RunUntil(59'000);
  ASSERT_TRUE(IsOn(1));
  RunUntil(100'000);
  EXPECT_TRUE(IsOn(2));
  ASSERT_TRUE(HistoryRows(",disconnected,").empty())
      << "a round saw the loss, and no change of BSSID then";
  EXPECT_EQ(Config()->GetRoamingInhibitTick(), 0u);
}

TEST_F(ConnectionScenario, GatewaysAreThoseOfThePresentConnection) {
  WorldBuilder world = OfficeWorld().Ap(LabBeacon(149), 2, -95.0).Signal(HeardFrom(100'000, -50.0));
  world.Profile("Lab").Network("Lab", 1);
  GiveGateway(world, 0, 1, true);
  GiveGateway(world, 1, 2, false);
  Start(world.At(60'000, R"({"do": "disconnect", "adapter": 0})")
            .At(60'000, R"({"do": "accessPoint", "bssid": "02-50-00-00-00-01", "on": false})")
            .At(150'000, R"({"do": "neighbour", "address": "10.2.0.1", )"
                         R"("mac": "02-60-00-00-00-02", "on": true})"));
  const auto taught = [&](const WString& row) {
    return HomeText(u"GatewayMacs").find(row) != WString::npos;
  };
  RunUntil(145'000);
  ASSERT_TRUE(IsOn(2));
  EXPECT_TRUE(taught(u"02-50-00-00-00-01\v02-60-00-00-00-01"));
  EXPECT_FALSE(taught(u"02-50-00-00-00-02\v")) << "the gateway of the network before";
  RunUntil(175'000);
  EXPECT_TRUE(taught(u"02-50-00-00-00-02\v02-60-00-00-00-02"))
      << "a gateway that comes late is never seen";
}

TEST_F(ConnectionScenario, TheEventStreamTellsOfConnectionContentionAndLossOnce) {
  WorldBuilder world = OfficeWorld(-50.0).Ap(LabBeacon(36), 2, -60.0);
  Start(world
            .At(8'000,
                R"({"do": "registry", "adapter": 0, "name": "PassiveSuggestMode", "dword": 1})")
            .At(80'000, R"({"do": "disconnect", "adapter": 0})")
            .At(80'000, R"({"do": "accessPoint", "bssid": "02-50-00-00-00-01", "on": false})"));
  RunUntil(79'000);
  const auto connected = TraceEvents("TRELLIS_N_AP_CONNECTED_NIC1");
  ASSERT_EQ(connected.size(), 1u);
  EXPECT_EQ(connected[0].Text("bssid"), ApText(1));
  EXPECT_EQ(connected[0].Number("LinkSpeedTxKbps"), Number(value::kConnectedLinkRateTX));
  const auto contention = TraceEvents("TRELLIS_N_WIFI_AP_CONTENTION_NIC1");
  ASSERT_EQ(contention.size(), 1u);
  EXPECT_EQ(contention[0].Text("opp_bssids_csv"), ApText(2));
  EXPECT_TRUE(Printed("[0]  Contention APs: Lab[" + ApText(2) + "(SQ "))
      << "in the dump of the connection";
  EXPECT_TRUE(TraceEvents("TRELLIS_N_AP_DISCONNECTED_NIC1").empty());
  RunUntil(140'000);
  ASSERT_EQ(TraceEvents("TRELLIS_N_AP_DISCONNECTED_NIC1").size(), 1u);
  EXPECT_EQ(TraceEvents("TRELLIS_N_AP_DISCONNECTED_NIC1")[0].Text("bssid"), ApText(1));
  EXPECT_EQ(TraceEvents("TRELLIS_N_NO_WIFI_AP_CONTENTION_NIC1", 80'000).size(), 1u);
  EXPECT_EQ(TraceEvents("TRELLIS_N_AP_CONNECTED_NIC1").size(), 1u);
}

TEST_F(ConnectionScenario, AnOutsideScanHoldsTheAdapterStillWithItsConnectionKeptUpToDate) {
  Start(OfficeWorld(-50.0)
            .At(60'000, R"({"do": "scan", "adapter": 0})")
            .At(64'000, R"({"do": "disconnect", "adapter": 0})"));
  RunUntil(63'500);
  EXPECT_GT(Config()->GetInhibitRemainingMs(), 0u);
  EXPECT_STREQ(Config()->GetInhibitReason(), "out-scan");
  EXPECT_TRUE(IsOn(1));
  const std::size_t scans = Count(AirEvent::kScanStarted);
  RunUntil(69'000);
  EXPECT_FALSE(IsOn(1)) << "a client still reads of the connection that ended";
  EXPECT_EQ(Count(AirEvent::kScanStarted), scans);
}

TEST_F(ConnectionScenario, ALongRunOfOutsideScansNoLongerInhibits) {
  WorldBuilder world = OfficeWorld();
  for (std::uint64_t ms = 60'000; ms < 300'000; ms += 9'000)
    world.At(ms, R"({"do": "scan", "adapter": 0})");
  Start(world);
  RunUntil(150'000);
  EXPECT_TRUE(Printed("IGNORE INHIBIT"));
  EXPECT_GE(CountRounds(100s), 4) << "somebody's scans starve the adapter";
}

}  // namespace corvane::test
