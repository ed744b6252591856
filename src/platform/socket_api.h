#pragma once
#include "platform/ip_types.h"

namespace corvane::platform {

using SOCKET = std::uintptr_t;

inline constexpr SOCKET INVALID_SOCKET = ~SOCKET{0};
inline constexpr int kSocketError = -1;  // SOCKET_ERROR
inline constexpr int SOCK_STREAM = 1;
inline constexpr int SOCK_RAW = 3;
inline constexpr int IPPROTO_ICMP = 1;
inline constexpr int IPPROTO_IP = 0;
inline constexpr int IPPROTO_IPV6 = 41;
inline constexpr int IPPROTO_ICMPV6 = 58;
inline constexpr int SOL_SOCKET = 0xFFFF;
inline constexpr int SO_SNDBUF = 0x1001;
inline constexpr int IP_TTL = 4;
inline constexpr int IPV6_UNICAST_HOPS = 4;
inline constexpr DWORD FIONBIO = 0x8004667E;
inline constexpr DWORD SIO_ROUTING_INTERFACE_QUERY = 0xC8000014;
inline constexpr DWORD AI_PASSIVE = 1;
inline constexpr DWORD WSA_IO_PENDING = 997;
inline constexpr DWORD WSAEACCES = 10013;
inline constexpr DWORD WSAEWOULDBLOCK = 10035;
inline constexpr DWORD WSAENETUNREACH = 10051;
inline constexpr DWORD WSAHOST_NOT_FOUND = 11001;

struct ADDRINFO {
  int ai_flags = 0;
  int ai_family = 0;
  int ai_socktype = 0;
  int ai_protocol = 0;
  std::size_t ai_addrlen = 0;
  char* ai_canonname = nullptr;
  SOCKADDR_INET* ai_addr = nullptr;  // ai_addrlen bytes of it
  ADDRINFO* ai_next = nullptr;
};

// Windows sockets, as far as the probes and the start of the service use them. An operation that
// fails gives kSocketError or INVALID_SOCKET, with the reason in WSAGetLastError() of the calling
// thread.
class SocketApi {
 public:
  virtual ~SocketApi() = default;
  virtual int WSAStartup(WORD version);  // 0, or the error itself
  virtual int WSACleanup();
  virtual DWORD WSAGetLastError();

  // 0, or the error itself; the list goes back by freeaddrinfo. A null name with AI_PASSIVE gives
  // the address to bind to.
  virtual int getaddrinfo(const char* name, const char* service, const ADDRINFO* hints,
                          ADDRINFO** result);
  virtual void freeaddrinfo(ADDRINFO* list);

  virtual SOCKET socket(int family, int type, int protocol);
  virtual int bind(SOCKET socket, const SOCKADDR_INET* address, int length);
  virtual int setsockopt(SOCKET socket, int level, int option, const void* value, int length);
  virtual int ioctlsocket(SOCKET socket, DWORD command, ULONG* argument);
  virtual int WSAIoctl(SOCKET socket, DWORD code, const void* input, DWORD inputSize, void* output,
                       DWORD outputSize, DWORD* returned);
  // Posts one read whose result nobody looks at; `event` (of ThreadApi) is set when it ends.
  // WSA_IO_PENDING is the ordinary answer. The buffer stays the caller's until the socket is
  // closed.
  virtual int WSARecvFrom(SOCKET socket, void* buffer, DWORD size, HANDLE event);
  // Bytes taken, or kSocketError with WSAEWOULDBLOCK while the send queue is full.
  virtual int sendto(SOCKET socket, const void* data, int size, int flags, const SOCKADDR_INET* to,
                     int length);
  virtual int closesocket(SOCKET socket);
};

}  // namespace corvane::platform
