#include "monitors/adapter_list.h"

#include <algorithm>
#include <cstring>

#include "platform/ip_types.h"

namespace corvane {

namespace {

// The bytes of a block, read by the pointers that stand in it.
class BlockReader {
 public:
  explicit BlockReader(const CGenericMalloc& block)
      : m_pData(block.GetData()), m_Size(block.GetSize()) {}

  const void* Start() const { return m_pData; }

  // A copy of the T at `at`; false when it does not lie wholly within the block.
  template <class T>
  bool Read(const void* at, T* out) const {
    const std::size_t offset = OffsetOf(at);
    if (offset > m_Size || m_Size - offset < sizeof(T)) return false;
    std::memcpy(static_cast<void*>(out), m_pData + offset, sizeof(T));
    return true;
  }

  // The text at `at`, up to its NUL or the end of the block.
  template <class Char>
  std::basic_string<Char> Text(const Char* at) const {
    std::basic_string<Char> text;
    Char c{};
    for (auto p = reinterpret_cast<std::uintptr_t>(at);
         Read(reinterpret_cast<const void*>(p), &c) && c != 0; p += sizeof(Char)) {
      text += c;
    }
    return text;
  }

 private:
  // Beyond the block's size for what lies outside.
  std::size_t OffsetOf(const void* at) const {
    return reinterpret_cast<std::uintptr_t>(at) - reinterpret_cast<std::uintptr_t>(m_pData);
  }

  const std::uint8_t* m_pData;
  std::size_t m_Size;
};

// Calls visit(node) for each node of a chain by `Next`, as far as it stays in the block and meets
// no node twice.
template <class Node, class Visit>
void Walk(const BlockReader& reader, const void* first, Visit&& visit) {
  std::vector<const void*> seen;
  Node node;
  for (const void* at = first; at && reader.Read(at, &node); at = node.Next) {
    if (std::find(seen.begin(), seen.end(), at) != seen.end()) return;
    seen.push_back(at);
    visit(node);
  }
}

void AddAddress(const BlockReader& reader, const platform::SOCKET_ADDRESS& address,
                AddressLists* lists) {
  platform::WORD family = platform::AF_UNSPEC;
  if (address.iSockaddrLength < 0 || !reader.Read(address.lpSockaddr, &family)) return;
  const auto length = static_cast<std::size_t>(address.iSockaddrLength);
  platform::SOCKADDR_IN in;
  platform::SOCKADDR_IN6 in6;
  if (family == platform::AF_INET && length >= sizeof(in) && reader.Read(address.lpSockaddr, &in)) {
    Ip4Address ip = 0;
    std::memcpy(&ip, in.sin_addr, sizeof(ip));
    lists->ip4.push_back(ip);
  } else if (family == platform::AF_INET6 && length >= sizeof(in6) &&
             reader.Read(address.lpSockaddr, &in6)) {
    lists->ip6.push_back(std::to_array(in6.sin6_addr));
  }
}

template <std::size_t N>
std::string FieldText(const char (&field)[N]) {
  return std::string(field, std::find(field, field + N, '\0'));
}

}  // namespace

std::vector<AdapterRecord> ReadAdapters(const CGenericMalloc& block) {
  std::vector<AdapterRecord> records;
  const BlockReader reader(block);
  Walk<platform::IP_ADAPTER_ADDRESSES>(
      reader, reader.Start(), [&](const platform::IP_ADAPTER_ADDRESSES& node) {
        AdapterRecord& record = records.emplace_back();
        record.name = reader.Text(node.AdapterName);
        record.description = reader.Text(node.Description);
        record.dnsSuffix = reader.Text(node.DnsSuffix);
        record.ifIndex = node.IfIndex;
        record.ifType = node.IfType;
        record.operStatus = node.OperStatus;
        Walk<platform::IP_ADAPTER_UNICAST_ADDRESS>(
            reader, node.FirstUnicastAddress,
            [&](const auto& one) { AddAddress(reader, one.Address, &record.addresses); });
        Walk<platform::IP_ADAPTER_GATEWAY_ADDRESS>(
            reader, node.FirstGatewayAddress,
            [&](const auto& one) { AddAddress(reader, one.Address, &record.gateways); });
      });
  return records;
}

std::vector<AdapterInfoRecord> ReadAdapterInfo(const CGenericMalloc& block) {
  std::vector<AdapterInfoRecord> records;
  const BlockReader reader(block);
  Walk<platform::IP_ADAPTER_INFO>(
      reader, reader.Start(), [&](const platform::IP_ADAPTER_INFO& node) {
        records.push_back({node.Index, FieldText(node.IpAddressList.IpAddress),
                           FieldText(node.IpAddressList.IpMask)});
      });
  return records;
}

}  // namespace corvane
