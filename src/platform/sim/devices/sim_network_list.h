#pragma once
#include <atomic>
#include <functional>

#include "platform/network_list_api.h"
#include "platform/sim/devices/sim_interfaces.h"
#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform::sim {

// The network list service: the world's networks, with what the interfaces are on now. Objects show
// the present state, not that of the time when they were given out.
class SimNetworkList final : public NetworkListApi {
 public:
  SimNetworkList(SimMachine& machine, SeamGate& gate, const SimWlanAdapters& adapters,
                 SimTraffic& traffic)
      : m_Machine(machine), m_Gate(gate), m_Adapters(adapters), m_Traffic(traffic) {}

  HRESULT CoInitializeEx(DWORD model) override;
  HRESULT CoCreateNetworkListManager(INetworkListManager** manager) override;

  // COM objects given out that have not been released.
  int ObjectsOut() const { return m_ObjectsOut.load(); }

 private:
  friend class SimNetworkListObjects;

  // Runs `work` under the devices' lock, when gate and service let the operation go on; else gives
  // what it answers.
  HRESULT Run(const char* operation, const std::function<HRESULT()>& work);
  HRESULT Enter(const char* operation);  // with nothing to run
  HRESULT Read(const char* operation, std::size_t network,
               const std::function<HRESULT(const Network&)>& read);
  bool IsConnected(std::size_t network);  // under the lock

  SimMachine& m_Machine;
  SeamGate& m_Gate;
  const SimWlanAdapters& m_Adapters;
  SimTraffic& m_Traffic;
  std::atomic<bool> m_bComReady{false};  // somebody has joined the multithreaded apartment
  std::atomic<int> m_ObjectsOut{0};
};

}  // namespace corvane::platform::sim
