// The addresses, gateways and domain of an adapter's present connection.

#include "foundation/log_lines.h"
#include "monitors/adapters_addresses.h"
#include "platform/platform.h"
#include "platform/session_api.h"
#include "wlan/wlan_interface.h"

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

void CWlanInterface::RefreshIPInfo() {
  ForgetIPInfo();
  IPInfo info;
  try {
    const auto snapshot = CAdaptersAddresses::CreateObject();
    snapshot->Initialize();
    snapshot->GetIPAddressesForInterface(m_Adapter.Guid(), &info.ip4, &info.ip6, &info.dnsSuffix);
    snapshot->GetIPGatewaysForInterface(m_Adapter.Guid(), &info.ip4Gateways, &info.ip6Gateways);
  } catch (const Exception& e) {
    LOG_ERROR(u"[%i] CWlanInterface::RefreshIPInfo: Exception: %S", m_Adapter.Idx(), e.what());
    return;
  }
  info.domainController = DomainControllerOf(info.dnsSuffix);
  std::vector<MacValue> macs4, macs6;
  CAdaptersAddresses::GetMacForIP4(info.ip4Gateways, &macs4);
  CAdaptersAddresses::GetMacForIP6(info.ip6Gateways, &macs6);
  {
    const CCritSecLock lock(m_StateLock);
    m_IPInfo = std::move(info);
    m_IP4GatewayMacs = MacsFromValues(macs4);
    m_IP6GatewayMacs = MacsFromValues(macs6);
  }
  if (const log::Open open(DBG(40)); open) DumpIPAddresses();
  GatewayRoamingCheck();
}

void CWlanInterface::ForgetIPInfo() {
  IPInfo dropped;
  const CCritSecLock lock(m_StateLock);
  std::swap(m_IPInfo, dropped);
  m_IP4GatewayMacs.clear();
  m_IP6GatewayMacs.clear();
}

IPInfo CWlanInterface::GetIPInfo() const {
  const CCritSecLock lock(m_StateLock);
  return m_IPInfo;
}

void CWlanInterface::DumpIPAddresses() const {
  const IPInfo info = GetIPInfo();
  const auto macText = [](const MacAddress& mac) { return MacText(mac); };
  LOG_INFO(
      u"[%i] DNS suffix: %s, domain controller: %s, IPv4: %s, IPv6: %s, gateways IPv4: %s [%s], "
      u"gateways IPv6: %s [%s]\n",
      m_Adapter.Idx(), info.dnsSuffix, info.domainController, Joined(info.ip4, Ip4Text),
      Joined(info.ip6, Ip6Text), Joined(info.ip4Gateways, Ip4Text),
      Joined(GetIP4GatewayMacs(), macText), Joined(info.ip6Gateways, Ip6Text),
      Joined(GetIP6GatewayMacs(), macText));
}

}  // namespace corvane
