#include "wlan/adapter_link.h"

#include "foundation/log_lines.h"
#include "monitors/adapters_addresses.h"
#include "monitors/network_list_manager.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/session_api.h"
#include "score/network_facts.h"
#include "wlan/wlan_queries.h"

namespace corvane {

namespace {

// The lists as one text, for the log.
template <class List, class TextOf>
WString Joined(const List& list, TextOf&& textOf) {
  WString text;
  for (const auto& item : list) {
    if (!text.empty()) text += u", ";
    text += textOf(item);
  }
  return text;
}

// May ask the network. The domain is the suffix up to its first dot.
WString DomainControllerOf(const WString& dnsSuffix) {
  WString controller;
  if (dnsSuffix.empty()) return controller;
  const WString domain = dnsSuffix.substr(0, dnsSuffix.find(u'.'));
  if (Os().session.NetGetDCName(nullptr, domain.c_str(), &controller) != platform::ERROR_SUCCESS)
    controller.clear();
  return controller;
}

}  // namespace

LinkState AdapterLink::Get() const {
  const CCritSecLock lock(m_Lock);
  LinkState state = m_State;
  if (m_bLastSsidForgotten) state.m_last_connected_ssid.clear();
  return state;
}

void AdapterLink::QueryCurrentConnection(platform::WLAN_CONNECTION_ATTRIBUTES* attrs, bool copy) {
  try {
    QueryConnection(m_Adapter, attrs);
  } catch (const Exception&) {
    if (copy) ClearConnected();
    throw;
  }
  m_bIsConnected = true;
  if (copy) {
    const CCritSecLock lock(m_Lock);
    m_State.m_ConnAttrs = *attrs;
  }
  const std::uint32_t quality = attrs->wlanAssociationAttributes.wlanSignalQuality;
  if (quality > m_MaxSignalQuality) m_MaxSignalQuality = quality;
}

bool AdapterLink::GetConnectedSSID(ConnectionFacts* facts) {
  *facts = {};
  try {
    platform::WLAN_CONNECTION_ATTRIBUTES attrs;
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

std::uint32_t AdapterLink::QueryChannel() {
  m_CurrentChannel = QueryNumber(m_Adapter, platform::wlan_intf_opcode_channel_number);
  return m_CurrentChannel;
}

void AdapterLink::ClearConnected() {
  m_bIsConnected = false;
  m_MaxSignalQuality = 0;
}

platform::WLAN_CONNECTION_ATTRIBUTES AdapterLink::ConnAttrs() const {
  const CCritSecLock lock(m_Lock);
  return m_State.m_ConnAttrs;
}

LinkSeen AdapterLink::Seen() const {
  const CCritSecLock lock(m_Lock);
  return {m_bIsConnected, m_State.m_connected_dot11Bssid,
          m_State.m_ConnAttrs.wlanAssociationAttributes.wlanSignalQuality};
}

MacAddress AdapterLink::ConnectedBssid() const {
  const CCritSecLock lock(m_Lock);
  return m_State.m_connected_dot11Bssid;
}

bool AdapterLink::SetConnectedBssid(const MacAddress& bssid) {
  const CCritSecLock lock(m_Lock);
  MacAddress& known = m_State.m_connected_dot11Bssid;
  const bool changed = !IsZero(known) && known != bssid;
  known = bssid;
  return changed;
}

void AdapterLink::ClearConnectedBssid() {
  {
    const CCritSecLock lock(m_Lock);
    m_State.m_connected_dot11Bssid = {};
  }
  ForgetIPInfo();
}

MacAddress AdapterLink::OwnBssid() const {
  const CCritSecLock lock(m_Lock);
  return m_State.m_connected_dot11Bssid_if_we_initiated;
}

void AdapterLink::SetOwnBssid(const MacAddress& bssid) {
  const CCritSecLock lock(m_Lock);
  m_State.m_connected_dot11Bssid_if_we_initiated = bssid;
}

WString AdapterLink::LastConnectedSsid() const {
  const CCritSecLock lock(m_Lock);
  return m_bLastSsidForgotten ? WString() : m_State.m_last_connected_ssid;
}

bool AdapterLink::SetLastConnectedSsid(WStringView ssid) {
  const CCritSecLock lock(m_Lock);
  if (m_bLastSsidForgotten.exchange(false)) m_State.m_last_connected_ssid.clear();
  if (m_State.m_last_connected_ssid == ssid) return false;
  m_State.m_last_connected_ssid = ssid;
  return true;
}

void AdapterLink::StampLastConnectedSsid() {
  m_time_of_last_connected_ssid = Os().clock.GetTickCount64();
}

std::uint64_t AdapterLink::DisconnectedAgeMs() const {
  const std::uint64_t since = m_disconnected_tick;
  return since == 0 ? 0 : Os().clock.GetTickCount64() - since;
}

void AdapterLink::SetDisconnectedTick(bool disconnected) {
  if (!disconnected) {
    m_disconnected_tick = 0;
  } else if (m_disconnected_tick == 0) {
    m_disconnected_tick = Os().clock.GetTickCount64();
  }
}

bool AdapterLink::RefreshIPInfo() {
  ForgetIPInfo();
  IPInfo info;
  try {
    const auto snapshot = CAdaptersAddresses::CreateObject();
    snapshot->Initialize();
    snapshot->GetIPAddressesForInterface(m_Adapter.Guid(), &info.ip4, &info.ip6, &info.dnsSuffix);
    snapshot->GetIPGatewaysForInterface(m_Adapter.Guid(), &info.ip4Gateways, &info.ip6Gateways);
  } catch (const Exception& e) {
    LOG_ERROR(u"[%i] CWlanInterface::RefreshIPInfo: Exception: %S", m_Adapter.Idx(), e.what());
    return false;
  }
  info.domainController = DomainControllerOf(info.dnsSuffix);
  std::vector<MacValue> macs4, macs6;
  CAdaptersAddresses::GetMacForIP4(info.ip4Gateways, &macs4);
  CAdaptersAddresses::GetMacForIP6(info.ip6Gateways, &macs6);
  info.ip4GatewayMacs = MacsFromValues(macs4);
  info.ip6GatewayMacs = MacsFromValues(macs6);
  {
    const CCritSecLock lock(m_Lock);
    m_State.m_IPInfo = std::move(info);
  }
  if (const log::Open open(DBG(40)); open) DumpIPAddresses();
  return true;
}

void AdapterLink::ForgetIPInfo() {
  IPInfo dropped;
  const CCritSecLock lock(m_Lock);
  std::swap(m_State.m_IPInfo, dropped);
}

IPInfo AdapterLink::Addresses() const {
  const CCritSecLock lock(m_Lock);
  return m_State.m_IPInfo;
}

void AdapterLink::DumpIPAddresses() const {
  const IPInfo info = Addresses();
  const auto macText = [](const MacAddress& mac) { return MacText(mac); };
  LOG_INFO(
      u"[%i] DNS suffix: %s, domain controller: %s, IPv4: %s, IPv6: %s, gateways IPv4: %s [%s], "
      u"gateways IPv6: %s [%s]\n",
      m_Adapter.Idx(), info.dnsSuffix, info.domainController, Joined(info.ip4, Ip4Text),
      Joined(info.ip6, Ip6Text), Joined(info.ip4Gateways, Ip4Text),
      Joined(info.ip4GatewayMacs, macText), Joined(info.ip6Gateways, Ip6Text),
      Joined(info.ip6GatewayMacs, macText));
}

bool AdapterLink::HasGatewayMacs() const {
  const CCritSecLock lock(m_Lock);
  return m_State.m_IPInfo.HasGatewayMacs();
}

bool AdapterLink::IsConnectedToPrivateNetwork() const {
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
