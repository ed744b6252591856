#include "platform/sim/devices/sim_sockets.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

#include "platform/sim/world/world_text.h"
#include "platform/thread_api.h"

namespace corvane::platform::sim {

namespace {

constexpr DWORD kNotReady = 10091;        // WSASYSNOTREADY
constexpr DWORD kNotInitialised = 10093;  // WSANOTINITIALISED
constexpr DWORD kNotSocket = 10038;       // WSAENOTSOCK
constexpr DWORD kFault = 10014;           // WSAEFAULT
constexpr DWORD kFullMs = 1;              // what a call on a full queue takes
constexpr double kBytesPerMbitMs = 125.0;
constexpr BYTE kPublic4[4] = {203, 0, 113, 10};
constexpr BYTE kPublic6[16] = {0x20, 0x01, 0x0D, 0xB8, 0, 0x77, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x10};

}  // namespace

int SimSockets::WSAStartup(WORD) {
  const DWORD code = m_Gate.Enter("WSAStartup", kNotReady);
  if (code == ERROR_SUCCESS) ++m_Users;
  return static_cast<int>(code);
}

int SimSockets::WSACleanup() {
  if (m_Users > 0) --m_Users;  // a call that fails by injection has ended them all the same
  m_Gate.Enter("WSACleanup");
  return 0;
}

DWORD SimSockets::WSAGetLastError() { return m_Threads.GetLastError(); }

int SimSockets::Fail(DWORD code) {
  m_Threads.SetLastError(code);
  return kSocketError;
}

// Addresses in text are themselves; a name needs a way to the server that knows it.
DWORD SimSockets::Lookup(const char* name, int family, IpAddress* address) {
  address->family = family;
  address->bytes = {};
  if (!name) return ERROR_SUCCESS;  // the address to bind to: any
  IpAddress given;
  if (ReadIpAddress(name, &given)) {
    if (given.family != family) return WSAHOST_NOT_FOUND;
    *address = given;
    return ERROR_SUCCESS;
  }
  if (family == AF_INET) {
    std::ranges::copy(kPublic4, address->bytes.begin());
  } else {
    std::ranges::copy(kPublic6, address->bytes.begin());
  }
  return m_Machine.loop.WithLock([&] { return m_Paths.InterfaceTo(*address).has_value(); })
             ? ERROR_SUCCESS
             : WSAHOST_NOT_FOUND;
}

int SimSockets::getaddrinfo(const char* name, const char*, const ADDRINFO* hints,
                            ADDRINFO** result) {
  DWORD code = m_Gate.Enter("getaddrinfo", WSAHOST_NOT_FOUND);
  if (code == ERROR_SUCCESS && m_Users == 0) code = kNotInitialised;
  const int family = hints && hints->ai_family == AF_INET6 ? AF_INET6 : AF_INET;
  IpAddress address;
  if (code == ERROR_SUCCESS) code = Lookup(name, family, &address);
  if (code != ERROR_SUCCESS) return static_cast<int>(code);
  auto* const list = new ADDRINFO;
  list->ai_family = family;
  list->ai_socktype = hints ? hints->ai_socktype : 0;
  list->ai_addrlen = family == AF_INET6 ? sizeof(SOCKADDR_IN6) : sizeof(SOCKADDR_IN);
  list->ai_addr = new SOCKADDR_INET(SocketAddressOf(address));
  m_Machine.loop.WithLock([&] { m_Lists.insert(list); });
  *result = list;
  return 0;
}

void SimSockets::freeaddrinfo(ADDRINFO* list) {
  if (m_Machine.loop.WithLock([&] { return m_Lists.erase(list) == 1; })) {
    delete list->ai_addr;
    delete list;
  }
  m_Gate.Enter("freeaddrinfo");
}

SOCKET SimSockets::socket(int family, int, int) {
  DWORD code = m_Gate.Enter("socket", WSAEACCES);
  if (code == ERROR_SUCCESS && m_Users == 0) code = kNotInitialised;
  if (code != ERROR_SUCCESS) {
    Fail(code);
    return INVALID_SOCKET;
  }
  return m_Machine.loop.WithLock([&] {
    m_LastSocket += 4;
    m_Sockets[m_LastSocket].family = family;
    return m_LastSocket;
  });
}

template <class Serve>
int SimSockets::On(const char* operation, SOCKET socket, DWORD ordinary, Serve&& serve) {
  DWORD code = m_Gate.Enter(operation, ordinary);
  if (code == ERROR_SUCCESS) {
    code = m_Machine.loop.WithLock([&]() -> DWORD {
      const auto found = m_Sockets.find(socket);
      return found == m_Sockets.end() ? kNotSocket : serve(found->second);
    });
  }
  return code == ERROR_SUCCESS ? 0 : Fail(code);
}

int SimSockets::bind(SOCKET socket, const SOCKADDR_INET* address, int) {
  return On("bind", socket, WSAEACCES, [&](Socket&) { return address ? ERROR_SUCCESS : kFault; });
}

int SimSockets::setsockopt(SOCKET socket, int level, int option, const void* value, int length) {
  return On("setsockopt", socket, kFault, [&](Socket& one) -> DWORD {
    int number = 0;
    if (!value || length != sizeof number) return kFault;
    std::memcpy(&number, value, sizeof number);
    if (level == SOL_SOCKET && option == SO_SNDBUF) one.queueLimit = number;
    // IPV6_UNICAST_HOPS is the same number.
    if (level != SOL_SOCKET && option == IP_TTL) one.ttl = number;
    return ERROR_SUCCESS;
  });
}

int SimSockets::ioctlsocket(SOCKET socket, DWORD, ULONG* argument) {
  return On("ioctlsocket", socket, kFault,
            [&](Socket&) { return argument ? ERROR_SUCCESS : kFault; });
}

int SimSockets::WSAIoctl(SOCKET socket, DWORD code, const void* input, DWORD inputSize,
                         void* output, DWORD outputSize, DWORD* returned) {
  return On("WSAIoctl", socket, WSAENETUNREACH, [&](Socket&) -> DWORD {
    SOCKADDR_INET to;
    if (code != SIO_ROUTING_INTERFACE_QUERY || !input || inputSize > sizeof to || !output ||
        outputSize < sizeof to || !returned) {
      return kFault;
    }
    std::memcpy(static_cast<void*>(&to), input, inputSize);
    const IpAddress destination = AddressOf(to);
    const auto face = m_Paths.InterfaceTo(destination);
    if (!face) return WSAENETUNREACH;
    for (const IpAddress& own : face->ip->unicast) {
      if (own.family != destination.family) continue;
      const SOCKADDR_INET from = SocketAddressOf(own);
      std::memcpy(output, &from, sizeof from);
      *returned = sizeof from;
      return ERROR_SUCCESS;
    }
    return WSAENETUNREACH;
  });
}

int SimSockets::WSARecvFrom(SOCKET socket, void*, DWORD, HANDLE) {
  return On("WSARecvFrom", socket, kFault, [](Socket&) { return WSA_IO_PENDING; });
}

// Lets the link take what it has taken by now.
DWORD SimSockets::Send(Socket& socket, const IpAddress& to, int size) {
  const std::uint64_t now = m_Machine.loop.NowMs();
  if (!socket.started || now != socket.drainedToMs) {
    const auto face = m_Paths.InterfaceTo(to);
    if (!face) return WSAENETUNREACH;
    if (socket.started && socket.adapter >= 0) {
      const double could =
          socket.mbps * kBytesPerMbitMs * static_cast<double>(now - socket.drainedToMs);
      const double drained = std::min(could, socket.queued);
      socket.queued -= drained;
      m_Traffic.AddSent(socket.adapter, drained);
    }
    const SimWlanAdapter* const adapter = m_Paths.WirelessOf(*face);
    socket.adapter = adapter ? adapter->Index() : -1;
    socket.mbps = face->linkMbps;
    socket.drainedToMs = now;
    socket.started = true;
  }
  if (socket.queued + size > socket.queueLimit) return WSAEWOULDBLOCK;
  socket.queued += size;
  return ERROR_SUCCESS;
}

int SimSockets::sendto(SOCKET socket, const void* data, int size, int, const SOCKADDR_INET* to,
                       int) {
  DWORD answer = ERROR_SUCCESS;
  const int result = On("sendto", socket, WSAENETUNREACH, [&](Socket& one) -> DWORD {
    if (!data || size < 0 || !to) return kFault;
    if (!one.started) {
      const auto* bytes = static_cast<const BYTE*>(data);
      m_Sent = {{bytes, bytes + size}, one.ttl};
    }
    return answer = Send(one, AddressOf(*to), size);
  });
  if (answer != WSAEWOULDBLOCK) return result == 0 ? size : result;
  m_Threads.Sleep(kFullMs);
  return Fail(WSAEWOULDBLOCK);
}

int SimSockets::closesocket(SOCKET socket) {
  const bool closed = m_Machine.loop.WithLock([&] { return m_Sockets.erase(socket) == 1; });
  DWORD code = m_Gate.Enter("closesocket");
  if (code == ERROR_SUCCESS && !closed) code = kNotSocket;
  return code == ERROR_SUCCESS ? 0 : Fail(code);
}

std::size_t SimSockets::Open() {
  return m_Machine.loop.WithLock([this] { return m_Sockets.size() + m_Lists.size(); });
}

SimSockets::Sent SimSockets::LastSent() {
  return m_Machine.loop.WithLock([this] { return m_Sent; });
}

}  // namespace corvane::platform::sim
