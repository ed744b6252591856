// What follows from a connection, its change and its loss.

#include "platform/sim/sim_registry.h"
#include "scenario/service_fixture.h"

namespace corvane::test {

class ConnectionScenario : public ServiceTest {};

TEST_F(ConnectionScenario, TellsOfAConnectionOnceAndOfItsEnd) {
  Start(OfficeWorld(-50.0)
            .At(80'000, R"({"do": "disconnect", "adapter": 0})")
            .At(80'000, R"({"do": "accessPoint", "bssid": "02-50-00-00-00-01", "on": false})")
            .At(180'000, R"({"do": "accessPoint", "bssid": "02-50-00-00-00-01", "on": true})"));
  RunUntil(50'000);
  EXPECT_EQ(CountNotices(u"ConnectionStatus", u"Connected"), 1u);
  EXPECT_NE(LastNotice(u"ConnectionStatus").data1.find(u", 02-50-00-00-00-01, SQ "), WString::npos);
  EXPECT_EQ(HistoryRows(",connected,Office,02-50-00-00-00-01,").size(), 1u);
  EXPECT_NE(Number(value::kConnectedLinkRateTX), 0u);

  Config()->m_bReportStatusPending = true;  // somebody subscribes
  RunFor(20s);
  EXPECT_EQ(CountNotices(u"ConnectionStatus", u"Connected"), 2u) << "a new subscriber learns nothing";

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
  WriteHome(u"TelemetryConnectionsCSVFileSizeMB", 0);
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

TEST_F(ConnectionScenario, AnOutsideScanHoldsTheAdapterStillWithItsConnectionKeptUpToDate) {
  Start(OfficeWorld(-50.0).At(60'000, R"({"do": "scan", "adapter": 0})")
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
  for (std::uint64_t ms = 60'000; ms < 300'000; ms += 9'000) world.At(ms, R"({"do": "scan", "adapter": 0})");
  Start(world);
  RunUntil(150'000);
  EXPECT_TRUE(Printed("IGNORE INHIBIT"));
  EXPECT_GE(CountRounds(100s), 4) << "somebody's scans starve the adapter";
}

}  // namespace corvane::test
