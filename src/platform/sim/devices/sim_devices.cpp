#include "platform/sim/devices/sim_devices.h"

#include "platform/sim/devices/sim_clients.h"
#include "platform/sim/devices/sim_driver.h"
#include "platform/sim/devices/sim_heap.h"
#include "platform/sim/devices/sim_icmp.h"
#include "platform/sim/devices/sim_ip_helper.h"
#include "platform/sim/devices/sim_network_list.h"
#include "platform/sim/devices/sim_perf_counters.h"
#include "platform/sim/devices/sim_power.h"
#include "platform/sim/devices/sim_services.h"
#include "platform/sim/devices/sim_sockets.h"
#include "platform/sim/devices/sim_timeline.h"
#include "platform/sim/devices/sim_web.h"
#include "platform/sim/devices/sim_windows.h"
#include "platform/sim/devices/sim_wlan.h"
#include "platform/sim/world/world_loader.h"

namespace corvane::platform::sim {

struct SimDevices::Impl {
  Impl(const World& world, std::uint64_t seed, const DeviceHost& host)
      : loop(host.threads, host.clock),
        machine(world, seed, loop),
        heap(host.gate),
        driver({host.gate, host.threads, host.clock, heap}, seed, world.driver),
        gate(host.gate, driver),
        services(host.gate, host.threads, driver),
        clients(loop),
        traffic(machine),
        wlan(machine, gate, clients, adapters),
        paths(machine, adapters, traffic),
        ipHelper(machine, gate, adapters, traffic, driver, paths),
        networkList(machine, gate, adapters, traffic),
        perfCounters(machine, host.gate, adapters, traffic),
        power(machine, host.gate, host.threads),
        web(machine, host.gate, host.threads),
        windows(host.gate, host.threads, host.session),
        sockets(machine, host.gate, host.threads, paths, traffic),
        icmp(machine, host.gate, host.threads, paths),
        pipeClients(machine, host.pipes, host.session),
        timeline({machine, clients, adapters, traffic, windows, web, driver, pipeClients,
                  host.registry, host.session, host.pressKey, host.pressKeyContext}) {
    for (std::size_t i = 0; i < world.adapters.size(); ++i) {
      adapters.push_back(
          std::make_unique<SimWlanAdapter>(machine, clients, traffic, static_cast<int>(i)));
    }
  }

  // What the machine has done before, then the timeline, so that an action at time 0 meets a
  // machine that runs.
  void Boot() {
    timeline.Boot();
    for (const auto& adapter : adapters) adapter->Boot();
    for (const Action& action : machine.world.timeline) {
      loop.At(action.atMs, [this, &action] { timeline.Carry(action); });
    }
  }

  SimDeviceLoop loop;
  SimMachine machine;
  SimHeap heap;
  SimDriver driver;
  SimGlancingGate gate;
  SimServices services;
  SimWlanClients clients;
  SimTraffic traffic;
  SimWlanAdapters adapters;
  SimWlan wlan;
  SimPaths paths;
  SimIpHelper ipHelper;
  SimNetworkList networkList;
  SimPerfCounters perfCounters;
  SimPower power;
  SimWeb web;
  SimWindows windows;
  SimSockets sockets;
  SimIcmp icmp;
  SimClients pipeClients;
  SimTimeline timeline;
};

SimDevices::SimDevices(const World& world, std::uint64_t seed, const DeviceHost& host)
    : m_pImpl(std::make_unique<Impl>(world, seed, host)) {}

SimDevices::~SimDevices() = default;

void SimDevices::Start() {
  m_pImpl->loop.WithLock([this] { m_pImpl->Boot(); });
  m_pImpl->loop.Start();
}

void SimDevices::Stop() { m_pImpl->loop.Stop(); }

void SimDevices::SetObserver(IPcObserver* observer) { m_pImpl->loop.SetObserver(observer); }

WlanApi& SimDevices::Wlan() { return m_pImpl->wlan; }
IpHelperApi& SimDevices::IpHelper() { return m_pImpl->ipHelper; }
NetworkListApi& SimDevices::NetworkList() { return m_pImpl->networkList; }
PerfCounterApi& SimDevices::PerfCounters() { return m_pImpl->perfCounters; }
PowerApi& SimDevices::Power() { return m_pImpl->power; }
SimWeb& SimDevices::Web() { return m_pImpl->web; }
SimWindows& SimDevices::Windows() { return m_pImpl->windows; }
SimSockets& SimDevices::Sockets() { return m_pImpl->sockets; }
SimDriver& SimDevices::Driver() { return m_pImpl->driver; }
HeapApi& SimDevices::Heap() { return m_pImpl->heap; }
ServiceApi& SimDevices::Services() { return m_pImpl->services; }
SimIcmp& SimDevices::Icmp() { return m_pImpl->icmp; }

void SimDevices::Do(const char* actionJson) {
  m_pImpl->loop.WithLock(
      [&] { m_pImpl->timeline.Carry(ParseAction(actionJson, m_pImpl->machine.world)); });
}

void SimDevices::ClaimImpossibleCounts(bool on) { m_pImpl->wlan.ClaimImpossibleCounts(on); }

SimDevices::Outstanding SimDevices::CountOutstanding() {
  return {.wlanClients = m_pImpl->loop.WithLock([this] { return m_pImpl->clients.Count(); }),
          .wlanBuffers = static_cast<std::size_t>(m_pImpl->wlan.BuffersOut()),
          .networkListObjects = static_cast<std::size_t>(m_pImpl->networkList.ObjectsOut()),
          .perfCounterHandles = m_pImpl->perfCounters.OpenHandles(),
          .webObjects = m_pImpl->web.Outstanding(),
          .socketUsers = static_cast<std::size_t>(m_pImpl->sockets.Users()),
          .mibTables = static_cast<std::size_t>(m_pImpl->ipHelper.TablesOut()),
          .driverHandles = m_pImpl->driver.OpenHandles(),
          .serviceHandles = m_pImpl->services.OpenHandles(),
          .heaps = m_pImpl->heap.Count(),
          .sockets = m_pImpl->sockets.Open(),
          .icmpHandles = m_pImpl->icmp.Open(),
          .routes = m_pImpl->loop.WithLock([this] { return m_pImpl->paths.Standing(); }),
          .windows = m_pImpl->windows.OpenWindows()};
}

}  // namespace corvane::platform::sim
