#include "probes/icmp_helper_singleton.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "foundation/format.h"
#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/console_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "probes/blast_meter.h"
#include "probes/blast_packet.h"
#include "probes/ip4_text.h"
#include "probes/resolve_address.h"
#include "probes/route_scope.h"

namespace corvane {

namespace {

constexpr char kClassName[] = "CICMPHelperSingleton";
constexpr int kSendBuffer = 0xA00000;  // bytes
constexpr std::size_t kReceiveBuffer = 65535;
constexpr int kOneHop = 1;                        // the packets stop at the gateway
constexpr std::uint32_t kRouteMask = 0x00FFFFFF;  // 255.255.255.0, network order
constexpr int kRouteTries = 3;
constexpr std::uint32_t kRoutePauseMs = 10;
constexpr double kSampleSecs = 1.0;

template <class... Args>
void Print(const char* format, const Args&... args) {
  Os().console.WriteOutput(FormatA(format, args...));
}

// The socket of one blast with the event of its read; both go with it.
class BlastSocket {
 public:
  explicit BlastSocket(platform::WORD family) : m_bSix(family == platform::AF_INET6) {
    m_Socket = Os().sockets.socket(family, platform::SOCK_RAW,
                                   m_bSix ? platform::IPPROTO_ICMPV6 : platform::IPPROTO_ICMP);
  }
  ~BlastSocket() {
    if (IsOpen())
      GiveBack(kClassName, "closesocket", [this] { Os().sockets.closesocket(m_Socket); });
    if (m_hEvent)
      GiveBack(kClassName, "CloseHandle", [this] { Os().threads.CloseHandle(m_hEvent); });
  }
  BlastSocket(const BlastSocket&) = delete;
  BlastSocket& operator=(const BlastSocket&) = delete;

  bool IsOpen() const { return m_Socket != platform::INVALID_SOCKET; }
  platform::SOCKET Get() const { return m_Socket; }

  bool Prepare() {
    auto& sockets = Os().sockets;
    if (sockets.setsockopt(m_Socket, platform::SOL_SOCKET, platform::SO_SNDBUF, &kSendBuffer,
                           sizeof kSendBuffer) != 0) {
      Print("CICMPHelperSingleton::blast: setsockopt() failed with error code %d\n", Code());
    }
    platform::ULONG nonBlocking = 1;
    if (sockets.ioctlsocket(m_Socket, platform::FIONBIO, &nonBlocking) == 0) return true;
    Print("CICMPHelperSingleton::blast: ioctlsocket( ... FIONBIO ) failed with error: %i\n",
          Code());
    return false;
  }
  bool Bind(const platform::SOCKADDR_INET& local) {
    if (Os().sockets.bind(m_Socket, &local, SizeOf(local)) == 0) return true;
    Print("CICMPHelperSingleton::blast: bind() failed with error code %d\n", Code());
    return false;
  }
  // Absorbs what arrives; nobody reads it.
  void PostRecvfrom() {
    m_Received.resize(kReceiveBuffer);
    m_hEvent = Os().threads.CreateEventW(platform::TRUE, platform::FALSE, "blast");
    if (Os().sockets.WSARecvFrom(m_Socket, m_Received.data(),
                                 static_cast<platform::DWORD>(m_Received.size()), m_hEvent) == 0) {
      return;
    }
    if (Code() != static_cast<int>(platform::WSA_IO_PENDING)) {
      Print("CICMPHelperSingleton::PostRecvfrom: WSARecvFrom() failed with error code %d\n",
            Code());
    }
  }
  void SetTtl() {
    const int level = m_bSix ? platform::IPPROTO_IPV6 : platform::IPPROTO_IP;
    const int option = m_bSix ? platform::IPV6_UNICAST_HOPS : platform::IP_TTL;
    if (Os().sockets.setsockopt(m_Socket, level, option, &kOneHop, sizeof kOneHop) != 0) {
      Print("SetTtl(): setsockopt() failed with error code %d\n", Code());
    }
  }
  std::uint16_t ChecksumOf(const std::vector<std::uint8_t>& packet,
                           const platform::SOCKADDR_INET& to) {
    if (!m_bSix) return InternetChecksum(packet.data(), packet.size());
    return ComputeIcmp6PseudoHeaderChecksum(packet, to);
  }
  static int Code() { return static_cast<int>(Os().sockets.WSAGetLastError()); }

 private:
  std::uint16_t ComputeIcmp6PseudoHeaderChecksum(const std::vector<std::uint8_t>& packet,
                                                 const platform::SOCKADDR_INET& to) {
    platform::SOCKADDR_INET source;
    platform::DWORD returned = 0;
    if (Os().sockets.WSAIoctl(m_Socket, platform::SIO_ROUTING_INTERFACE_QUERY, &to, sizeof to,
                              &source, sizeof source, &returned) != 0) {
      Print(
          "CICMPHelperSingleton::ComputeIcmp6PseudoHeaderChecksum: WSAIoctl() failed with error "
          "code %d\n",
          Code());
      return 0xFFFF;
    }
    return Icmp6Checksum(Ip6Of(source), Ip6Of(to), packet.data(), packet.size());
  }

