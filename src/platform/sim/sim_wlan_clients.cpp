#include "platform/sim/sim_wlan_clients.h"

#include <memory>

namespace corvane::platform::sim {

namespace {
// Handles are no small numbers, so that an index or a flag taken for one is found.
constexpr std::uintptr_t kFirstHandle = 0x5A000;
constexpr std::uintptr_t kHandleStep = 0x10;

std::uintptr_t NumberOf(HANDLE client) { return reinterpret_cast<std::uintptr_t>(client); }
}  // namespace

struct SimWlanClients::Notification {
  DWORD source;
  DWORD code;
  GUID adapter;
  std::vector<BYTE> data;
};

SimWlanClients::SimWlanClients(ThreadApi& threads, SimDeviceLoop& loop)
    : m_Threads(threads), m_Loop(loop), m_LastHandle(kFirstHandle) {
  m_Threads.InitializeCriticalSection(&m_CallbackLock, "simulated WLAN callback", 0);
}

SimWlanClients::~SimWlanClients() { m_Threads.DeleteCriticalSection(&m_CallbackLock); }

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
  found->second = source == WLAN_NOTIFICATION_SOURCE_NONE ? Client{} : Client{source, callback, context};
  return true;
}

// The lock is recursive, so a callback may end its own registration.
void SimWlanClients::AwaitCallback() {
  m_Threads.EnterCriticalSection(&m_CallbackLock);
  m_Threads.LeaveCriticalSection(&m_CallbackLock);
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

// Whether a client still listens is asked under the callback lock: once it has left the table,
// AwaitCallback is certain that it is not called again.
void SimWlanClients::Deliver(Notification& notification) {
  std::uintptr_t last = 0;
  for (bool more = true; more;) {
    m_Threads.EnterCriticalSection(&m_CallbackLock);
    const Client listener = m_Loop.WithLock([&] {
      const auto next = NextListener(last, notification.source);
      more = next.has_value();
      if (!more) return Client{};
      last = *next;
      return m_Clients.at(last);
    });
    if (listener.callback) {
      WLAN_NOTIFICATION_DATA data;
      data.NotificationSource = notification.source;
      data.NotificationCode = notification.code;
      data.InterfaceGuid = notification.adapter;
      data.dwDataSize = static_cast<DWORD>(notification.data.size());
      data.pData = notification.data.empty() ? nullptr : notification.data.data();
      listener.callback(&data, listener.context);
    }
    m_Threads.LeaveCriticalSection(&m_CallbackLock);
  }
}

}  // namespace corvane::platform::sim
