#pragma once
// A simulated PC on the network "Office" (192.168.1.0/24 behind 192.168.1.1), with sockets started.

#include "platform/icmp_api.h"
#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/devices/sim_sockets.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/world/world_text.h"
#include "support/pc_fixture.h"
#include "support/world_builder.h"

namespace corvane::test {

class ProbeTest : public PcTest {
 protected:
  static constexpr std::uint32_t kFirst = 11, kSecond = 12;  // interface indexes

  static platform::sim::IpAddress Address(const char* text, int prefix = 24) {
    platform::sim::IpAddress address;
    EXPECT_TRUE(platform::sim::ReadIpAddress(text, &address)) << text;
    address.prefix = prefix;
    return address;
  }
  // `adapters` of them, all on access point 1.
  static WorldBuilder OfficeWorld(int adapters = 1) {
    WorldBuilder world;
    world.Ap(Beacon(u8"Office").Channel(36).Vht80(2), 1, -50.0).Network("Office", 1);
    world->networks[0].ip.unicast = {Address("192.168.1.20")};
    world->networks[0].ip.gateways = {Address("192.168.1.1")};
    // Two of one description would share a counter.
    for (int i = 0; i < adapters; ++i) {
      world.Adapter(i == 0 ? u"Vantor Wi-Fi 6 AX200" : u"Vantor Wi-Fi 6 (second)").Connected(1);
    }
    return world;
  }
  void Start(const WorldBuilder& world) {
    Boot(world.Build());
    ASSERT_EQ(Os().sockets.WSAStartup(0x0202), 0);
    m_bSockets = true;
  }
  void TearDown() override {
    Pc().Faults().Clear();
    if (m_bSockets) Os().sockets.WSACleanup();
    EXPECT_EQ(Pc().Devices().CountOutstanding(), platform::sim::SimDevices::Outstanding{});
    PcTest::TearDown();
  }
  std::size_t Routes() { return Pc().Devices().CountOutstanding().routes; }
  bool Printed(const std::string& text) {
    return Pc().ConsoleText().find(text) != std::string::npos;
  }

 private:
  bool m_bSockets = false;
};

}  // namespace corvane::test
