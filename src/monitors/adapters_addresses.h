#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/generic_malloc.h"
#include "foundation/smart_obj.h"
#include "monitors/ip_address.h"
#include "platform/types.h"

namespace corvane {

// A snapshot of the machine's network adapters, made for one question or one round and dropped. For
// one thread. The lists handed out are appended to.
class CAdaptersAddresses : public SmartObjEx<CAdaptersAddresses, SmartObj<>> {
 public:
  const char* GetClassName() const override { return "CAdaptersAddresses"; }

  // Fills what is still empty. A failed platform call is logged and leaves its list empty; only
  // lack of memory throws Exception.
  void Initialize();

  // Active VPN adapters; 0 without a list.
  std::uint32_t CountVPNAdapters();
  // Wired and wireless adapters that are up; *total counts those that are down too, *lanUp the
  // wired ones among the result. 0 without a list.
  std::uint32_t CountConnectedAdapters(std::uint32_t* total, std::uint32_t* lanUp);

  // Of the adapter with this GUID, how many were added. Throw Exception without a list.
  std::size_t GetIPAddressesForInterface(const platform::GUID& adapter,
                                         std::vector<Ip4Address>* ip4, std::vector<Ip6Address>* ip6,
                                         WString* dnsSuffix);
  std::size_t GetIPGatewaysForInterface(const platform::GUID& adapter, std::vector<Ip4Address>* ip4,
                                        std::vector<Ip6Address>* ip6);
  // First IPv6 address of the adapter with this interface index; false without one.
  bool GetIPv6AddressForIndex(std::uint32_t ifIndex, Ip6Address* address);
  // Network mask of the adapter whose first address is exactly this dotted text.
  bool GetIP4MaskFromAdaptersInfo(std::int32_t ifIndex, const std::string& ip4, std::string* mask);

  // By the neighbour table. An address without a MAC adds nothing, so the list may come out
  // shorter. Returns how many were added.
  static std::size_t GetMacForIP4(const std::vector<Ip4Address>& ip4, std::vector<MacValue>* macs);
  static std::size_t GetMacForIP6(const std::vector<Ip6Address>& ip6, std::vector<MacValue>* macs);

  // Whether CountVPNAdapters logs each adapter that it looks at.
  static void SetVPNTrace(bool on);

 private:
  void InitializeAddresses();
  void InitializeAdapterInfo();
  std::uint32_t CountVPNAdapters_internal();
  std::uint32_t CountConnectedAdapters_internal(std::uint32_t* total, std::uint32_t* lanUp);

  CSmartPointer<CGenericMalloc> m_pAddresses;    // IP_ADAPTER_ADDRESSES list, null until filled
  CSmartPointer<CGenericMalloc> m_pAdapterInfo;  // IP_ADAPTER_INFO list, null until filled
};

}  // namespace corvane
