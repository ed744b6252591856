#pragma once
#include "platform/ip_types.h"

namespace corvane::platform {

// IP_STATUS (ipexport.h).
inline constexpr ULONG IP_SUCCESS = 0;
inline constexpr ULONG IP_BUF_TOO_SMALL = 11001;
inline constexpr ULONG IP_DEST_NET_UNREACHABLE = 11002;
inline constexpr ULONG IP_DEST_HOST_UNREACHABLE = 11003;
inline constexpr ULONG IP_DEST_PROT_UNREACHABLE = 11004;
inline constexpr ULONG IP_DEST_PORT_UNREACHABLE = 11005;
inline constexpr ULONG IP_NO_RESOURCES = 11006;
inline constexpr ULONG IP_REQ_TIMED_OUT = 11010;
inline constexpr ULONG IP_BAD_ROUTE = 11012;
inline constexpr ULONG IP_TTL_EXPIRED_TRANSIT = 11013;
inline constexpr BYTE IP_FLAG_DF = 2;

struct IP_OPTION_INFORMATION {
  BYTE Ttl = 0;
  BYTE Tos = 0;
  BYTE Flags = 0;
  BYTE OptionsSize = 0;
  BYTE* OptionsData = nullptr;
};
static_assert(sizeof(IP_OPTION_INFORMATION) == 16);

struct ICMP_ECHO_REPLY {
  DWORD Address = 0;        // network byte order
  ULONG Status = 0;         // IP_STATUS
  ULONG RoundTripTime = 0;  // ms
  WORD DataSize = 0;
  WORD Reserved = 0;
  void* Data = nullptr;
  IP_OPTION_INFORMATION Options;
};
static_assert(sizeof(ICMP_ECHO_REPLY) == 40);

struct ICMPV6_ECHO_REPLY {
  // IPV6_ADDRESS_EX, packed: port, flow, address, scope
  WORD sin6_port = 0;
  WORD sin6_flowinfo[2] = {};
  WORD sin6_addr[8] = {};  // network byte order
  WORD sin6_scope_id[2] = {};
  WORD padding = 0;
  ULONG Status = 0;
  unsigned RoundTripTime = 0;  // ms
};
static_assert(sizeof(ICMPV6_ECHO_REPLY) == 36);

// Echo requests. A null handle or 0 replies leave the reason in ThreadApi::GetLastError(): an
// IP_STATUS (IP_REQ_TIMED_OUT when nothing came back) or an error code. A handle belongs to who
// created it and goes by IcmpCloseHandle; it serves one address family and one thread at a time.
// The sends block for up to `timeoutMs`. Addresses are in network byte order; `data` is of `size`
// bytes; `options` may be null (hop limit 128). `reply` is the caller's, of `replySize` bytes: the
// reply record, the data again, and 8 bytes more, else IP_BUF_TOO_SMALL.
class IcmpApi {
 public:
  virtual ~IcmpApi() = default;
  virtual HANDLE IcmpCreateFile();
  virtual HANDLE Icmp6CreateFile();
  virtual BOOL IcmpCloseHandle(HANDLE icmp);
  // How many replies lie in `reply`; the first is an ICMP_ECHO_REPLY. A router that drops the
  // request is a reply, too: its Status is not IP_SUCCESS and its Address is the router's.
  virtual DWORD IcmpSendEcho(HANDLE icmp, DWORD destination, const void* data, WORD size,
                             const IP_OPTION_INFORMATION* options, void* reply, DWORD replySize,
                             DWORD timeoutMs);
  // The same over IPv6, without an event (it blocks as well); the first reply is an
  // ICMPV6_ECHO_REPLY.
  virtual DWORD Icmp6SendEcho2(HANDLE icmp, const SOCKADDR_IN6* source,
                               const SOCKADDR_IN6* destination, const void* data, WORD size,
                               const IP_OPTION_INFORMATION* options, void* reply, DWORD replySize,
                               DWORD timeoutMs);
};

}  // namespace corvane::platform
