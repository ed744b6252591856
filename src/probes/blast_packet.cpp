#include "probes/blast_packet.h"

#include <algorithm>
#include <cstring>

#include "platform/ip_types.h"

namespace corvane {

namespace {

constexpr std::uint8_t kUnassignedIcmp = 254;   // RFC 3692, for experiments
constexpr std::uint8_t kExperimentIcmp6 = 200;  // RFC 4443, for private experiments
constexpr std::uint8_t kNextHeaderIcmp6 = 58;
constexpr std::size_t kPacketSize = 1480, kPacketSize6 = 1460;
constexpr std::size_t kHeader = 8, kChecksumAt = 2, kIdentifierAt = 4, kSequenceAt = 6;

}  // namespace

std::uint16_t InternetChecksum(const std::uint8_t* data, std::size_t size) {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < size; i += 2) {
    std::uint16_t word = 0;
    std::memcpy(&word, data + i, std::min<std::size_t>(2, size - i));
    sum += word;
  }
  while (sum >> 16 != 0) sum = (sum & 0xFFFF) + (sum >> 16);
  return static_cast<std::uint16_t>(~sum);
}

std::uint16_t Icmp6Checksum(const Ip6Address& source, const Ip6Address& destination,
                            const std::uint8_t* data, std::size_t size) {
  std::vector<std::uint8_t> all;
  all.reserve(source.size() + destination.size() + 8 + size);
  all.insert(all.end(), source.begin(), source.end());
  all.insert(all.end(), destination.begin(), destination.end());
  for (const int shift : {24, 16, 8, 0}) all.push_back(static_cast<std::uint8_t>(size >> shift));
  all.insert(all.end(), {0, 0, 0, kNextHeaderIcmp6});
  all.insert(all.end(), data, data + size);
  return InternetChecksum(all.data(), all.size());
}

std::vector<std::uint8_t> BlastPacket(int family, std::uint16_t identifier,
                                      std::uint16_t sequence) {
  const bool six = family == platform::AF_INET6;
  std::vector<std::uint8_t> packet(six ? kPacketSize6 : kPacketSize, 0);
  packet[0] = six ? kExperimentIcmp6 : kUnassignedIcmp;
  std::memcpy(&packet[kIdentifierAt], &identifier, sizeof identifier);
  std::memcpy(&packet[kSequenceAt], &sequence, sizeof sequence);
  std::fill(packet.begin() + kHeader, packet.end(), six ? 0x42 : 0x41);
  return packet;
}

void StoreChecksum(std::vector<std::uint8_t>* packet, std::uint16_t checksum) {
  std::memcpy(packet->data() + kChecksumAt, &checksum, sizeof checksum);
}

}  // namespace corvane