  const bool m_bSix;
  platform::SOCKET m_Socket = platform::INVALID_SOCKET;
  platform::HANDLE m_hEvent = nullptr;
  std::vector<std::uint8_t> m_Received;
};

// Sends the packet as fast as the socket takes it; the largest sample, in Mbps. Nothing is
// allocated here: that would be measured, too.
double Flood(platform::SOCKET socket, const std::vector<std::uint8_t>& packet,
             const platform::SOCKADDR_INET& to, double seconds, CBlastMeter& meter) {
  const int size = static_cast<int>(packet.size()), length = SizeOf(to);
  const std::uint64_t start = Os().clock.GetTickCount64();
  double largest = 0.0, nextSample = kSampleSecs;
  for (bool last = false; !last;) {
    if (Os().sockets.sendto(socket, packet.data(), size, 0, &to, length) ==
        platform::kSocketError) {
      const platform::DWORD code = Os().sockets.WSAGetLastError();
      if (code != platform::WSAEWOULDBLOCK) {
        Print("CICMPHelperSingleton::blast: sendto() failed with error code %d\n", code);
        break;
      }
    }
    const double t = static_cast<double>(Os().clock.GetTickCount64() - start) / 1000.0;
    last = t > seconds;
    if (t >= nextSample) {
      largest = std::max(largest, meter.Sample());
      nextSample += kSampleSecs;
    }
  }
  return largest;
}

}  // namespace

double CICMPHelperSingleton::blast(std::uint32_t ifIndex, const std::string& host,
                                   const std::string& maskText, platform::WORD family,
                                   double seconds, std::uint32_t connectedCount) {
  const CCritSecLock lock(m_Lock);
  return Contained(kClassName, "blast", 0.0, [&] {
    const auto target = ResolveAddress(0, host.c_str(), nullptr, family);
    if (!target) {
      Print("CICMPHelperSingleton::blast: Bad name %s\n", host);
      return 0.0;
    }
    const auto local = ResolveAddress(platform::AI_PASSIVE, nullptr, "0", family);
    if (!local) {
      Print("CICMPHelperSingleton::blast: Unable to obtain the bind address!\n");
      return 0.0;
    }
    return Blast({*target, maskText, ifIndex, seconds, connectedCount}, *local);
  });
}

double CICMPHelperSingleton::Blast(const Target& target, const platform::SOCKADDR_INET& local) {
  const platform::WORD family = target.address.si_family;
  BlastSocket socket(family);
  if (!socket.IsOpen()) {
    Print("CICMPHelperSingleton::blast: socket() failed with error code %d\n", BlastSocket::Code());
    return 0.0;
  }
  if (!socket.Prepare()) return 0.0;
  std::vector<std::uint8_t> packet =
      BlastPacket(family, static_cast<std::uint16_t>(Os().threads.GetCurrentThreadId()),
                  static_cast<std::uint16_t>(Os().clock.GetTickCount64()));
  if (!socket.Bind(local)) return 0.0;
  socket.PostRecvfrom();
  socket.SetTtl();
  StoreChecksum(&packet, socket.ChecksumOf(packet, target.address));

  const RouteScope routeScope(m_Route);
  if (target.connectedCount > 1) {
    if (!AddRoute(target)) return 0.0;
  } else {
    LOG_INFO(u"CICMPHelperSingleton::blast: SKIP adding IP-route entry [NumConnectedIF=%u]\n",
             target.connectedCount);
  }
  CBlastMeter meter;
  if (!meter.InitPdhCountersForIF(target.ifIndex)) {
    Print("CICMPHelperSingleton::blast: Error! failed to Initialize PDH counters\n");
    return 0.0;
  }
  return Flood(socket.Get(), packet, target.address, target.seconds, meter);
}

bool CICMPHelperSingleton::AddRoute(const Target& target) {
  const bool six = target.address.si_family == platform::AF_INET6;
  const std::uint32_t given = ReadIp4(target.maskText).value_or(0);
  const std::uint32_t mask = given == 0 || given == 0xFFFFFFFF ? kRouteMask : given;
  for (int tries = 0; tries < kRouteTries; ++tries) {
    if (tries > 0) Os().threads.Sleep(kRoutePauseMs);
    platform::DWORD error = 0;
    const Ip4Address ip4 = six ? 0 : Ip4Of(target.address);
    if (six ? m_Route.AddIP6Route(target.ifIndex, target.address, target.address, &error)
            : m_Route.AddIP4Route(target.ifIndex, ip4 & mask, kRouteMask, ip4, &error)) {
      return true;
    }
    if (error == platform::ERROR_ACCESS_DENIED) break;
  }
  Print("CICMPHelperSingleton::blast:[route abort] Failed to add %s route entry\n",
        six ? "IPV6" : "IPV4");
  return false;
}

}  // namespace corvane
