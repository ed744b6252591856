#include <vector>

#include "platform/ip_helper_api.h"
#include "probes/blast_packet.h"
#include "probes/icmp_helper_singleton.h"
#include "probes/probe_fixture.h"

namespace corvane::test {

using platform::sim::FaultPlan;

class BlastTest : public ProbeTest {
 protected:
  double Blast(std::uint32_t ifIndex, std::uint32_t connected, const char* mask = "255.255.255.0") {
    return CICMPHelperSingleton::GetInstance().blast(ifIndex, "192.168.1.1", mask,
                                                     platform::AF_INET, 1.0, connected);
  }
  // As the adapter list tells it, Mbps.
  static double LinkMbps() {
    std::vector<std::uint64_t> buffer(2000);
    auto* const list = reinterpret_cast<platform::IP_ADAPTER_ADDRESSES*>(buffer.data());
    platform::ULONG size = 16'000;
    EXPECT_EQ(Os().ipHelper.GetAdaptersAddresses(platform::AF_UNSPEC, 0, nullptr, list, &size), 0u);
    return static_cast<double>(list->TransmitLinkSpeed) / 1e6;
  }
};

TEST_F(BlastTest, MeasuresWhatTheLinkCarries) {
  Start(OfficeWorld());
  const double link = LinkMbps();
  ASSERT_GT(link, 10.0);
  const auto before = Pc().Now();
  EXPECT_NEAR(Blast(kFirst, 1), link, link / 100.0);
  EXPECT_EQ((Pc().Now() - before).count(), 1001) << "the pass after the second is the last";
  const auto sent = Pc().Devices().Sockets().LastSent();
  ASSERT_EQ(sent.packet.size(), 1480u);
  EXPECT_EQ(sent.packet[0], 254);
  EXPECT_EQ(InternetChecksum(sent.packet.data(), sent.packet.size()), 0);
  EXPECT_EQ(sent.ttl, 1) << "no further than the gateway";
}

TEST_F(BlastTest, OverIPv6IsMeasuredLikewise) {
  WorldBuilder world = OfficeWorld();
  world->networks[0].ip.unicast.push_back(Address("2001:db8:5::20", 64));
  world->networks[0].ip.gateways.push_back(Address("2001:db8:5::1", 64));
  Start(world);
  auto& helper = CICMPHelperSingleton::GetInstance();
  const double link = LinkMbps();
  EXPECT_NEAR(helper.blast(kFirst, "2001:db8:5::1", "", platform::AF_INET6, 1.0, 2), link,
              link / 100.0);
  const auto sent = Pc().Devices().Sockets().LastSent();
  ASSERT_EQ(sent.packet.size(), 1460u);
  Ip6Address from{}, to{};
  std::copy_n(Address("2001:db8:5::20").bytes.begin(), 16, from.begin());
  std::copy_n(Address("2001:db8:5::1").bytes.begin(), 16, to.begin());
  EXPECT_EQ(Icmp6Checksum(from, to, sent.packet.data(), sent.packet.size()), 0);
  Pc().Faults().FailAlways("CreateIpForwardEntry2", platform::ERROR_INVALID_PARAMETER);
  EXPECT_EQ(helper.blast(kFirst, "2001:db8:5::1", "", platform::AF_INET6, 1.0, 2), 0.0);
  EXPECT_TRUE(Printed("Failed to add IPV6 route entry\n"));
}

TEST_F(BlastTest, GoesThroughTheAdapterUnderTest) {
  Start(OfficeWorld(2));
  const double link = LinkMbps();
  EXPECT_EQ(Blast(kSecond, 1), 0.0) << "by itself the machine sends through the first";
  for (const char* mask : {"255.255.255.0", "", "nonsense"}) {
    EXPECT_NEAR(Blast(kSecond, 2, mask), link, link / 100.0) << mask;
    EXPECT_EQ(Routes(), 0u);
  }
}

TEST_F(BlastTest, AFailureGivesNoFigureAndLeavesNothing) {
  Start(OfficeWorld(2));
  const struct {
    const char* operation;
    const char* printed;
  } cases[] = {
      {"getaddrinfo", "blast: Bad name 192.168.1.1\n"},
      {"socket", "blast: socket() failed with error code 31\n"},
      {"ioctlsocket", "blast: ioctlsocket( ... FIONBIO ) failed with error: 31\n"},
      {"bind", "blast: bind() failed with error code 31\n"},
      {"CreateIpForwardEntry", "blast:[route abort] Failed to add IPV4 route entry\n"},
      {"PdhOpenQueryW", "blast: Error! failed to Initialize PDH counters\n"},
      {"PdhAddCounterW", "blast: Error! failed to Initialize PDH counters\n"},
      {"PdhCollectQueryData", "blast: Error! failed to Initialize PDH counters\n"},
      {"sendto", "blast: sendto() failed with error code 31\n"},
  };
  for (const auto& [operation, printed] : cases) {
    SCOPED_TRACE(operation);
    Pc().Faults().FailAlways(operation, platform::ERROR_GEN_FAILURE);
    EXPECT_EQ(Blast(kFirst, 2), 0.0);
    EXPECT_TRUE(Printed(printed));
    EXPECT_EQ(Routes(), 0u);
    EXPECT_EQ(Pc().Devices().CountOutstanding().sockets, 0u);
    Pc().Faults().Clear();
  }
  // These are told, and the blast goes on.
  for (const char* operation : {"setsockopt", "WSARecvFrom"}) {
    Pc().Faults().FailAlways(operation, platform::ERROR_GEN_FAILURE);
    EXPECT_GT(Blast(kFirst, 1), 0.0) << operation;
    EXPECT_TRUE(Printed(std::string(operation) + "() failed with error code 31\n")) << operation;
    Pc().Faults().Clear();
  }
  Pc().Faults().FailAlways("GetIpInterfaceEntry", platform::ERROR_GEN_FAILURE);
  EXPECT_GT(Blast(kFirst, 2), 0.0) << "the metric is left out";
}

// Whatever operation fails, faults or lacks memory: no exception leaves the blast, and nothing
// stays open. Each is one that is called over IPv6, with a route.
TEST_F(BlastTest, NoOperationThatFailsOrFaultsLeavesAnything) {
  WorldBuilder world = OfficeWorld();
  world->networks[0].ip.unicast.push_back(Address("2001:db8:5::20", 64));
  world->networks[0].ip.gateways.push_back(Address("2001:db8:5::1", 64));
  Start(world);
  const auto blast = [](std::uint32_t connected) {
    return CICMPHelperSingleton::GetInstance().blast(kFirst, "2001:db8:5::1", "",
                                                     platform::AF_INET6, 1.0, connected);
  };
  const struct {
    const char* operation;
    bool afterFailure;  // there is a figure all the same
    bool afterFault;
  } cases[] = {
      {"getaddrinfo", false, false},
      {"freeaddrinfo", true, true},
      {"socket", false, false},
      {"setsockopt", true, false},
      {"ioctlsocket", false, false},
      {"bind", false, false},
      {"WSARecvFrom", true, false},
      {"WSAIoctl", true, false},
      {"sendto", false, false},
      {"closesocket", true, true},
      {"InitializeIpForwardEntry", true, false},
      {"GetIpInterfaceEntry", true, true},
      {"CreateIpForwardEntry2", false, false},
      {"DeleteIpForwardEntry2", true, true},
      {"PdhOpenQueryW", false, false},
      {"PdhAddCounterW", false, false},
      {"PdhCollectQueryData", false, false},
      {"PdhGetFormattedCounterValue", false, false},
      {"PdhRemoveCounter", true, true},
      {"PdhCloseQuery", true, true},
  };
  for (const auto& [operation, afterFailure, afterFault] : cases) {
    for (const platform::DWORD code :
         {platform::ERROR_GEN_FAILURE, FaultPlan::kFault, FaultPlan::kNoMemory}) {
      SCOPED_TRACE(std::string(operation) + " " + std::to_string(code));
      Pc().Faults().FailAlways(operation, code);
      const bool good = code == platform::ERROR_GEN_FAILURE ? afterFailure : afterFault;
      EXPECT_EQ(blast(2) > 0.0, good);
      const bool routeStays = operation == std::string("DeleteIpForwardEntry2");
      EXPECT_EQ(Routes(), routeStays ? 1u : 0u);
      EXPECT_EQ(Pc().Devices().CountOutstanding().sockets, 0u);
      EXPECT_EQ(Pc().Devices().CountOutstanding().perfCounterHandles, 0u);
      Pc().Faults().Clear();
      EXPECT_GT(blast(1), 0.0) << "the next one goes through";
      EXPECT_EQ(Routes(), 0u);
    }
  }
  EXPECT_TRUE(Printed(
      "CICMPHelperSingleton::ComputeIcmp6PseudoHeaderChecksum: WSAIoctl() failed with error code "
      "31\n"));
}

TEST_F(BlastTest, DeniedRouteIsNotTriedAgain) {
  Start(OfficeWorld(2));
  for (const auto& [code, ms] :
       {std::pair(platform::ERROR_ACCESS_DENIED, 0), {platform::ERROR_GEN_FAILURE, 20}}) {
    Pc().Faults().FailAlways("CreateIpForwardEntry", code);
    const auto before = Pc().Now();
    EXPECT_EQ(Blast(kFirst, 2), 0.0);
    Pc().Faults().Clear();
    EXPECT_EQ((Pc().Now() - before).count(), ms) << "pauses of 10 ms between three tries";
  }
  Pc().Faults().FailAlways("DeleteIpForwardEntry", platform::ERROR_GEN_FAILURE);
  Blast(kFirst, 2);
  EXPECT_EQ(Routes(), 1u);
  Pc().Faults().Clear();
  Blast(kFirst, 1);
  EXPECT_EQ(Routes(), 0u) << "the next blast takes it away";
}

}  // namespace corvane::test
