#pragma once
#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "platform/sim/devices/sim_wlan_adapter.h"
#include "platform/sim/kernel/seam_gate.h"
#include "platform/wlan_api.h"

namespace corvane::platform::sim {

// The WLAN service of the simulated PC, as the program calls it.
class SimWlan final : public WlanApi {
 public:
  using Adapters = std::vector<std::unique_ptr<SimWlanAdapter>>;

  SimWlan(SimMachine& machine, SeamGate& gate, SimWlanClients& clients, Adapters& adapters)
      : m_Machine(machine), m_Gate(gate), m_Clients(clients), m_Adapters(adapters) {}

  DWORD WlanOpenHandle(DWORD clientVersion, void* reserved, DWORD* negotiated,
                       HANDLE* client) override;
  // A call that fails by injection has closed the handle all the same: nobody closes it twice.
  DWORD WlanCloseHandle(HANDLE client, void* reserved) override;
  DWORD WlanRegisterNotification(HANDLE client, DWORD source, BOOL ignoreDuplicate,
                                 WLAN_NOTIFICATION_CALLBACK callback, void* context, void* reserved,
                                 DWORD* previousSource) override;
  DWORD WlanEnumInterfaces(HANDLE client, void* reserved, WLAN_INTERFACE_INFO_LIST** list) override;
  DWORD WlanGetInterfaceCapability(HANDLE client, const GUID* adapter, void* reserved,
                                   WLAN_INTERFACE_CAPABILITY** capability) override;
  DWORD WlanQueryInterface(HANDLE client, const GUID* adapter, LONG opcode, void* reserved,
                           DWORD* dataSize, void** data, LONG* valueType) override;
  void WlanFreeMemory(void* memory) override;

  DWORD WlanScan(HANDLE client, const GUID* adapter, const DOT11_SSID* ssid, const void* ieData,
                 void* reserved) override;
  DWORD WlanGetAvailableNetworkList(HANDLE client, const GUID* adapter, DWORD flags, void* reserved,
                                    WLAN_AVAILABLE_NETWORK_LIST** list) override;
  DWORD WlanGetNetworkBssList(HANDLE client, const GUID* adapter, const DOT11_SSID* ssid,
                              LONG bssType, BOOL securityEnabled, void* reserved,
                              WLAN_BSS_LIST** list) override;
  DWORD WlanConnect(HANDLE client, const GUID* adapter,
                    const WLAN_CONNECTION_PARAMETERS* parameters, void* reserved) override;
  DWORD WlanDisconnect(HANDLE client, const GUID* adapter, void* reserved) override;
  DWORD WlanReasonCodeToString(DWORD reason, DWORD bufferChars, char16_t* buffer,
                               void* reserved) override;

  DWORD WlanGetProfile(HANDLE client, const GUID* adapter, LPCWSTR name, void* reserved,
                       char16_t** xml, DWORD* flags, DWORD* grantedAccess) override;
  DWORD WlanGetProfileList(HANDLE client, const GUID* adapter, void* reserved,
                           WLAN_PROFILE_INFO_LIST** list) override;
  DWORD WlanSetProfile(HANDLE client, const GUID* adapter, DWORD flags, LPCWSTR xml,
                       LPCWSTR security, BOOL overwrite, void* reserved, DWORD* reason) override;
  DWORD WlanDeleteProfile(HANDLE client, const GUID* adapter, LPCWSTR name,
                          void* reserved) override;
  DWORD WlanGetFilterList(HANDLE client, LONG type, void* reserved,
                          DOT11_NETWORK_LIST** list) override;
  // An adapter with a private interface answers every call with bytes that count up from 1.
  DWORD WlanIhvControl(HANDLE client, const GUID* adapter, LONG type, DWORD inputSize,
                       const void* input, DWORD outputSize, void* output, DWORD* returned) override;

  // For tests: from now on the lists claim far more items than they hold.
  void ClaimImpossibleCounts(bool on) { m_bImpossibleCounts = on; }
  // Buffers given out that have not come back.
  int BuffersOut() const { return m_BuffersOut.load(); }

 private:
  // Whether the service serves this handle.
  DWORD Check(HANDLE client) const;
  // Runs `serve(adapter)` under the devices' lock, once gate, handle and adapter are found good.
  template <class Serve>
  DWORD OnAdapter(const char* operation, HANDLE client, const GUID* guid, Serve&& serve);
  Profile Discovered(const std::string& ssid) const;
  DWORD FillRequest(SimWlanAdapter& adapter, const WLAN_CONNECTION_PARAMETERS& parameters,
                    SimWlanAdapter::ConnectRequest* request) const;
  void* Give(const void* bytes, std::size_t size);
  // A list of the shape that the service's lists have: count, index, items.
  template <class List, class Item>
  List* GiveList(const std::vector<Item>& items);

  SimMachine& m_Machine;
  SeamGate& m_Gate;
  SimWlanClients& m_Clients;
  Adapters& m_Adapters;
  std::atomic<bool> m_bImpossibleCounts{false};
  std::atomic<int> m_BuffersOut{0};
};

}  // namespace corvane::platform::sim
