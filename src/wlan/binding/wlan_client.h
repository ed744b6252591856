#pragma once
#include <array>
#include <atomic>
#include <cstdint>
#include <map>

#include "core/foundation/smart_obj.h"
#include "platform/wlan_types.h"
#include "wlan/binding/wlan_interface.h"

namespace corvane {

// Owns the platform handle, the notification registration and the adapters. Enumerations run on the
// main thread while no worker runs.
class CWlanClient : public SmartObjEx<CWlanClient, SmartObj<>> {
 public:
  CWlanClient();  // opens and registers; throws Exception
  ~CWlanClient() override;
  const char* GetClassName() const override { return "CWlanClient"; }

  void Shutdown();
  void EnumerateInterfaces();  // throws Exception
  bool CheckForChangeInInterfaceCount();
  void PublishAdapters();
  platform::HANDLE GetHandle() const { return m_hClient; }

  CSmartPointer<CWlanInterface> GetInterfaceByGuid(const platform::GUID& guid);  // null: none
  CSmartPointer<CWlanInterface> GetInterfaceByIndex(std::size_t position);       // in GUID order
  std::size_t GetCount();

 private:
  using GuidKey = std::array<std::uint8_t, 16>;  // compared as bytes
  using InterfaceMap = std::map<GuidKey, CSmartPointer<CWlanInterface>>;
  static void OnNotification(platform::WLAN_NOTIFICATION_DATA* data, void* context);

  CCritSec m_MapLock{"adapters", LockRank::kLeaf};
  bool m_bRegistered = false;
  platform::HANDLE m_hClient = nullptr;
  InterfaceMap m_Interfaces;
  InterfaceMap m_RemovedInterfaces;
  std::uint32_t m_InterfaceCount = 0;
};

}  // namespace corvane
