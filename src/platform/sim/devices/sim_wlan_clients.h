#pragma once
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <type_traits>
#include <vector>

#include "platform/sim/devices/sim_device_loop.h"
#include "platform/wlan_types.h"

namespace corvane::platform::sim {

// The client handles of the WLAN service, and who is notified of what. Under the devices' lock. Who
// closes a handle or ends a registration calls SimDeviceLoop::AwaitCallback afterwards.
class SimWlanClients {
 public:
  explicit SimWlanClients(SimDeviceLoop& loop) : m_Loop(loop) {}

  HANDLE Open();
  bool Has(HANDLE client) const;
  bool Close(HANDLE client);
  // False for a handle that is not open. A source of WLAN_NOTIFICATION_SOURCE_NONE ends it.
  bool Register(HANDLE client, DWORD source, WLAN_NOTIFICATION_CALLBACK callback, void* context,
                DWORD* previousSource);

  // Notifies every client that has registered for the source when the devices' thread comes to it.
  // Without data the notification's pointer is null.
  void NotifyBytes(DWORD source, DWORD code, const GUID& adapter, std::vector<BYTE> data);
  template <class Data>
  void Notify(DWORD source, DWORD code, const GUID& adapter, const Data& data) {
    static_assert(std::is_trivially_copyable_v<Data>);
    std::vector<BYTE> bytes(sizeof data);
    std::memcpy(bytes.data(), &data, sizeof data);
    NotifyBytes(source, code, adapter, std::move(bytes));
  }

  std::size_t Count() const { return m_Clients.size(); }

 private:
  struct Client {
    DWORD source = WLAN_NOTIFICATION_SOURCE_NONE;
    WLAN_NOTIFICATION_CALLBACK callback = nullptr;
    void* context = nullptr;
  };
  struct Notification;

  // The first client after `after` that listens to the source.
  std::optional<std::uintptr_t> NextListener(std::uintptr_t after, DWORD source) const;
  void Deliver(Notification& notification);

  SimDeviceLoop& m_Loop;
  std::map<std::uintptr_t, Client> m_Clients;  // by handle, which rises with each one opened
  // Handles are no small numbers, so that an index or a flag taken for one is found.
  std::uintptr_t m_LastHandle = 0x5A000;
};

}  // namespace corvane::platform::sim
