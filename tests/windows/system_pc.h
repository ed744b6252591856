#pragma once
// A simulated PC whose devices a test reaches through the services of the Windows platform.
#include <optional>

#include "platform/sim/devices/device_story.h"

namespace corvane::test {

// The service that stands behind the functions of a library at the moment.
template <typename Api>
inline Api* g_pBehind = nullptr;

class SystemPcTest : public DeviceTest {
 protected:
  // What is put in the place of the PC's own; null leaves that.
  struct Services {
    WlanApi* wlan = nullptr;
    NetworkListApi* networkList = nullptr;
    PerfCounterApi* perfCounters = nullptr;
    IpHelperApi* ipHelper = nullptr;
  };

  void Start(const World& world, const Services& own) {
    DeviceTest::Start(world);
    listener.reset();
    const Platform& pc = Pc().GetPlatform();
    g_pBehind<WlanApi> = &pc.wlan;
    g_pBehind<NetworkListApi> = &pc.networkList;
    g_pBehind<PerfCounterApi> = &pc.perfCounters;
    g_pBehind<IpHelperApi> = &pc.ipHelper;
    m_Platform.emplace(
        Platform{.threads = pc.threads,
                 .clock = pc.clock,
                 .console = pc.console,
                 .crypto = pc.crypto,
                 .eventTrace = pc.eventTrace,
                 .files = pc.files,
                 .ipHelper = own.ipHelper ? *own.ipHelper : pc.ipHelper,
                 .networkList = own.networkList ? *own.networkList : pc.networkList,
                 .perfCounters = own.perfCounters ? *own.perfCounters : pc.perfCounters,
                 .power = pc.power,
                 .registry = pc.registry,
                 .session = pc.session,
                 .wlan = own.wlan ? *own.wlan : pc.wlan,
                 .driver = pc.driver,
                 .heap = pc.heap,
                 .http = pc.http,
                 .icmp = pc.icmp,
                 .pipes = pc.pipes,
                 .services = pc.services,
                 .sockets = pc.sockets,
                 .windows = pc.windows});
    SetPlatform(&*m_Platform);
    listener = std::make_unique<WlanListener>(Pc());
  }
  void TearDown() override {
    listener.reset();
    SetPlatform(&Pc().GetPlatform());
    DeviceTest::TearDown();
  }

 private:
  std::optional<Platform> m_Platform;
};

}  // namespace corvane::test
