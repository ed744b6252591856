#include "wlan/wlan_client.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "foundation/guarded.h"
#include "foundation/ignored.h"
#include "foundation/log_lines.h"
#include "platform/platform.h"
#include "platform/wlan_api.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"
#include "wlan/connection_name.h"
#include "wlan/notification_dispatch.h"
#include "wlan/wlan_buffer.h"
#include "wlan/wlan_call.h"
#include "wlan/wlan_limits.h"

namespace corvane {

namespace {

using namespace platform;

constexpr DWORD kClientVersion = 2;
constexpr int kTableRows = 10;

template <typename Call>
DWORD CodeOf(const char* operation, Call&& call) {
  return CodeOfCall("CWlanClient", operation, std::forward<Call>(call));
}

// The platform's list of adapters; a count that cannot be is a failed call.
DWORD ListAdapters(HANDLE client, WlanBuffer<WLAN_INTERFACE_INFO_LIST>* list) {
  const DWORD result = CodeOf("WlanEnumInterfaces", [&] {
    return Os().wlan.WlanEnumInterfaces(client, nullptr, list->Out());
  });
  if (result != ERROR_SUCCESS || !*list) return result;
  return (*list)->dwNumberOfItems > kMaxAdapters ? ERROR_INVALID_DATA : ERROR_SUCCESS;
}

struct ListedAdapter {
  WString name;
  const WLAN_INTERFACE_INFO* info = nullptr;
};

// By connection name, which keeps the adapter indices stable from one start to the next.
std::vector<ListedAdapter> SortedByName(const WLAN_INTERFACE_INFO_LIST& list) {
  std::vector<ListedAdapter> adapters;
  adapters.reserve(list.dwNumberOfItems);
  for (DWORD i = 0; i < list.dwNumberOfItems; ++i) {
    const WLAN_INTERFACE_INFO& info = list.InterfaceInfo[i];
    adapters.push_back(
        {ReadConnectionName(ConnectionKeyPath(GuidText(info.InterfaceGuid))), &info});
  }
  std::stable_sort(adapters.begin(), adapters.end(),
                   [](const ListedAdapter& a, const ListedAdapter& b) { return a.name < b.name; });
  return adapters;
}

}  // namespace

CWlanClient::CWlanClient() : SmartObjEx("WLAN client") {
  DWORD negotiated = 0;
  HANDLE handle = nullptr;
  const DWORD result = CodeOf("WlanOpenHandle", [&] {
    return Os().wlan.WlanOpenHandle(kClientVersion, nullptr, &negotiated, &handle);
  });
  if (result != ERROR_SUCCESS) {
    LOG_ERROR(u"CWlanClient::CWlanClient:[this=0x%p] WlanOpenHandle() failed - %lu", this, result);
    throw Exception("WlanOpenHandle() failed: %i", result);
  }
  m_hClient = handle;
  Register();
}

CWlanClient::~CWlanClient() { Shutdown(); }

void CWlanClient::Register() {
  DWORD previous = 0;
  const DWORD result = CodeOf("WlanRegisterNotification", [&] {
    return Os().wlan.WlanRegisterNotification(m_hClient, WLAN_NOTIFICATION_SOURCE_ALL, FALSE,
                                              &CWlanClient::OnNotification, this, nullptr,
                                              &previous);
  });
  if (result == ERROR_SUCCESS) {
    m_bRegistered = true;
    return;
  }
  const HANDLE handle = m_hClient;
  Shutdown();
  LOG_ERROR(
      u"CWlanClient::CWlanClient:[this=0x%p][m_hClient=0x%p] WlanRegisterNotification() failed - "
      u"%lu",
      this, handle, result);
  throw Exception("WlanRegisterNotification() failed: %i", result);
}

void CWlanClient::Shutdown() {
  InterfaceMap present, removed;
  {
    const CCritSecLock lock(m_MapLock);
    present.swap(m_Interfaces);
    removed.swap(m_RemovedInterfaces);
  }
  for (const auto& [guid, adapter] : present) adapter->Detach();
  for (const auto& [guid, adapter] : removed) adapter->Detach();
  present.clear();
  removed.clear();

  if (std::exchange(m_bRegistered, false)) {
    DWORD previous = 0;
    const DWORD result = CodeOf("WlanRegisterNotification", [&] {
      return Os().wlan.WlanRegisterNotification(m_hClient, WLAN_NOTIFICATION_SOURCE_NONE, FALSE,
                                                nullptr, nullptr, nullptr, &previous);
    });
    if (result != ERROR_SUCCESS) {
      LOG_ERROR(
          u"CWlanClient::Shutdown(): WlanRegisterNotification(WLAN_NOTIFICATION_SOURCE_NONE) "
          u"failed - %lu",
          result);
    }
  }
  const HANDLE handle = m_hClient.exchange(nullptr);
  if (handle) CodeOf("WlanCloseHandle", [&] { return Os().wlan.WlanCloseHandle(handle, nullptr); });
}

CWlanClient::GuidKey CWlanClient::KeyOf(const GUID& guid) {
  GuidKey key;
  static_assert(sizeof(key) == sizeof(guid));
  std::memcpy(key.data(), &guid, sizeof(guid));
  return key;
}

void CWlanClient::EnumerateInterfaces() {
  WlanBuffer<WLAN_INTERFACE_INFO_LIST> list;
  const DWORD result = ListAdapters(m_hClient, &list);
  if (result != ERROR_SUCCESS) {
    LOG_ERROR(
        u"CWlanClient::EnumerateInterfaces:[this=0x%p][m_hClient=0x%p] WlanEnumInterfaces() failed "
        u"- %lu",
        this, GetHandle(), result);
    throw Exception("WlanEnumInterfaces() failed: %i", result);
  }
  if (!list) return;
  m_InterfaceCount = list->dwNumberOfItems;

  const std::vector<ListedAdapter> adapters = SortedByName(*list.get());
  for (const auto& [guid, adapter] : m_Interfaces) adapter->m_bPresent = false;
  for (const ListedAdapter& adapter : adapters) {
    LOG_DEBUG(DBG(22),
              u"CWlanClient::EnumerateInterfaces:[this=0x%p][m_hClient=0x%p] [total=%lu] FOUND "
              u"Adapter [%s]",
              this, GetHandle(), m_InterfaceCount, adapter.name);
    TakeIn(*adapter.info);
  }
  RetireAbsent();
}

void CWlanClient::TakeIn(const WLAN_INTERFACE_INFO& info) {
  if (const auto known = GetInterfaceByGuid(info.InterfaceGuid)) {
    known->UpdateInfo(info);
    known->m_bPresent = true;
    return;
  }
  auto adapter = CWlanInterface::CreateObject();
  adapter->Initialize(this, info);
  const CCritSecLock lock(m_MapLock);
  m_Interfaces[KeyOf(info.InterfaceGuid)] = std::move(adapter);
}

void CWlanClient::RetireAbsent() {
  InterfaceMap replaced;  // dropped outside the lock
  const CCritSecLock lock(m_MapLock);
  for (auto at = m_Interfaces.begin(); at != m_Interfaces.end();) {
    if (at->second->m_bPresent) {
      ++at;
      continue;
    }
    auto& place = m_RemovedInterfaces[at->first];
    replaced[at->first] = place;
    place = std::move(at->second);
    at = m_Interfaces.erase(at);
  }
}

bool CWlanClient::CheckForChangeInInterfaceCount() {
  const auto check = [this] {
    WlanBuffer<WLAN_INTERFACE_INFO_LIST> list;
    const DWORD result = ListAdapters(m_hClient, &list);
    if (result != ERROR_SUCCESS) throw Exception("WlanEnumInterfaces() failed: %i", result);
    return (list ? list->dwNumberOfItems : 0) != m_InterfaceCount;
  };
  return Contained(check, [this](const Failure& failure) {
    LOG_ERROR(u"CWlanClient::CheckForChangeInInterfaceCount:[this=0x%p][m_hClient=0x%p] %S: %S",
              this, GetHandle(), failure.Kind(), failure.what);
    return false;
  });
}

void CWlanClient::PublishAdapters() {
  const auto registry = CGlobalConfigContainer::GetInstance().GetRegistry();
  if (!registry) return;
  for (int row = 0; row < kTableRows; ++row) {
    WString guid;
    const WString name = Format(u"%i", row);
    if (registry->GetRegistryStringValue(name, &guid) && !guid.empty()) {
      Ignored(registry->SetAdapterEnabled(guid, 0));
    }
  }
  for (int row = 0; row < kTableRows; ++row)
    Ignored(registry->DeleteRegistryValue(Format(u"%i", row)));

  std::vector<CSmartPointer<CWlanInterface>> adapters;
  {
    const CCritSecLock lock(m_MapLock);
    for (const auto& [guid, adapter] : m_Interfaces) adapters.push_back(adapter);
  }
  std::uint32_t written = 0;
  for (const auto& adapter : adapters) {
    Ignored(registry->SetRegistryStringValue(Format(u"%i", adapter->GetConfigIdx()),
                                             adapter->GetGuidText()));
    Ignored(registry->SetAdapterEnabled(adapter->GetGuidText(), 1));
    ++written;
  }
  Ignored(registry->SetRegistryDWORDValue(value::kNumWifiAdapters, written));
}

CSmartPointer<CWlanInterface> CWlanClient::GetInterfaceByGuid(const GUID& guid) {
  const CCritSecLock lock(m_MapLock);
  const auto at = m_Interfaces.find(KeyOf(guid));
  return at == m_Interfaces.end() ? nullptr : at->second;
}

CSmartPointer<CWlanInterface> CWlanClient::GetInterfaceByIndex(std::size_t position) {
  const CCritSecLock lock(m_MapLock);
  if (position >= m_Interfaces.size()) return nullptr;
  return std::next(m_Interfaces.begin(), static_cast<std::ptrdiff_t>(position))->second;
}

std::size_t CWlanClient::GetCount() {
  const CCritSecLock lock(m_MapLock);
  return m_Interfaces.size();
}

void CWlanClient::OnNotification(WLAN_NOTIFICATION_DATA* data, void* context) {
  if (!data || !context) return;
  try {
    const auto adapter =
        static_cast<CWlanClient*>(context)->GetInterfaceByGuid(data->InterfaceGuid);
    if (adapter) DispatchNotification(*data, *adapter);
  } catch (const std::exception&) {
    // The log of a handler's own failure failed, too. Nothing may leave into the platform's thread.
  }
}

}  // namespace corvane
