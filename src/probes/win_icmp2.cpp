#include "probes/win_icmp2.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "foundation/format.h"
#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "monitors/adapters_addresses.h"
#include "platform/clock_api.h"
#include "platform/icmp_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "probes/resolve_address.h"
#include "probes/route_scope.h"
#include "probes/rtt_statistics.h"

namespace corvane {

namespace {

constexpr char kClassName[] = "CWinICMP2";
constexpr std::uint64_t kTraceLog = DBG(48);
constexpr std::uint32_t kRouteMask = 0x00FFFFFF;  // 255.255.255.0, network order
constexpr platform::WORD kPayloadSize = 64;
constexpr std::size_t kReplySize = 8220;
constexpr std::uint32_t kTimeoutMs = 2000;  // for each hop
constexpr std::uint32_t kTracedHops = 2;
constexpr std::uint32_t kMaxTtl = 30;

platform::IP_OPTION_INFORMATION Options(std::uint32_t ttl) {
  platform::IP_OPTION_INFORMATION options;
  options.Ttl = static_cast<platform::BYTE>(ttl);
  options.Flags = platform::IP_FLAG_DF;
  return options;
}

// A call without an answer always has a reason; one that the platform leaves out is not "reached".
int LastError() {
  const platform::DWORD code = Os().threads.GetLastError();
  return static_cast<int>(code != 0 ? code : platform::ERROR_GEN_FAILURE);
}

// Hour, minute, second and ms of UTC.
std::string TimeText() {
  const platform::SYSTEMTIME now = platform::SystemTimeNow();
  return FormatA("%02d:%02d:%02d.%03d", now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
}

platform::SOCKADDR_IN6 SocketAddress(const Ip6Address& address) {
  platform::SOCKADDR_IN6 in;
  std::copy(address.begin(), address.end(), in.sin6_addr);
  return in;
}

}  // namespace

CWinICMP2::~CWinICMP2() { CloseHandles(); }

void CWinICMP2::OpenHandles() {
  if (std::exchange(m_bOpened, true)) return;
  m_Payload.assign(kPayloadSize, ' ');
  m_Reply.assign(kReplySize, 0);
  auto& icmp = Os().icmp;
  m_hIcmp = icmp.IcmpCreateFile();
  if (!m_hIcmp) LOG_ERROR(u"IcmpCreatefile returned error: %ld\n", Os().threads.GetLastError());
  m_hIcmp6 = icmp.Icmp6CreateFile();
  if (!m_hIcmp6) LOG_ERROR(u"Icmp6CreateFile returned error: %ld\n", Os().threads.GetLastError());
}

void CWinICMP2::CloseHandles() {
  for (platform::HANDLE* handle : {&m_hIcmp, &m_hIcmp6}) {
    const platform::HANDLE gone = std::exchange(*handle, nullptr);
    if (gone) GiveBack(kClassName, "IcmpCloseHandle", [&] { Os().icmp.IcmpCloseHandle(gone); });
  }
}

void CWinICMP2::FactoryReset() {
  if (!m_bOpened && m_IfIndex == kUnset) return;  // it has nothing to forget
  GiveBack(kClassName, "RemoveLastAddedIP4Route", [this] { m_Route.RemoveLastAddedIP4Route(); });
  CloseHandles();
  m_bOpened = false;
  m_TargetIPv4 = m_IfIndex = kUnset;
  m_bHaveSourceIPv6 = m_bHaveTargetIPv6 = m_bUseIPv6 = false;
  m_RoundCount = 0;
  m_SumRttMs = m_MaxSumRttMs = 0;
  m_MinSumRttMs = kUnset;
  m_TargetCount = m_LastTargetCount = 2;
  m_HopCount = m_PublicHops = 0;
  m_Hops.fill({});
}

bool CWinICMP2::SetTargetInterface(std::uint32_t ifIndex, const char* host) {
  m_IfIndex = ifIndex;
  return Contained(kClassName, "SetTargetInterface", false, [&] { return SetTargetHost(host); });
}

bool CWinICMP2::SetTargetHost(const char* host) {
  if (m_TargetIPv4 == kUnset) {
    const auto ip4 = ResolveAddress(0, host, nullptr, platform::AF_INET);
    if (!ip4) {
      LOG_ERROR(u"[IfIdx=%i] CWinICMP2::SetTargetHost() - ResolveAddress(%S...) FAILED!\n",
                m_IfIndex, host);
      LOG_ERROR(u"CWinICMP2::SetTargetInterface(%S) - SetTargetHost() FAILED!\n", host);
      return false;
    }
    m_TargetIPv4 = Ip4Of(*ip4);
    if (const auto ip6 = ResolveAddress(0, host, nullptr, platform::AF_INET6)) {
      m_TargetIPv6 = Ip6Of(*ip6);
      m_bHaveTargetIPv6 = true;
    }
  }
  const auto snapshot = CAdaptersAddresses::CreateObject();
  snapshot->Initialize();
  try {
    m_bHaveSourceIPv6 = snapshot->GetIPv6AddressForIndex(m_IfIndex, &m_SourceIPv6);
  } catch (const Exception&) {
    m_bHaveSourceIPv6 = false;  // without a list there is no address
  }
  if (!m_bHaveSourceIPv6) {
    LOG_DEBUG(kTraceLog, u"CWinICMP2::SetTargetInterface(%S) - GetIpv6Address(%i, ...) FAILED!\n",
              host, m_IfIndex);
  }
  return true;
}

int CWinICMP2::TraceIPRoutersForInterference() {
  return Contained(kClassName, "TraceIPRoutersForInterference", -1, [this] {
    LOG_DEBUG(kTraceLog, u"\t[If %i]TraceIPRoutersForInterference - start tracert %S\n", m_IfIndex,
              TimeText());
    OpenHandles();
    const int result = Round();
    LOG_DEBUG(kTraceLog, u"\t[If %i]TraceIPRoutersForInterference - end tracert %S\n", m_IfIndex,
              TimeText());
    return result;
  });
}

void CWinICMP2::UseIPv6(const char16_t* line) {
  m_bUseIPv6 = true;
  m_RoundCount = 0;
  LOG_INFO(u"%s", line);
}

int CWinICMP2::Round() {
  if (m_bUseIPv6 && !CanUseIPv6()) return -1;
  if (!m_bUseIPv6 && !CanUseIPv4()) {
    if (CanUseIPv6()) UseIPv6(u"#####> TraceAllIPRouters: NO IPV4, FORCING IPV6\n");
    return -1;
  }
  m_PublicHops = 0;
  const RouteScope routeScope(m_Route);
  if (!m_bUseIPv6 && !m_Route.HasRoute()) AddRoute();
  std::uint32_t answered = 0, sum = 0;
  for (std::uint32_t ttl = 1; ttl <= kTracedHops; ++ttl) {
    const HopStats& hop = m_Hops[ttl];
    const std::uint32_t before = hop.m_Replies;
    const int status = m_bUseIPv6 ? TraceIP6RouterAtHop(ttl) : TraceIPRouterAtHop(ttl);
    // Without a reply the status is the system's error, which may be the number of an answer.
    if (hop.m_Replies != before) {
      ++answered;
      if (hop.m_bPublic && hop.m_PublicOrdinal <= m_TargetCount) sum += hop.m_LastRttMs;
    }
    if (status == static_cast<int>(platform::IP_SUCCESS)) break;
  }
  TakeSums(answered, sum);
  ++m_RoundCount;
  if (answered == 0 && !m_bUseIPv6 && CanUseIPv6()) {
    UseIPv6(u"#####> TraceAllIPRouters: SWITCHING IPV4 ==> IPV6\n");
  }
  return 0;
}

// Sums of different sets of hops are no extremes of one another.
void CWinICMP2::TakeSums(std::uint32_t answered, std::uint32_t sum) {
  if ((m_HopCount != 0 && m_HopCount != answered) || m_TargetCount != m_LastTargetCount) {
    m_LastTargetCount = m_TargetCount;
    m_SumRttMs = m_MaxSumRttMs = 0;
    m_MinSumRttMs = kUnset;
  }
  m_HopCount = answered;
  m_SumRttMs = sum;
  m_MinSumRttMs = std::min(m_MinSumRttMs, sum);
  m_MaxSumRttMs = std::max(m_MaxSumRttMs, sum);
}

// Towards the target's subnet, by the interface's default gateway.
bool CWinICMP2::AddRoute() {
  platform::DWORD error = 0;
  return m_Route.AddIP4Route(m_IfIndex, m_TargetIPv4 & kRouteMask, kRouteMask, 0, &error);
}

int CWinICMP2::TraceIPRouterAtHop(std::uint32_t ttl) {
  if (ttl > kMaxTtl) return -1;
  if (!CanUseIPv4()) return -2;
  const bool addedHere = !m_Route.HasRoute() && AddRoute();
  const int status = SendEcho(ttl);
  if (addedHere) m_Route.RemoveLastAddedIP4Route();
  return status;
}

int CWinICMP2::SendEcho(std::uint32_t ttl) {
  const platform::IP_OPTION_INFORMATION options = Options(ttl);
  const platform::DWORD replies = Os().icmp.IcmpSendEcho(
      m_hIcmp, m_TargetIPv4, m_Payload.data(), kPayloadSize, &options, m_Reply.data(),
      static_cast<platform::DWORD>(m_Reply.size()), kTimeoutMs);
  if (replies == 0) return LastError();
  platform::ICMP_ECHO_REPLY reply;
  std::memcpy(&reply, m_Reply.data(), sizeof reply);
  HopStats& hop = m_Hops[ttl];
  if (IsAnswer(reply.Status, &hop)) {
    hop.m_AddressBinary = reply.Address;
    hop.m_Address = WideToUtf8(Ip4Text(reply.Address));
    TakeAnswer(ttl, reply.RoundTripTime, IsPublicAddress(reply.Address));
  }
  return static_cast<int>(reply.Status);
}

int CWinICMP2::TraceIP6RouterAtHop(std::uint32_t ttl) {
  if (ttl > kMaxTtl) return -1;
  if (!CanUseIPv6()) return -2;
  return SendEcho6(ttl);
}

int CWinICMP2::SendEcho6(std::uint32_t ttl) {
  const platform::IP_OPTION_INFORMATION options = Options(ttl);
  const platform::SOCKADDR_IN6 source = SocketAddress(m_SourceIPv6);
  const platform::SOCKADDR_IN6 target = SocketAddress(m_TargetIPv6);
  const platform::DWORD replies = Os().icmp.Icmp6SendEcho2(
      m_hIcmp6, &source, &target, m_Payload.data(), kPayloadSize, &options, m_Reply.data(),
      static_cast<platform::DWORD>(m_Reply.size()), kTimeoutMs);
  if (replies == 0) {
    const int code = LastError();
    LOG_DEBUG(kTraceLog, u"\tTraceIP6RouterAtHop(ttl=%i) - Call to IcmpSendEcho failed. lse=%ld\n",
              ttl, code);
    return code;
  }
  platform::ICMPV6_ECHO_REPLY reply;
  std::memcpy(&reply, m_Reply.data(), sizeof reply);
  HopStats& hop = m_Hops[ttl];
  if (IsAnswer(reply.Status, &hop)) {
    Ip6Address address;
    std::memcpy(address.data(), reply.sin6_addr, address.size());
    const bool isPublic = IsPublicAddress(address);
    hop.m_Address = WideToUtf8(Ip6Text(address));
    LOG_DEBUG(kTraceLog, u"\tTraceIP6RouterAtHop(ttl=%i) - %S is %s\n", ttl, hop.m_Address,
              isPublic ? u"public" : u"private");
    TakeAnswer(ttl, reply.RoundTripTime, isPublic);
  }
  return static_cast<int>(reply.Status);
}

bool CWinICMP2::IsAnswer(std::uint32_t status, HopStats* hop) const {
  if (status == platform::IP_SUCCESS) hop->m_bReached = true;
  if (status == platform::IP_SUCCESS || status == platform::IP_TTL_EXPIRED_TRANSIT) return true;
  hop->m_Address = IpStatusName(status);
  return false;
}

void CWinICMP2::TakeAnswer(std::uint32_t ttl, std::uint32_t rttMs, bool isPublic) {
  HopStats& hop = m_Hops[ttl];
  hop.TakeAnswer(rttMs, ttl > 1 ? &m_Hops[ttl - 1] : nullptr);
  hop.m_bPublic = isPublic;
  hop.m_PublicOrdinal = isPublic ? ++m_PublicHops : 0;
}

int CWinICMP2::GetResult(InterferenceRecord* record) const {
  *record = {};
  int count = 0;
  for (std::size_t i = 0; i < record->size(); ++i) {
    const HopStats& hop = m_Hops[i + 1];
    if (hop.m_bNoReply) continue;
    ++count;
    (*record)[i] = {.lastRttMs = hop.m_LastRttMs,
                    .lastSegmentMs = hop.m_LastSegmentMs,
                    .rttDeviation = DeviationOf(hop.m_RttHistory),
                    .rttMean = MeanOf(hop.m_RttHistory),
                    .segmentDeviation = DeviationOf(hop.m_SegmentHistory),
                    .segmentMean = MeanOf(hop.m_SegmentHistory)};
  }
  return count;
}

void CWinICMP2::LogTrace() const {
  Contained(kClassName, "LogTrace", false, [this] {
    LogHops();
    return true;
  });
}

void CWinICMP2::LogHops() const {
  for (std::uint32_t ttl = 1; ttl <= kMaxTtl && !m_Hops[ttl].m_bNoReply; ++ttl) {
    const HopStats& hop = m_Hops[ttl];
    const char16_t* const kind = !hop.m_bPublic                        ? u"[private]\t\t"
                                 : hop.m_PublicOrdinal > m_TargetCount ? u"[public]\t\t"
                                                                       : u"[public]\t[*]\t";
    LOG_INFO(u"\t[If %i]%i \t%03lu [seg %03lu] ms \t%S\t%sstd %03.3Le seg: %03.3Le\n", m_IfIndex,
             ttl, hop.m_LastRttMs, hop.m_LastSegmentMs, hop.m_Address, kind,
             DeviationOf(hop.m_RttHistory), DeviationOf(hop.m_SegmentHistory));
  }
}

}  // namespace corvane
