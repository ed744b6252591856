#pragma once
// The platform's adapter lists as plain records. Nothing outside the block is read: what points out
// of it, or runs past its end, is passed over.

#include <string>
#include <vector>

#include "foundation/generic_malloc.h"
#include "monitors/ip_address.h"

namespace corvane {

struct AddressLists {
  std::vector<Ip4Address> ip4;
  std::vector<Ip6Address> ip6;
};

struct AdapterRecord {
  std::string name;  // GUID text with braces
  WString description;
  WString dnsSuffix;
  std::uint32_t ifIndex = 0;
  std::uint32_t ifType = 0;
  std::uint32_t operStatus = 0;
  AddressLists addresses;  // unicast
  AddressLists gateways;
};

// Of a block that GetAdaptersAddresses filled.
std::vector<AdapterRecord> ReadAdapters(const CGenericMalloc& block);

struct AdapterInfoRecord {
  std::uint32_t index = 0;
  std::string ipAddress;  // the first one, dotted
  std::string ipMask;
};

// Of a block that GetAdaptersInfo filled.
std::vector<AdapterInfoRecord> ReadAdapterInfo(const CGenericMalloc& block);

}  // namespace corvane
