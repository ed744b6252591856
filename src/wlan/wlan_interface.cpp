#include "wlan/wlan_interface.h"

#include "foundation/log_lines.h"
#include "monitors/utils.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"
#include "wlan/connection_name.h"
#include "wlan/wlan_client.h"

namespace corvane {

namespace {

constexpr std::uint32_t kNoOsIndex = 0xFFFFFFFF;

// 802.11ax by the maker's wording: the capability list of early drivers does not tell it.
bool TellsOfHE(WStringView description) {
  const WString text = ToLower(description);
  const auto holds = [&text](WStringView word) { return text.find(word) != WString::npos; };
  return holds(u"ax") && (holds(u"vantor") || holds(u"intel"));
}

}  // namespace

CWlanInterface::CWlanInterface() : SmartObjEx("interface", LockRank::kInterface) {
  for (auto& phy : m_RadioState.PhyRadioState) phy.dwPhyIndex = static_cast<platform::DWORD>(-1);
}

CWlanInterface::~CWlanInterface() = default;

void CWlanInterface::Initialize(CWlanClient* client, const platform::WLAN_INTERFACE_INFO& info) {
  {
    const CCritSecLock lock(m_StateLock);
    m_pClient = client;
  }
  m_Info = info;
  m_GuidText = GuidText(info.InterfaceGuid);
  m_bPresent = true;
  m_Operation.Initialize();
  m_ConnectionKeyPath = ConnectionKeyPath(m_GuidText);
  m_ConnectionName = ReadConnectionName(m_ConnectionKeyPath);
  m_OsIfIndex = CUtils::GetIfIndexFromGUIDStr(m_GuidText);
  CUtils::GetDescriptionForIfIndex(m_OsIfIndex, &m_Description);

  auto& global = CGlobalConfigContainer::GetInstance();
  m_ConfigIdx = global.AddIFConfig(m_GuidText, m_ConnectionName, m_Description);
  m_pConfig = global.GetIFConfig(m_ConfigIdx);
  if (m_OsIfIndex != kNoOsIndex) {
    m_pInterfacePDH.CreateObject()->Initialize(
        m_OsIfIndex, m_ConfigIdx, m_pConfig->m_rate_gate_high, m_pConfig->m_rate_gate_low);
  }
  m_pConfig->SetString(u"AdapterGuid", m_GuidText);
  m_pConfig->SetString(u"AdapterName", m_ConnectionName);
  if (CUtils::GetMacStrForIfIndex(m_OsIfIndex, &m_MacText)) {
    m_pConfig->SetString(value::kAdapterMac, m_MacText);
  }
  if (!m_Description.empty()) m_pConfig->SetString(value::kAdapterDescription, m_Description);
  m_pConfig->m_bHECapable = TellsOfHE(m_Description);
  m_pConfig->SetDWORD(u"Wifi6", m_pConfig->m_bHECapable);
  EnumerateALLAPProfiles();
}

void CWlanInterface::UpdateInfo(const platform::WLAN_INTERFACE_INFO& info) { m_Info = info; }

// The configuration stays: a thread that still holds the adapter may ask it for settings.
void CWlanInterface::Detach() {
  CSmartPointer<CWlanClient> client;  // dropped outside the lock
  {
    const CCritSecLock lock(m_StateLock);
    m_pClient.Swap(client);
  }
  ForgetIPInfo();
  m_Operation.SignalExit();
}

CSmartPointer<CWlanClient> CWlanInterface::Client() const {
  const CCritSecLock lock(m_StateLock);
  return m_pClient;
}

bool CWlanInterface::IsHECapable() const { return m_pConfig && m_pConfig->m_bHECapable; }

CSmartPointer<CQUAYInterfaceConfig> CWlanInterface::Config() const {
  if (!m_pConfig) throw Exception("CWlanInterface::Config: no configuration");
  return m_pConfig;
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
