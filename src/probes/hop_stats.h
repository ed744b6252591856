#pragma once
#include <cstdint>
#include <list>
#include <string>

#include "monitors/ip_address.h"

namespace corvane {

// Whether an address lies outside the private ranges 10/8, 172.16/12 and 192.168/16.
bool IsPublicAddress(Ip4Address address);
// Whether it is a global unicast address: its top three bits are 001.
bool IsPublicAddress(const Ip6Address& address);

// The name of an IP_STATUS that is no answer of a router, such as "IP_REQ_TIMED_OUT"; "IP ERROR: "
// and the number for one without a name.
std::string IpStatusName(std::uint32_t status);

// What the probes have learned of one router on the way to the public host. Times are in ms.
struct HopStats {
  // A router has answered. `before` is the hop in front of it, null for the first: what exceeds
  // that one's newest time is this hop's own share.
  void TakeAnswer(std::uint32_t rttMs, const HopStats* before);

  std::string m_Address;  // in text, or the name of the error
  bool m_bNoReply = true;
  bool m_bPublic = false;
  bool m_bReached = false;            // it is the destination itself
  std::uint32_t m_PublicOrdinal = 0;  // from 1, among the public hops of the round
  std::uint32_t m_AddressBinary = 0;  // IPv4, network order
  std::uint32_t m_Replies = 0;
  std::uint32_t m_LastRttMs = 0;
  std::uint32_t m_MinRttMs = 0xFFFFFFFF;
  std::uint32_t m_MaxRttMs = 0;
  std::list<std::uint32_t> m_RttHistory;  // the last 10, newest last
  std::uint32_t m_LastSegmentMs = 0;
  std::list<std::uint32_t> m_SegmentHistory;  // likewise
};

}  // namespace corvane
