#pragma once
// Who an adapter is, and what every part of it needs for a call of the platform and a line of the
// log.

#include <cstdint>

#include "platform/wlan_types.h"
#include "settings/interface_config.h"

namespace corvane {

class CWlanClient;

// Keeps the client for the length of one call of the platform.
class ClientHold {
 public:
  explicit ClientHold(CSmartPointer<CWlanClient> client);
  ~ClientHold();
  explicit operator bool() const { return static_cast<bool>(m_pClient); }
  platform::HANDLE Handle() const;  // null without a client

 private:
  const CSmartPointer<CWlanClient> m_pClient;
};

// Fixed once Initialize has run, so it is read without a lock; but the client, which Detach takes
// away on the main thread, has a lock of its own.
class AdapterIdentity {
 public:
  AdapterIdentity();
  ~AdapterIdentity();

  // Reads names and indices and takes the adapter's configuration; throws Exception.
  void Initialize(CWlanClient* client, const platform::WLAN_INTERFACE_INFO& info);
  void Publish();  // writes who it is into its configuration's key
  // The platform's record anew, while no worker runs; it is of the same adapter.
  void Update(const platform::WLAN_INTERFACE_INFO& info) { m_Info = info; }
  void Detach();

  int Idx() const { return m_ConfigIdx; }
  const platform::GUID& Guid() const { return m_Info.InterfaceGuid; }
  const WString& GuidText() const { return m_GuidText; }
  const WString& ConnectionName() const { return m_ConnectionName; }
  const WString& Description() const { return m_Description; }
  const WString& MacText() const { return m_MacText; }
  std::uint32_t OsIfIndex() const { return m_OsIfIndex; }
  bool HasOsIfIndex() const { return m_OsIfIndex != kNoOsIfIndex; }
  bool IsHECapable() const { return m_pConfig && m_pConfig->m_bHECapable; }

  // It stays after Detach: a thread that still holds the adapter may ask it for settings. Throws
  // Exception before Initialize.
  CSmartPointer<CQUAYInterfaceConfig> Config() const;
  ClientHold Client() const;  // none after Detach

 private:
  static constexpr std::uint32_t kNoOsIfIndex = 0xFFFFFFFF;

  mutable CCritSec m_ClientLock{"adapter client", LockRank::kLeaf};
  CSmartPointer<CWlanClient> m_pClient;  // under m_ClientLock
  CSmartPointer<CQUAYInterfaceConfig> m_pConfig;
  platform::WLAN_INTERFACE_INFO m_Info;
  WString m_GuidText;
  std::uint32_t m_OsIfIndex = kNoOsIfIndex;
  WString m_MacText;
  WString m_Description;
  int m_ConfigIdx = -1;
  WString m_ConnectionKeyPath;
  WString m_ConnectionName;
};

}  // namespace corvane
