#pragma once
#include <atomic>

#include "platform/ip_helper_api.h"
#include "platform/sim/devices/sim_interfaces.h"
#include "platform/sim/devices/sim_paths.h"
#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform::sim {

class SimDriver;

// The interface, address and neighbour tables of the simulated PC.
class SimIpHelper final : public IpHelperApi {
 public:
  SimIpHelper(SimMachine& machine, SeamGate& gate, const SimWlanAdapters& adapters,
              SimTraffic& traffic, SimDriver& driver, SimPaths& paths)
      : m_Machine(machine),
        m_Gate(gate),
        m_Adapters(adapters),
        m_Traffic(traffic),
        m_Driver(driver),
        m_Paths(paths) {}

  DWORD GetIfTable(MIB_IFTABLE* table, ULONG* size, BOOL order) override;
  ULONG GetAdaptersAddresses(ULONG family, ULONG flags, void* reserved,
                             IP_ADAPTER_ADDRESSES* addresses, ULONG* size) override;
  ULONG GetAdaptersInfo(IP_ADAPTER_INFO* info, ULONG* size) override;
  DWORD GetIpNetTable2(WORD family, MIB_IPNET_TABLE2** table) override;
  void FreeMibTable(void* memory) override;
  DWORD ResolveIpNetEntry2(MIB_IPNET_ROW2* row, const SOCKADDR_INET* source) override;
  DWORD GetIfEntry2(MIB_IF_ROW2* row) override;
  DWORD ConvertInterfaceGuidToLuid(const GUID* adapter, ULONGLONG* luid) override;

  int TablesOut() const { return m_TablesOut; }  // neighbour tables that have not come back

  // sim_routes.cpp
  DWORD CreateIpForwardEntry(const MIB_IPFORWARDROW* row) override;
  DWORD DeleteIpForwardEntry(const MIB_IPFORWARDROW* row) override;
  DWORD GetIpForwardTable(MIB_IPFORWARDTABLE* table, ULONG* size, BOOL order) override;
  void InitializeIpForwardEntry(MIB_IPFORWARD_ROW2* row) override;
  DWORD CreateIpForwardEntry2(const MIB_IPFORWARD_ROW2* row) override;
  DWORD DeleteIpForwardEntry2(const MIB_IPFORWARD_ROW2* row) override;
  DWORD GetIpInterfaceEntry(MIB_IPINTERFACE_ROW* row) override;

 private:
  std::vector<SimInterface> Interfaces() { return InterfacesOf(m_Machine, m_Adapters, m_Traffic); }

  SimMachine& m_Machine;
  SeamGate& m_Gate;
  const SimWlanAdapters& m_Adapters;
  SimTraffic& m_Traffic;
  SimDriver& m_Driver;
  std::atomic<int> m_TablesOut{0};
  SimPaths& m_Paths;
};

}  // namespace corvane::platform::sim
