#include "probes/win_icmp2.h"

#include <cmath>
#include <memory>
#include <vector>

#include "probes/probe_fixture.h"

namespace corvane::test {

using platform::sim::FaultPlan;
using platform::sim::kEchoLost;

class DetectorTest : public ProbeTest {
 protected:
  void StartDetector(const WorldBuilder& world) {
    Start(world);
    m_pDetector = std::make_unique<CWinICMP2>();
    ASSERT_TRUE(m_pDetector->SetTargetInterface(kFirst, "probe.test"));
  }
  void TearDown() override {
    m_pDetector.reset();
    ProbeTest::TearDown();
  }
  int Round() { return m_pDetector->TraceIPRoutersForInterference(); }
  static void ExpectTimes(const InterferenceSet& set, const std::vector<double>& rtts) {
    double mean = 0.0, squares = 0.0;
    for (const double rtt : rtts) mean += rtt / static_cast<double>(rtts.size());
    for (const double rtt : rtts) squares += (rtt - mean) * (rtt - mean);
    EXPECT_NEAR(set.rttMean, mean, 1e-9);
    EXPECT_NEAR(set.rttDeviation, std::sqrt(squares / static_cast<double>(rtts.size())), 1e-9);
  }

  std::unique_ptr<CWinICMP2> m_pDetector;
  InterferenceRecord m_Record;
};

TEST_F(DetectorTest, MeasuresTheGatewayAndTheRouterBehindIt) {
  StartDetector(OfficeWorld());
  EXPECT_EQ(m_pDetector->GetResult(&m_Record), 0) << "nothing was asked yet";
  ASSERT_EQ(Round(), 0);
  EXPECT_EQ(Routes(), 0u);
  ASSERT_EQ(m_pDetector->GetResult(&m_Record), 2);
  EXPECT_EQ(m_Record[0].lastRttMs, 2u);
  EXPECT_EQ(m_Record[1].lastRttMs, 9u);
  EXPECT_EQ(m_Record[1].lastSegmentMs, 7u) << "without the first hop's 2 ms";
  EXPECT_EQ(m_Record[1].rttDeviation, 0.0);
  m_pDetector->FactoryReset();
  EXPECT_EQ(m_pDetector->GetResult(&m_Record), 0);
  EXPECT_EQ(Round(), -1) << "it no longer knows where to";
}

TEST_F(DetectorTest, KeepsTheLastTenTimesOfANoisyAccessPoint) {
  WorldBuilder world = OfficeWorld();
  std::vector<double> first, second;
  for (int i = 0; i < 12; ++i) {
    world->accessPoints[0].noise.push_back(i * 5.0);   // of the first hop's echo
    world->accessPoints[0].noise.push_back(i * 11.0);  // and of the second's
    if (i >= 2) first.push_back(2.0 + i * 5.0), second.push_back(9.0 + i * 11.0);
  }
  StartDetector(world);
  for (int i = 0; i < 12; ++i) ASSERT_EQ(Round(), 0);
  ASSERT_EQ(m_pDetector->GetResult(&m_Record), 2);
  ExpectTimes(m_Record[0], first);
  ExpectTimes(m_Record[1], second);
}

TEST_F(DetectorTest, FigureOfTheSecondHopAloneStandsInTheSecondSet) {
  WorldBuilder world = OfficeWorld();
  world->accessPoints[0].noise = {kEchoLost, 4.0};
  StartDetector(world);
  const auto before = Pc().Now();
  ASSERT_EQ(Round(), 0);
  EXPECT_EQ((Pc().Now() - before).count(), 2000 + 13) << "one time-out and one answer";
  ASSERT_EQ(m_pDetector->GetResult(&m_Record), 1);
  EXPECT_EQ(m_Record[0].lastRttMs, 0u);
  EXPECT_EQ(m_Record[1].lastRttMs, 13u);
}

TEST_F(DetectorTest, GoesOverToIPv6OnceNoHopAnswersAndBackByAReset) {
  WorldBuilder world = OfficeWorld();
  world->networks[0].ip.unicast.push_back(Address("2001:db8:5::20", 64));
  world->networks[0].ip.gateways.push_back(Address("fe80::1", 64));
  StartDetector(world);
  for (const std::uint64_t call : {1u, 2u}) {
    Pc().Faults().FailCall("IcmpSendEcho", call, platform::IP_REQ_TIMED_OUT);
  }
  EXPECT_EQ(Round(), 0);
  EXPECT_EQ(m_pDetector->GetResult(&m_Record), 0);
  Pc().Faults().FailAlways("IcmpSendEcho", platform::IP_REQ_TIMED_OUT);
  EXPECT_EQ(Round(), 0);
  ASSERT_EQ(m_pDetector->GetResult(&m_Record), 2);
  EXPECT_EQ(m_Record[1].lastRttMs, 9u);
  EXPECT_EQ(Routes(), 0u);
  m_pDetector->FactoryReset();
  ASSERT_TRUE(m_pDetector->SetTargetInterface(kFirst, "probe.test"));
  Round();
  EXPECT_EQ(m_pDetector->GetResult(&m_Record), 0) << "IPv4 again, which still fails";
}

// What the system gives as the reason of a call without a reply may be the number of a status.
TEST_F(DetectorTest, AnErrorWithTheNumberOfAnAnswerIsNone) {
  StartDetector(OfficeWorld());
  Pc().Faults().FailAlways("IcmpSendEcho", platform::IP_TTL_EXPIRED_TRANSIT);
  EXPECT_EQ(Round(), 0);
  EXPECT_EQ(m_pDetector->GetResult(&m_Record), 0);
  Pc().Faults().Clear();
  EXPECT_EQ(Round(), 0);
  EXPECT_EQ(m_pDetector->GetResult(&m_Record), 2);
}

TEST_F(DetectorTest, LeavesNoRouteWhicheverOperationFails) {
  StartDetector(OfficeWorld());
  for (const char* operation : {"GetIpForwardTable", "CreateIpForwardEntry", "GetIpInterfaceEntry",
                                "IcmpSendEcho", "DeleteIpForwardEntry"}) {
    SCOPED_TRACE(operation);
    Pc().Faults().FailAlways(operation, platform::ERROR_GEN_FAILURE);
    EXPECT_EQ(Round(), 0);
    Pc().Faults().Clear();
    EXPECT_EQ(Round(), 0) << "what could not be removed then is now";
    EXPECT_EQ(Routes(), 0u);
  }
  Pc().Faults().FailAlways("DeleteIpForwardEntry", platform::ERROR_GEN_FAILURE);
  Round();
  EXPECT_EQ(Routes(), 1u);
  Pc().Faults().Clear();
  m_pDetector.reset();
  EXPECT_EQ(Routes(), 0u);
}

// Whatever operation fails, faults or lacks memory: no exception leaves the detector, no route or
// handle stays, and it works again after a reset.
TEST_F(DetectorTest, NoOperationThatFailsOrFaultsLeavesAnything) {
  WorldBuilder world = OfficeWorld();
  world->networks[0].ip.unicast.push_back(Address("2001:db8:5::20", 64));
  world->networks[0].ip.gateways.push_back(Address("fe80::1", 64));
  Start(world);
  m_pDetector = std::make_unique<CWinICMP2>();
  const auto use = [&] {
    m_pDetector->SetTargetInterface(kFirst, "probe.test");
    for (int i = 0; i < 3; ++i) Round();  // the first without an answer is the last over IPv4
    return m_pDetector->GetResult(&m_Record);
  };
  const struct {
    const char* operation;
    bool overIp6;
    int afterFailure;  // sets of the result
    int afterFault;
  } cases[] = {
      {"getaddrinfo", false, 0, 0},          {"freeaddrinfo", false, 2, 2},
      {"GetAdaptersAddresses", false, 2, 2}, {"IcmpCreateFile", false, 2, 0},  // over IPv6
      {"Icmp6CreateFile", false, 2, 2},      {"IcmpSendEcho", false, 2, 0},
      {"Icmp6SendEcho2", true, 0, 0},        {"IcmpCloseHandle", false, 2, 2},
      {"GetIpForwardTable", false, 2, 2},    {"GetIpInterfaceEntry", false, 2, 2},
      {"CreateIpForwardEntry", false, 2, 2}, {"DeleteIpForwardEntry", false, 2, 2},
  };
  for (const auto& [operation, overIp6, afterFailure, afterFault] : cases) {
    for (const platform::DWORD code :
         {platform::ERROR_GEN_FAILURE, FaultPlan::kFault, FaultPlan::kNoMemory}) {
      SCOPED_TRACE(std::string(operation) + " " + std::to_string(code));
      Pc().Faults().FailAlways(operation, code);
      if (overIp6) Pc().Faults().FailAlways("IcmpSendEcho", platform::IP_REQ_TIMED_OUT);
      EXPECT_EQ(use(), code == platform::ERROR_GEN_FAILURE ? afterFailure : afterFault);
      m_pDetector->FactoryReset();
      EXPECT_EQ(Pc().Devices().CountOutstanding().icmpHandles, 0u);
      EXPECT_EQ(Pc().Devices().CountOutstanding().sockets, 0u) << "lists of addresses";
      Pc().Faults().Clear();
      EXPECT_EQ(use(), 2);
      EXPECT_EQ(Routes(), 0u);
      m_pDetector->FactoryReset();
    }
  }
}

TEST_F(DetectorTest, ARouteThatWentWithItsAdapterIsNotTriedForEver) {
  StartDetector(OfficeWorld(2));
  Pc().Faults().FailAlways("DeleteIpForwardEntry", platform::ERROR_GEN_FAILURE);
  Round();
  Pc().Faults().Clear();
  Pc().Devices().Do(R"({"do": "adapter", "adapter": 0, "on": false})");
  for (int i = 0; i < 3; ++i) Round();
  constexpr std::string_view kLine = "DeleteIpForwardEntry failed! 0x00000002";
  const std::string text = Pc().ConsoleText();
  const std::size_t first = text.find(kLine);
  ASSERT_NE(first, text.npos);
  EXPECT_EQ(text.find(kLine, first + 1), text.npos) << "once is enough";
  EXPECT_EQ(Routes(), 0u);
}

TEST_F(DetectorTest, TwoAdaptersUnderTestKeepTheirRoutesApart) {
  StartDetector(OfficeWorld(2));
  CWinICMP2 other;
  ASSERT_TRUE(other.SetTargetInterface(kSecond, "probe.test"));
  // Both routes stand at once, the first because its removal fails.
  Pc().Faults().FailAlways("DeleteIpForwardEntry", platform::ERROR_GEN_FAILURE);
  Round(), other.TraceIPRoutersForInterference();
  EXPECT_EQ(Routes(), 2u);
  Pc().Faults().Clear();
  Round(), other.TraceIPRoutersForInterference();
  EXPECT_EQ(Routes(), 0u);
}

TEST_F(DetectorTest, WithoutHandleOrNameThereIsNoResult) {
  StartDetector(OfficeWorld());
  Pc().Faults().FailCall("IcmpCreateFile", 1, platform::ERROR_ACCESS_DENIED);
  Pc().Faults().FailCall("Icmp6CreateFile", 1, platform::ERROR_ACCESS_DENIED);
  EXPECT_EQ(Round(), -1);
  EXPECT_EQ(Round(), -1) << "it is not tried again";
  m_pDetector->FactoryReset();
  Pc().Faults().FailAlways("getaddrinfo", platform::WSAHOST_NOT_FOUND);
  EXPECT_FALSE(m_pDetector->SetTargetInterface(kFirst, "probe.test"));
  EXPECT_EQ(Round(), -1);
  Pc().Faults().Clear();
  m_pDetector->FactoryReset();
  EXPECT_TRUE(m_pDetector->SetTargetInterface(kFirst, "probe.test"));
  EXPECT_EQ(Round(), 0);
  EXPECT_EQ(m_pDetector->GetResult(&m_Record), 2);
}

}  // namespace corvane::test
