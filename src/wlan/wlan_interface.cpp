#include "wlan/wlan_interface.h"

#include "platform/clock_api.h"
#include "platform/platform.h"

namespace corvane {

CWlanInterface::CWlanInterface() : SmartObjEx("interface", LockRank::kInterface) {
  for (auto& phy : m_RadioState.PhyRadioState) phy.dwPhyIndex = static_cast<platform::DWORD>(-1);
}

CWlanInterface::~CWlanInterface() = default;

void CWlanInterface::Initialize(CWlanClient* client, const platform::WLAN_INTERFACE_INFO& info) {
  m_bPresent = true;
  m_Operation.Initialize();
  m_Adapter.Initialize(client, info);
  if (m_Adapter.HasOsIfIndex()) {
    const auto config = m_Adapter.Config();
    m_pInterfacePDH.CreateObject()->Initialize(m_Adapter.OsIfIndex(), m_Adapter.Idx(),
                                               config->m_rate_gate_high, config->m_rate_gate_low);
  }
  m_Adapter.Publish();
  EnumerateALLAPProfiles();
}

void CWlanInterface::Detach() {
  m_Adapter.Detach();
  ForgetIPInfo();
  m_Operation.SignalExit();
}

bool CWlanInterface::SetConnectedBssid(const MacAddress& bssid) {
  const CCritSecLock lock(m_StateLock);
  const bool changed = !IsZero(m_connected_dot11Bssid) && m_connected_dot11Bssid != bssid;
  m_connected_dot11Bssid = bssid;
  return changed;
}

void CWlanInterface::ClearConnectedBssid() {
  {
    const CCritSecLock lock(m_StateLock);
    m_connected_dot11Bssid = {};
  }
  ForgetIPInfo();
}

bool CWlanInterface::SetLastConnectedSsid(WStringView ssid) {
  const CCritSecLock lock(m_StateLock);
  if (m_bLastSsidForgotten.exchange(false)) m_last_connected_ssid.clear();
  if (m_last_connected_ssid == ssid) return false;
  m_last_connected_ssid = ssid;
  return true;
}

MacAddress CWlanInterface::GetConnectedBssid() const {
  const CCritSecLock lock(m_StateLock);
  return m_connected_dot11Bssid;
}

MacAddress CWlanInterface::GetConnectedBssidIfWeInitiated() const {
  const CCritSecLock lock(m_StateLock);
  return m_connected_dot11Bssid_if_we_initiated;
}

WString CWlanInterface::GetLastConnectedSsid() const {
  const CCritSecLock lock(m_StateLock);
  return m_bLastSsidForgotten ? WString() : m_last_connected_ssid;
}

platform::WLAN_CONNECTION_ATTRIBUTES CWlanInterface::GetConnAttrs() const {
  const CCritSecLock lock(m_StateLock);
  return m_ConnAttrs;
}

std::uint64_t CWlanInterface::GetDisconnectedAgeMs() const {
  const std::uint64_t since = m_disconnected_tick;
  return since == 0 ? 0 : Os().clock.GetTickCount64() - since;
}

void CWlanInterface::SetDisconnectedTick(bool disconnected) {
  if (!disconnected) {
    m_disconnected_tick = 0;
  } else if (m_disconnected_tick == 0) {
    m_disconnected_tick = Os().clock.GetTickCount64();
  }
}

void CWlanInterface::ClearConnected() {
  m_bIsConnected = false;
  m_MaxSignalQuality = 0;
}

double CWlanInterface::GetTrafficMbps() const {
  return m_pInterfacePDH ? m_pInterfacePDH->GetTxMbps() + m_pInterfacePDH->GetRxMbps() : 0.0;
}

BssEntryList CWlanInterface::SnapshotEntries() {
  BssEntryList entries;
  const CCritSecLock lock(ObjectLock());
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) entries.push_back(entry);
  }
  return entries;
}

void CWlanInterface::ClearNetworks() {
  NetworkMap dropped;  // outlives the lock
  const CCritSecLock lock(ObjectLock());
  dropped.swap(m_Networks);
}

}  // namespace corvane
