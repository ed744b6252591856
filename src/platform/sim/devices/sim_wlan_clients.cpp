#include "platform/sim/devices/sim_wlan_clients.h"

#include <memory>

namespace corvane::platform::sim {

namespace {
constexpr std::uintptr_t kHandleStep = 0x10;

std::uintptr_t NumberOf(HANDLE client) { return reinterpret_cast<std::uintptr_t>(client); }
}  // namespace

struct SimWlanClients::Notification {
  DWORD source;
  DWORD code;
  GUID adapter;
  std::vector<BYTE> data;
};

HANDLE SimWlanClients::Open() {
  m_LastHandle += kHandleStep;
  m_Clients[m_LastHandle] = {};
  return reinterpret_cast<HANDLE>(m_LastHandle);
}

bool SimWlanClients::Has(HANDLE client) const { return m_Clients.contains(NumberOf(client)); }

bool SimWlanClients::Close(HANDLE client) { return m_Clients.erase(NumberOf(client)) == 1; }

bool SimWlanClients::Register(HANDLE client, DWORD source, WLAN_NOTIFICATION_CALLBACK callback,
                              void* context, DWORD* previousSource) {
  const auto found = m_Clients.find(NumberOf(client));
  if (found == m_Clients.end()) return false;
  if (previousSource) *previousSource = found->second.source;
  found->second =
      source == WLAN_NOTIFICATION_SOURCE_NONE ? Client{} : Client{source, callback, context};
  return true;
}

void SimWlanClients::NotifyBytes(DWORD source, DWORD code, const GUID& adapter,
                                 std::vector<BYTE> data) {
  if (!NextListener(0, source)) return;
  auto notification =
      std::make_shared<Notification>(Notification{source, code, adapter, std::move(data)});
  m_Loop.Deliver([this, notification] { Deliver(*notification); });
}

std::optional<std::uintptr_t> SimWlanClients::NextListener(std::uintptr_t after,
                                                           DWORD source) const {
  for (auto it = m_Clients.upper_bound(after); it != m_Clients.end(); ++it) {
    if ((it->second.source & source) != 0 && it->second.callback) return it->first;
  }
  return std::nullopt;
}

// Whether a client still listens is asked inside the callback section: once it has left the table,
// AwaitCallback is certain that it is not called again.
void SimWlanClients::Deliver(Notification& notification) {
  std::uintptr_t last = 0;
  for (bool more = true; more;) {
    m_Loop.CallBack([&] {
      const Client listener = m_Loop.WithLock([&] {
        const auto next = NextListener(last, notification.source);
        more = next.has_value();
        if (!more) return Client{};
        last = *next;
        return m_Clients.at(last);
      });
      if (!more) return;
      WLAN_NOTIFICATION_DATA data;
      data.NotificationSource = notification.source;
      data.NotificationCode = notification.code;
      data.InterfaceGuid = notification.adapter;
      data.dwDataSize = static_cast<DWORD>(notification.data.size());
      data.pData = notification.data.empty() ? nullptr : notification.data.data();
      listener.callback(&data, listener.context);
    });
  }
}

}  // namespace corvane::platform::sim
