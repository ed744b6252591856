#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

#include "monitors/ip_address.h"

namespace corvane {

// The ones' complement sum of the Internet checksum, ready to be stored as it is in the packet
// (RFC 1071); an odd last byte is padded by a zero.
std::uint16_t InternetChecksum(const std::uint8_t* data, std::size_t size);
// The same of an ICMPv6 packet behind its pseudo-header.
std::uint16_t Icmp6Checksum(const Ip6Address& source, const Ip6Address& destination,
                            const std::uint8_t* data, std::size_t size);

// The packet of a blast, of a type that its receiver ignores, without its checksum. The family is
// AF_INET (1480 bytes at ICMP level) or AF_INET6 (1460).
std::vector<std::uint8_t> BlastPacket(int family, std::uint16_t identifier, std::uint16_t sequence);
void StoreChecksum(std::vector<std::uint8_t>* packet, std::uint16_t checksum);

}  // namespace corvane
