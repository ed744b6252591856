#pragma once
#include "platform/sim/devices/sim_clients.h"
#include "platform/sim/devices/sim_interfaces.h"
#include "platform/sim/devices/sim_web.h"
#include "platform/sim/devices/sim_windows.h"
#include "platform/sim/devices/sim_wlan_clients.h"

namespace corvane::platform {
class RegistryApi;
}

namespace corvane::platform::sim {

class SimDriver;
class SimSession;

// Carries out what the timeline of a world says. Under the devices' lock.
class SimTimeline {
 public:
  struct Parts {
    SimMachine& machine;
    SimWlanClients& clients;
    SimWlanAdapters& adapters;
    SimTraffic& traffic;
    SimWindows& windows;
    SimWeb& web;
    SimDriver& driver;
    SimClients& pipeClients;
    RegistryApi& registry;
    SimSession* session;  // null: the host has its own
    void (*pressKey)(void* context);
    void* pressKeyContext;
  };
  explicit SimTimeline(const Parts& parts) : m(parts) {}

  void Boot();  // what stands in the registry and runs before the program starts
  void Carry(const Action& action);

 private:
  bool CarryInTheAir(const Action& action);
  void CarryOnTheMachine(const Action& action);
  void ForItsAdapters(const Action& action);
  void Wireless(const Action& action, SimWlanAdapter& adapter);
  void OutsideConnect(const Action& action, SimWlanAdapter& adapter);
  void BareNotification(const Action& action, SimWlanAdapter& adapter);
  void AddTraffic(Traffic traffic);
  void ChangeAccessPoint(const Action& action);
  void ChangeNetwork(const Action& action);
  void ChangeInterface(const Action& action);
  void ChangeNeighbour(const Action& action);
  void ChangeFilter(const Action& action);
  void ChangeWeb(const Action& action);
  void ChangeService(bool runs);
  void ChangePower(const Action& action);
  void ChangeBluetooth(const Action& action);
  void ChangeSession(const Session& session);
  void SetSession(const Session& session);
  void SetProcess(const std::u16string& name, bool runs);
  void Write(const RegistryWrite& write);

  Parts m;
};

}  // namespace corvane::platform::sim
