#pragma once
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/text.h"
#include "monitors/ip_address.h"
#include "platform/types.h"
#include "probes/hop_stats.h"
#include "probes/temporary_route.h"

namespace corvane {

// What the rounds have found of one router; times in ms. The four numbers of the event are the
// deviations and means.
struct InterferenceSet {
  std::uint32_t lastRttMs = 0;
  std::uint32_t lastSegmentMs = 0;
  double rttDeviation = 0.0;
  double rttMean = 0.0;
  double segmentDeviation = 0.0;
  double segmentMean = 0.0;
};
using InterferenceRecord = std::array<InterferenceSet, 2>;  // of the first and the second hop

// The interference detector of one adapter: traces the first two routers towards a public host,
// over a temporary route through the adapter, and keeps statistics of their times. On the adapter's
// worker alone. It opens its handles at the first use, so a detector that is off costs nothing; a
// handle that it cannot have leaves it without results until FactoryReset. No exception leaves it.
class CWinICMP2 {
 public:
  CWinICMP2() = default;
  ~CWinICMP2();
  CWinICMP2(const CWinICMP2&) = delete;
  CWinICMP2& operator=(const CWinICMP2&) = delete;

  std::uint32_t GetIfIndex() const { return m_IfIndex; }
  // The interface to probe from and the host to probe towards, whose address is looked up once.
  bool SetTargetInterface(std::uint32_t ifIndex, const char* host);
  // One round, of up to two time-outs (2000 ms each); 0 done, -1 not possible now.
  int TraceIPRoutersForInterference();
  // Forgets everything, so that figures never mix two access points.
  void FactoryReset();
  // How many sets it fills; those of a hop without an answer are zero.
  int GetResult(InterferenceRecord* record) const;
  // The hops, to the log.
  void LogTrace() const;

 private:
  static constexpr std::uint32_t kUnset = 0xFFFFFFFF;
  static constexpr std::uint32_t kMaxHops = 31;  // by TTL; 0 is not used

  bool SetTargetHost(const char* host);
  void LogHops() const;
  void OpenHandles();
  void CloseHandles();
  bool CanUseIPv4() const { return m_hIcmp && m_TargetIPv4 != kUnset && m_IfIndex != kUnset; }
  bool CanUseIPv6() const { return m_hIcmp6 && m_bHaveSourceIPv6 && m_bHaveTargetIPv6; }
  void UseIPv6(const char16_t* line);
  int Round();
  void TakeSums(std::uint32_t answered, std::uint32_t sum);
  bool AddRoute();
  // IP_STATUS of the answer, the platform's code without one, below 0 when it can't probe.
  int TraceIPRouterAtHop(std::uint32_t ttl);
  int TraceIP6RouterAtHop(std::uint32_t ttl);
  int SendEcho(std::uint32_t ttl);
  int SendEcho6(std::uint32_t ttl);
  // Whether the status is that of a router or of the destination; names it in the hop otherwise.
  bool IsAnswer(std::uint32_t status, HopStats* hop) const;
  void TakeAnswer(std::uint32_t ttl, std::uint32_t rttMs, bool isPublic);

  platform::HANDLE m_hIcmp = nullptr;
  platform::HANDLE m_hIcmp6 = nullptr;
  bool m_bOpened = false;               // the handles were asked for
  std::uint32_t m_TargetIPv4 = kUnset;  // network order
  std::uint32_t m_IfIndex = kUnset;
  CTemporaryRoute m_Route;
  Ip6Address m_SourceIPv6{};
  bool m_bHaveSourceIPv6 = false;
  Ip6Address m_TargetIPv6{};
  bool m_bHaveTargetIPv6 = false;
  bool m_bUseIPv6 = false;              // IPv4 has given up
  std::vector<std::uint8_t> m_Reply;    // what the platform writes an answer to
  std::vector<std::uint8_t> m_Payload;  // blanks
  std::uint32_t m_RoundCount = 0;       // since the start or the change to IPv6
  std::uint32_t m_SumRttMs = 0;         // of the hops that count, in the last round
  std::uint32_t m_MinSumRttMs = kUnset;
  std::uint32_t m_MaxSumRttMs = 0;
  std::uint32_t m_TargetCount = 2;  // how many public hops count
  std::uint32_t m_LastTargetCount = 2;
  std::uint32_t m_HopCount = 0;    // that answered in the last round
  std::uint32_t m_PublicHops = 0;  // met in this round
  std::array<HopStats, kMaxHops> m_Hops;
};

}  // namespace corvane
