// What the platform knows of an adapter, asked call by call; and look-ups in the model.

#include <algorithm>
#include <cstring>

#include "foundation/log_lines.h"
#include "monitors/network_list_manager.h"
#include "platform/platform.h"
#include "platform/wlan_api.h"
#include "wlan/wlan_buffer.h"
#include "wlan/wlan_call.h"
#include "wlan/wlan_interface.h"

namespace corvane {

namespace {

using namespace platform;

constexpr std::uint64_t kAdapterLog = DBG(0);
constexpr std::int32_t kCategoryPrivate = 1;
constexpr DWORD kMaxPhys = 64;
static_assert(std::size(decltype(WLAN_INTERFACE_CAPABILITY::dot11PhyTypes){}) == kMaxPhys);
static_assert(std::size(decltype(WLAN_RADIO_STATE::PhyRadioState){}) == kMaxPhys);

WString PhyText(LONG type) {
  switch (type) {
    case dot11_phy_type_unknown:
      return u"(UNKNOWN)";
    case dot11_phy_type_fhss:
      return u"(FHSS)";
    case dot11_phy_type_dsss:
      return u"(DSSS)";
    case dot11_phy_type_irbaseband:
      return u"(IR)";
    case dot11_phy_type_ofdm:
      return u"(OFDM)";
    case dot11_phy_type_hrdsss:
      return u"(HRDSS)";
    case dot11_phy_type_erp:
      return u"(ERP)";
    case dot11_phy_type_ht:
      return u"(HT)";
    case dot11_phy_type_vht:
      return u"(VHT)";
    case dot11_phy_type_he:
      return u"(HE)";
    default:
      return Format(u"(IHV - 0x%08x)", type);
  }
}

}  // namespace

void CWlanInterface::DetermineInterfaceCapability() {
  WlanInterfaceCapability();
  const DWORD count = std::min(m_Capability.dwNumberOfSupportedPhys, kMaxPhys);
  LOG_ADAPTER(m_Adapter.Idx(), kAdapterLog,
              u"[%i] CWlanInterface::DetermineInterfaceCapability: interfaceType = %i, "
              u"dwNumberOfSupportedPhys = %lu",
              m_Adapter.Idx(), m_Capability.interfaceType, m_Capability.dwNumberOfSupportedPhys);
  for (DWORD i = 0; i < count; ++i) NotePhy(i, m_Capability.dot11PhyTypes[i]);
  if (!std::exchange(m_bHighestPhyPending, false)) return;
  m_Adapter.Config()->SetString(u"AdapterHighestPHYClass", AdapterClassText());
}

void CWlanInterface::WlanInterfaceCapability() {
  const auto client = m_Adapter.Client();
  WlanBuffer<WLAN_INTERFACE_CAPABILITY> capability;
  DWORD result = CodeOfCall("CWlanInterface", "WlanGetInterfaceCapability", [&] {
    return Os().wlan.WlanGetInterfaceCapability(client.Handle(), &m_Adapter.Guid(), nullptr,
                                                capability.Out());
  });
  if (result == ERROR_SUCCESS && !capability) result = ERROR_GEN_FAILURE;
  if (result == ERROR_SUCCESS) {
    m_Capability = *capability.get();
    return;
  }
  LOG_ERROR(
      u"[%i] CWlanInterface::WlanInterfaceCapability: WlanGetInterfaceCapability failed - "
      u"rc=%lu%s\n",
      m_Adapter.Idx(), result,
      result == ERROR_NOT_FOUND ? u" [ERROR_NOT_FOUND - adapter removed?]" : u"");
  throw Exception("WlanGetInterfaceCapability() failed: %i", result);
}

void CWlanInterface::NotePhy(std::uint32_t position, std::int32_t type) {
  struct Row {
    LONG type;
    std::atomic<std::int32_t>* index;
    const char16_t* name;
  };
  const Row rows[] = {
      {dot11_phy_type_he, &m_HE_PhyIdx, u"m_HE_PhyIdx"},
      {dot11_phy_type_vht, &m_VHT_PhyIdx, u"m_VHT_PhyIdx"},
      {dot11_phy_type_ht, &m_HT_PhyIdx, u"m_HT_PhyIdx"},
      {dot11_phy_type_erp, &m_G_PhyIdx, u"m_G_PhyIdx"},
      {dot11_phy_type_hrdsss, &m_B_PhyIdx, u"m_B_PhyIdx"},
      {dot11_phy_type_ofdm, &m_A_PhyIdx, u"m_A_PhyIdx"},
  };
  const auto row = std::find_if(std::begin(rows), std::end(rows),
                                [type](const Row& candidate) { return candidate.type == type; });
  if (row == std::end(rows)) {
    LOG_ADAPTER(m_Adapter.Idx(), kAdapterLog, u"[%i] dot11PhyTypes[%u] = %i %s", m_Adapter.Idx(),
                position, type, PhyText(type));
    return;
  }
  *row->index = static_cast<std::int32_t>(position);
  LOG_ADAPTER(m_Adapter.Idx(), kAdapterLog, u"[%i] dot11PhyTypes[%u] = %i %s, SET %s",
              m_Adapter.Idx(), position, type, PhyText(type), row->name);
}

WStringView CWlanInterface::AdapterClassText() const {
  if (m_HE_PhyIdx >= 0) return u"ax";
  if (m_VHT_PhyIdx >= 0) return u"ac";
  if (m_HT_PhyIdx >= 0) return u"n";
  if (m_G_PhyIdx >= 0) return u"g";
  if (m_B_PhyIdx >= 0) return u"b";
  if (m_A_PhyIdx >= 0) return u"a";
  return u"802.11";
}

DWORD CWlanInterface::Query(std::int32_t opcode, DWORD* size, void** data) {
  constexpr LONG kValueType = 3;
  LONG valueType = kValueType;
  const auto client = m_Adapter.Client();
  try {
    return Os().wlan.WlanQueryInterface(client.Handle(), &m_Adapter.Guid(), opcode, nullptr, size,
                                        data, &valueType);
  } catch (const PlatformFault& fault) {
    LOG_ERROR(
        u"[%i]CWlanInterface::QueryWlanInterface_ForStructType: WlanQueryInterface(opcode=%lu): "
        u"EXCEPTION: "
        u"0x%08x",
        m_Adapter.Idx(), opcode, fault.code);
    throw Exception("WlanQueryInterface(opcode=%lu) - EXCEPTION: %i", opcode, fault.code);
  }
}

std::uint32_t CWlanInterface::QueryWlanInterface_ForInt(std::int32_t opcode) {
  DWORD size = 0;
  WlanBuffer<void> data;
  const DWORD result = Query(opcode, &size, data.Out());
  if (result != ERROR_SUCCESS) {
    LOG_ERROR(
        u"[%i] CWlanInterface::QueryWlanInterface_ForInt: WlanQueryInterface(opCode=%i) failed - "
        u"rc=%lu\n",
        m_Adapter.Idx(), opcode, result);
    throw Exception("WlanQueryInterface(%d) failed: %i", opcode, result);
  }
  std::uint32_t number = 0;
  if (size < sizeof(number) || !data) {
    LOG_ERROR(u"[%i] CWlanInterface::QueryWlanInterface_ForInt: dwDataSize < %lu\n",
              m_Adapter.Idx(), sizeof(number));
    throw Exception("WlanQueryInterface(%d) dwDataSize < %i", opcode, sizeof(number));
  }
  std::memcpy(&number, data.get(), sizeof(number));
  return number;
}

std::int32_t CWlanInterface::GetInterfaceState() {
  return static_cast<std::int32_t>(QueryWlanInterface_ForInt(wlan_intf_opcode_interface_state));
}

std::int32_t CWlanInterface::GetInterfaceStateForLog() {
  try {
    return GetInterfaceState();
  } catch (const std::exception&) {
    return -1;
  }
}

std::uint32_t CWlanInterface::QueryChannel() {
  m_CurrentChannel = QueryWlanInterface_ForInt(wlan_intf_opcode_channel_number);
  return m_CurrentChannel;
}

template <typename T>
void CWlanInterface::QueryStruct(std::int32_t opcode, T* out) {
  DWORD size = 0;
  WlanBuffer<void> data;
  const DWORD result = Query(opcode, &size, data.Out());
  const bool ofConnection = opcode == wlan_intf_opcode_current_connection;
  if (result != ERROR_SUCCESS) {
    // A disconnected adapter answers its connection query so: no failure worth a line.
    if (!ofConnection || result != ERROR_INVALID_STATE) {
      LOG_ERROR(
          u"[%i] CWlanInterface::QueryWlanInterface_ForStructType: WlanQueryInterface(opCode=%i) "
          u"failed - "
          u"rc=%lu\n",
          m_Adapter.Idx(), opcode, result);
    }
    if (ofConnection) {
      throw Exception("WlanQueryInterface(...wlan_intf_opcode_current_connection...) failed: %i",
                      result);
    }
    throw Exception("WlanQueryInterface(%lu) failed: %i", opcode, result);
  }
  if (size < sizeof(T) || !data) {
    LOG_ERROR(u"[%i] CWlanInterface::CurrentConnection(opCode=%i): dwDataSize < %lu\n",
              m_Adapter.Idx(), opcode, sizeof(T));
    throw Exception("WlanQueryInterface(%lu) dwDataSize < %lu", opcode, sizeof(T));
  }
  std::memcpy(out, data.get(), sizeof(T));
}

void CWlanInterface::QueryRadioState(WLAN_RADIO_STATE* state) {
  QueryStruct(wlan_intf_opcode_radio_state, state);
}

void CWlanInterface::CurrentConnection(WLAN_CONNECTION_ATTRIBUTES* attrs) {
  QueryStruct(wlan_intf_opcode_current_connection, attrs);
}

void CWlanInterface::QueryCurrentConnection(WLAN_CONNECTION_ATTRIBUTES* attrs, bool copy) {
  try {
    CurrentConnection(attrs);
  } catch (const Exception&) {
    if (copy) ClearConnected();
    throw;
  }
  m_bIsConnected = true;
  if (copy) {
    const CCritSecLock lock(m_StateLock);
    m_ConnAttrs = *attrs;
  }
  const std::uint32_t quality = attrs->wlanAssociationAttributes.wlanSignalQuality;
  if (quality > m_MaxSignalQuality) m_MaxSignalQuality = quality;
}

bool CWlanInterface::GetConnectedSSID(ConnectionFacts* facts) {
  *facts = {};
  try {
    WLAN_CONNECTION_ATTRIBUTES attrs;
    QueryCurrentConnection(&attrs, false);
    const auto& association = attrs.wlanAssociationAttributes;
    facts->ssid = SsidText(association.dot11Ssid);
    facts->rawSsid = association.dot11Ssid;
    facts->bssid = ToMac(association.dot11Bssid);
    facts->quality = association.wlanSignalQuality;
    facts->connected = true;
  } catch (const std::exception&) {
  }
  return facts->connected;
}

bool CWlanInterface::FindBssEntry(WStringView ssid, const MacAddress& bssid,
                                  CSmartPointer<CWlanBssEntry>* entry) {
  entry->reset();
  if (ssid.empty()) return false;
  const CCritSecLock lock(ObjectLock());
  const auto network = m_Networks.find(ssid);
  if (network == m_Networks.end()) return false;
  const auto found = network->second->m_BssMap.find(bssid);
  if (found == network->second->m_BssMap.end()) return false;
  *entry = found->second;
  return true;
}

std::int32_t CWlanInterface::BackupScore(WStringView ssid, const MacAddress& bssid) const {
  if (ssid.empty() || !m_bIsConnected) return -1;
  LOG_ADAPTER(m_Adapter.Idx(), DBG(37),
              u"[%i] CWlanInterface::GetScoreFromBssEntry: ____USING BACKUP SCORE____ %i, for %s "
              u"{%02x-%02x-%02x-%02x-%02x-%02x}]\n",
              m_Adapter.Idx(), m_backup_score.load(), ssid, bssid[0], bssid[1], bssid[2], bssid[3],
              bssid[4], bssid[5]);
  return m_backup_score;
}

std::int32_t CWlanInterface::GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid,
                                                  bool bUseBackup) {
  const CCritSecLock lock(ObjectLock());
  CSmartPointer<CWlanBssEntry> entry;
  if (FindBssEntry(ssid, bssid, &entry)) return entry->GetScore(false);
  return bUseBackup ? BackupScore(ssid, bssid) : -1;
}

