#pragma once
#include <array>
#include <atomic>
#include <cstdint>
#include <map>

#include "foundation/smart_obj.h"
#include "platform/wlan_types.h"
#include "wlan/wlan_interface.h"

namespace corvane {

// Owns the platform handle, the notification registration and the adapters. Enumerations run on the
// main thread while no worker runs; look-ups come from every thread.
class CWlanClient : public SmartObjEx<CWlanClient, SmartObj<>> {
 public:
  CWlanClient();  // opens and registers; throws Exception with the platform's code
  ~CWlanClient() override;
  const char* GetClassName() const override { return "CWlanClient"; }

  // Detaches and drops all adapters, then closes the handle: from then on no notification comes.
  void Shutdown();
  // Brings the adapters up to date with the platform's list. Adapter indices go by the connection
  // names, positions by the GUIDs. Throws Exception with the platform's code.
  void EnumerateInterfaces();
  // Asks for the list again: whether its count is another one. A failure reads as no change.
  bool CheckForChangeInInterfaceCount();
  // Writes the adapter table that clients read, in the home key.
  void PublishAdapters();
  platform::HANDLE GetHandle() const { return m_hClient; }

  CSmartPointer<CWlanInterface> GetInterfaceByGuid(const platform::GUID& guid);  // null: none
  CSmartPointer<CWlanInterface> GetInterfaceByIndex(std::size_t position);       // in GUID order
  std::size_t GetCount();

 private:
  using GuidKey = std::array<std::uint8_t, 16>;  // compared as bytes
  using InterfaceMap = std::map<GuidKey, CSmartPointer<CWlanInterface>>;
  static GuidKey KeyOf(const platform::GUID& guid);
  static void OnNotification(platform::WLAN_NOTIFICATION_DATA* data, void* context);

  void Register();
  void TakeIn(const platform::WLAN_INTERFACE_INFO& info);
  void RetireAbsent();

  CCritSec m_MapLock{"adapters", LockRank::kLeaf};  // guards the two maps
  bool m_bRegistered = false;
  std::atomic<platform::HANDLE> m_hClient{nullptr};
  InterfaceMap m_Interfaces;
  // Adapters that went away, alive so that a thread that still holds one finds it intact.
  InterfaceMap m_RemovedInterfaces;
  std::uint32_t m_InterfaceCount = 0;  // of the platform's last list
};

}  // namespace corvane
