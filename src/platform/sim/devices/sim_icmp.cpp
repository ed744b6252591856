#include "platform/sim/devices/sim_icmp.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "platform/thread_api.h"

namespace corvane::platform::sim {

namespace {

constexpr DWORD kUnreachable = 1231;   // ERROR_NETWORK_UNREACHABLE
constexpr std::size_t kErrorRoom = 8;  // bytes that Windows wants behind the data
constexpr BYTE kUsualTtl = 128;

ULONG WholeMs(double ms) { return static_cast<ULONG>(std::lround(ms)); }

ULONG StatusOf(const SimPaths::Answer& answer) {
  return answer.reached ? IP_SUCCESS : IP_TTL_EXPIRED_TRANSIT;
}

}  // namespace

HANDLE SimIcmp::Create(const char* operation, WORD family) {
  if (const DWORD code = m_Gate.Enter(operation); code != ERROR_SUCCESS) {
    Fail(code);
    return nullptr;
  }
  return m_Machine.loop.WithLock([&] {
    m_Handles[++m_LastHandle] = family;
    return reinterpret_cast<HANDLE>(m_LastHandle);
  });
}

BOOL SimIcmp::IcmpCloseHandle(HANDLE icmp) {
  const bool closed = m_Machine.loop.WithLock(
      [&] { return m_Handles.erase(reinterpret_cast<std::uintptr_t>(icmp)) == 1; });
  DWORD code = m_Gate.Enter("IcmpCloseHandle");
  if (code == ERROR_SUCCESS && !closed) code = ERROR_INVALID_HANDLE;
  if (code != ERROR_SUCCESS) Fail(code);
  return code == ERROR_SUCCESS;
}

DWORD SimIcmp::Fail(DWORD code) {
  m_Threads.SetLastError(code);
  return 0;
}

std::size_t SimIcmp::Open() {
  return m_Machine.loop.WithLock([this] { return m_Handles.size(); });
}

bool SimIcmp::Exchange(const char* operation, const Request& request, SimPaths::Answer* answer) {
  DWORD code = m_Gate.Enter(operation, IP_REQ_TIMED_OUT);
  std::optional<SimPaths::Answer> got;
  if (code == ERROR_SUCCESS && request.room < request.needed) code = IP_BUF_TOO_SMALL;
  if (code == ERROR_SUCCESS) {
    code = m_Machine.loop.WithLock([&]() -> DWORD {
      const auto handle = m_Handles.find(reinterpret_cast<std::uintptr_t>(request.icmp));
      if (handle == m_Handles.end() || handle->second != request.destination.family) {
        return ERROR_INVALID_HANDLE;
      }
      const auto face = m_Paths.InterfaceTo(request.destination);
      if (!face || request.ttl == 0) return kUnreachable;
      got = m_Paths.Echo(*face, request.destination, request.ttl);
      return ERROR_SUCCESS;
    });
  }
  if (code != ERROR_SUCCESS) return Fail(code) != 0;
  if (!got || WholeMs(got->rttMs) > request.timeoutMs) {
    m_Threads.Sleep(request.timeoutMs);
    return Fail(IP_REQ_TIMED_OUT) != 0;
  }
  m_Threads.Sleep(WholeMs(got->rttMs));
  *answer = *got;
  return true;
}

DWORD SimIcmp::IcmpSendEcho(HANDLE icmp, DWORD destination, const void*, WORD size,
                            const IP_OPTION_INFORMATION* options, void* reply, DWORD replySize,
                            DWORD timeoutMs) {
  SimPaths::Answer answer;
  const Request request{icmp,
                        Ip4AddressOf(destination),
                        options ? options->Ttl : kUsualTtl,
                        reply ? replySize : 0,
                        sizeof(ICMP_ECHO_REPLY) + size + kErrorRoom,
                        timeoutMs};
  if (!Exchange("IcmpSendEcho", request, &answer)) return 0;
  ICMP_ECHO_REPLY out;
  std::memcpy(&out.Address, answer.from.bytes.data(), sizeof out.Address);
  out.Status = StatusOf(answer);
  out.RoundTripTime = WholeMs(answer.rttMs);
  std::memcpy(reply, &out, sizeof out);
  return 1;
}

DWORD SimIcmp::Icmp6SendEcho2(HANDLE icmp, const SOCKADDR_IN6*, const SOCKADDR_IN6* destination,
                              const void*, WORD size, const IP_OPTION_INFORMATION* options,
                              void* reply, DWORD replySize, DWORD timeoutMs) {
  Request request{icmp,
                  {},
                  options ? options->Ttl : kUsualTtl,
                  reply ? replySize : 0,
                  sizeof(ICMPV6_ECHO_REPLY) + size + kErrorRoom,
                  timeoutMs};
  request.destination.family = IpAddress::kV6;
  if (destination) std::ranges::copy(destination->sin6_addr, request.destination.bytes.begin());
  SimPaths::Answer answer;
  if (!Exchange("Icmp6SendEcho2", request, &answer)) return 0;
  ICMPV6_ECHO_REPLY out;
  std::memcpy(out.sin6_addr, answer.from.bytes.data(), sizeof out.sin6_addr);
  out.Status = StatusOf(answer);
  out.RoundTripTime = WholeMs(answer.rttMs);
  std::memcpy(reply, &out, sizeof out);
  return 1;
}

}  // namespace corvane::platform::sim