std::int32_t CWlanInterface::GetScoreFromBssEntry(std::string* log, WStringView ssid,
                                                  const MacAddress& bssid) {
  const CCritSecLock lock(ObjectLock());
  CSmartPointer<CWlanBssEntry> entry;
  if (!FindBssEntry(ssid, bssid, &entry)) return BackupScore(ssid, bssid);
  *log = entry->m_ScoreLog + entry->m_FinalScoreLog;
  return entry->GetScore(false);
}

std::int32_t CWlanInterface::GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid,
                                                  WString* phy, std::int32_t* rssi) {
  *phy = u"802.11";
  const CCritSecLock lock(ObjectLock());
  CSmartPointer<CWlanBssEntry> entry;
  if (!FindBssEntry(ssid, bssid, &entry)) return BackupScore(ssid, bssid);
  *phy = entry->GetPhyMode();
  *rssi = entry->m_Bss.lRssi;
  return entry->GetScore(false);
}

bool CWlanInterface::IsRadioOff() const {
  const CCritSecLock lock(m_StateLock);
  const auto isOff = [this](std::int32_t index) {
    if (index < 0) return false;
    const auto& states = m_RadioState.PhyRadioState;
    return std::any_of(std::begin(states), std::end(states),
                       [index](const WLAN_PHY_RADIO_STATE& state) {
                         return state.dwPhyIndex == static_cast<DWORD>(index) &&
                                state.dot11SoftwareRadioState == dot11_radio_state_off;
                       });
  };
  return isOff(m_HT_PhyIdx) || isOff(m_VHT_PhyIdx);
}

