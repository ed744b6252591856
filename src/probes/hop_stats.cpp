#include "probes/hop_stats.h"

#include <algorithm>
#include <cstring>

#include "platform/icmp_api.h"

namespace corvane {

namespace {

constexpr std::size_t kHistory = 10;

void Append(std::list<std::uint32_t>* history, std::uint32_t value) {
  history->push_back(value);
  while (history->size() > kHistory) history->pop_front();
}

}  // namespace

bool IsPublicAddress(Ip4Address address) {
  std::uint8_t b[4];
  std::memcpy(b, &address, sizeof b);
  return !(b[0] == 10 || (b[0] == 172 && b[1] >= 16 && b[1] <= 31) || (b[0] == 192 && b[1] == 168));
}

bool IsPublicAddress(const Ip6Address& address) { return address[0] >> 5 == 1; }

std::string IpStatusName(std::uint32_t status) {
  using namespace platform;
  switch (status) {
    case IP_BUF_TOO_SMALL:
      return "IP_BUF_TOO_SMALL";
    case IP_DEST_NET_UNREACHABLE:
      return "IP_DEST_NET_UNREACHABLE";
    case IP_DEST_HOST_UNREACHABLE:
      return "IP_DEST_HOST_UNREACHABLE";
    case IP_DEST_PROT_UNREACHABLE:
      return "IP_DEST_PROT_UNREACHABLE";
    case IP_DEST_PORT_UNREACHABLE:
      return "IP_DEST_PORT_UNREACHABLE";
    case IP_NO_RESOURCES:
      return "IP_NO_RESOURCES";
    case IP_REQ_TIMED_OUT:
      return "IP_REQ_TIMED_OUT";
    case IP_BAD_ROUTE:
      return "IP_BAD_ROUTE";
    default:
      return "IP ERROR: " + std::to_string(status);
  }
}

void HopStats::TakeAnswer(std::uint32_t rttMs, const HopStats* before) {
  m_LastRttMs = rttMs;
  m_MinRttMs = std::min(m_MinRttMs, rttMs);
  m_MaxRttMs = std::max(m_MaxRttMs, rttMs);
  Append(&m_RttHistory, rttMs);
  const std::uint32_t earlier =
      before && !before->m_RttHistory.empty() ? before->m_RttHistory.back() : 0;
  m_LastSegmentMs = rttMs > earlier ? rttMs - earlier : 0;
  Append(&m_SegmentHistory, m_LastSegmentMs);
  ++m_Replies;
  m_bNoReply = false;
}

}  // namespace corvane
