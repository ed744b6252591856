#pragma once
#include <cstring>
#include <string>
#include <vector>

#include "foundation/text.h"
#include "monitors/ip_address.h"
#include "platform/ip_helper_api.h"

namespace corvane::test {

struct AdapterSpec {
  std::string name;
  WString description;
  std::uint32_t ifType = 6;
  std::uint32_t operStatus = 1;
  std::uint32_t ifIndex = 1;
  WString dnsSuffix = {};
  std::vector<Ip4Address> ip4 = {}, gateways4 = {};
  std::vector<Ip6Address> ip6 = {}, gateways6 = {};
};

// Lays adapters out in a buffer as GetAdaptersAddresses does: everything within it.
class AdapterBlock {
 public:
  // As much as fits is written; the bytes that all of it takes.
  std::size_t Write(const std::vector<AdapterSpec>& adapters, void* buffer, std::size_t size) {
    m_pBuffer = static_cast<std::uint8_t*>(buffer);
    m_Size = size;
    m_Used = 0;
    platform::IP_ADAPTER_ADDRESSES* before = nullptr;
    for (const AdapterSpec& one : adapters) {
      auto* node = Take<platform::IP_ADAPTER_ADDRESSES>();
      auto* name = Text(one.name);
      auto* description = Text(one.description);
      auto* suffix = Text(one.dnsSuffix);
      auto* unicast = Addresses<platform::IP_ADAPTER_UNICAST_ADDRESS>(one.ip4, one.ip6);
      auto* gateways =
          Addresses<platform::IP_ADAPTER_GATEWAY_ADDRESS>(one.gateways4, one.gateways6);
      if (!node) continue;
      node->AdapterName = name;
      node->Description = description;
      node->DnsSuffix = suffix;
      node->FirstUnicastAddress = unicast;
      node->FirstGatewayAddress = gateways;
      node->IfIndex = one.ifIndex;
      node->IfType = one.ifType;
      node->OperStatus = one.operStatus;
      if (before) before->Next = node;
      before = node;
    }
    return m_Used;
  }

 private:
  void* Bytes(std::size_t count) {
    const std::size_t at = (m_Used + 7) / 8 * 8;
    m_Used = at + count;
    return m_Used <= m_Size ? m_pBuffer + at : nullptr;
  }
  template <class T>
  T* Take() {
    void* const at = Bytes(sizeof(T));
    return at ? new (at) T() : nullptr;
  }
  template <class Char>
  Char* Text(const std::basic_string<Char>& text) {
    const std::size_t bytes = (text.size() + 1) * sizeof(Char);
    void* const at = Bytes(bytes);
    if (at) std::memcpy(at, text.c_str(), bytes);
    return static_cast<Char*>(at);
  }
  template <class Node>
  Node* Addresses(const std::vector<Ip4Address>& ip4, const std::vector<Ip6Address>& ip6) {
    Node* first = nullptr;
    Node* before = nullptr;
    const auto add = [&](void* sockaddr, std::size_t length) {
      Node* const node = Take<Node>();
      if (!node) return;
      node->Address = {sockaddr, static_cast<platform::LONG>(length)};
      (before ? before->Next : first) = node;
      before = node;
    };
    for (const Ip4Address ip : ip4) {
      auto* in = Take<platform::SOCKADDR_IN>();
      if (in) std::memcpy(in->sin_addr, &ip, sizeof(ip));
      add(in, sizeof(*in));
    }
    for (const Ip6Address& ip : ip6) {
      auto* in = Take<platform::SOCKADDR_IN6>();
      if (in) std::memcpy(in->sin6_addr, ip.data(), ip.size());
      add(in, sizeof(*in));
    }
    return first;
  }

  std::uint8_t* m_pBuffer = nullptr;
  std::size_t m_Size = 0;
  std::size_t m_Used = 0;
};

inline Ip4Address Ip4(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
  const std::uint8_t bytes[] = {a, b, c, d};
  Ip4Address ip;
  std::memcpy(&ip, bytes, sizeof(ip));
  return ip;
}

}  // namespace corvane::test
