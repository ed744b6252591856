#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform {
class ClockApi;
class DriverApi;
class HeapApi;
class IpHelperApi;
class NetworkListApi;
class PerfCounterApi;
class PowerApi;
class RegistryApi;
class ServiceApi;
class ThreadApi;
class WlanApi;
}  // namespace corvane::platform

namespace corvane::platform::sim {

class IPcObserver;
class SimDriver;
class SimPipes;
class SimSession;
class SimIcmp;
class SimSockets;
class SimWeb;
class SimWindows;
struct World;

// What the devices need of the machine they run in. All outlive the devices.
struct DeviceHost {
  ThreadApi& threads;
  ClockApi& clock;
  RegistryApi& registry;  // for writes of the timeline
  SeamGate& gate;
  void (*pressKey)(void* context) = nullptr;  // the timeline's console key
  void* pressKeyContext = nullptr;
  SimSession* session = nullptr;  // follows the world's; null: it has none
  SimPipes* pipes = nullptr;      // for the world's clients; null: they do nothing
};

// The simulated devices of one world: adapters and air, network list, counters, interface table,
// power, Bluetooth, the web, windows. They keep time only by the host's clock and run their events
// on one thread of their own, so they serve under virtual time and in real time alike. The same
// world, seed and calls give the same answers.
class SimDevices {
 public:
  SimDevices(const World& world, std::uint64_t seed, const DeviceHost& host);
  ~SimDevices();  // after Stop

  void Start();  // starts the devices' thread; time 0 of the world's timeline is now
  void Stop();   // ends it; no callback runs afterwards
  void SetObserver(IPcObserver* observer);  // before Start; null for none

  WlanApi& Wlan();
  IpHelperApi& IpHelper();
  NetworkListApi& NetworkList();
  PerfCounterApi& PerfCounters();
  PowerApi& Power();
  SimWeb& Web();
  SimWindows& Windows();
  SimSockets& Sockets();
  SimDriver& Driver();
  HeapApi& Heap();
  ServiceApi& Services();
  SimIcmp& Icmp();

  // Carries out one timeline action now, given as its JSON object ("docs/worlds.md"). Throws
  // std::invalid_argument with the reason for one that is not understood.
  void Do(const char* actionJson);

  // For tests: from now on the lists of the WLAN service claim far more items than they hold.
  void ClaimImpossibleCounts(bool on);
  // What the program has been given and has not given back.
  struct Outstanding {
    std::size_t wlanClients = 0;
    std::size_t wlanBuffers = 0;
    std::size_t networkListObjects = 0;
    std::size_t perfCounterHandles = 0;
    std::size_t webObjects = 0;
    std::size_t socketUsers = 0;
    std::size_t mibTables = 0;
    std::size_t driverHandles = 0;
    std::size_t serviceHandles = 0;
    std::size_t heaps = 0;
    std::size_t sockets = 0;
    std::size_t icmpHandles = 0;
    std::size_t routes = 0;   // that the program has added
    std::size_t windows = 0;  // and their power registrations
    friend bool operator==(const Outstanding&, const Outstanding&) = default;
  };
  Outstanding CountOutstanding();

 private:
  struct Impl;
  std::unique_ptr<Impl> m_pImpl;
};

}  // namespace corvane::platform::sim