void CWlanInterface::StoreRadioState(const WLAN_RADIO_STATE& state) {
  const CCritSecLock lock(m_StateLock);
  const DWORD count = std::min(state.dwNumberOfPhys, kMaxPhys);
  m_RadioState = state;
  m_RadioState.dwNumberOfPhys = count;
  for (DWORD i = count; i < std::size(m_RadioState.PhyRadioState); ++i) {
    m_RadioState.PhyRadioState[i] = {static_cast<DWORD>(-1), 0, 0};
  }
}

bool CWlanInterface::IsConnectedToNetworkWithBothBssids(const MacAddress& a, const MacAddress& b) {
  const CCritSecLock lock(ObjectLock());
  return std::any_of(m_Networks.begin(), m_Networks.end(), [&](const auto& item) {
    const auto& entries = item.second->m_BssMap;
    return entries.contains(a) && entries.contains(b);
  });
}

bool CWlanInterface::IsConnectedToPrivateNetwork() {
  std::list<NlmNetworkRecord> records;
  if (auto* const list = CNetworkListManager::Find())
    list->GetNetCatInfoForInterface(m_Adapter.Guid(), &records);
  for (const NlmNetworkRecord& record : records) {
    const bool isPrivate = record.cat == kCategoryPrivate;
    LOG_ADAPTER(
        m_Adapter.Idx(), DBG(1),
        u"[%i] CWlanInterface::IsConnectedToPrivateNetwork: FOUND %s: category=%i %s, Name=%s\n",
        m_Adapter.Idx(), isPrivate ? u"PRIVATE" : u"NON-PRIVATE", record.cat,
        NetworkCategoryName(record.cat), record.name);
    if (isPrivate) return true;
  }
  return false;
}

}  // namespace corvane
