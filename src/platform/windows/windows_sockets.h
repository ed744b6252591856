#pragma once
#include "platform/socket_api.h"

namespace corvane::platform::windows {

// Windows sockets, version 2.
class WindowsSockets final : public SocketApi {
 public:
  int WSAStartup(WORD version) override;
  int WSACleanup() override;
  DWORD WSAGetLastError() override;
  int getaddrinfo(const char* name, const char* service, const ADDRINFO* hints,
                  ADDRINFO** result) override;
  void freeaddrinfo(ADDRINFO* list) override;
  SOCKET socket(int family, int type, int protocol) override;
  int bind(SOCKET socket, const SOCKADDR_INET* address, int length) override;
  int setsockopt(SOCKET socket, int level, int option, const void* value, int length) override;
  int ioctlsocket(SOCKET socket, DWORD command, ULONG* argument) override;
  int WSAIoctl(SOCKET socket, DWORD code, const void* input, DWORD inputSize, void* output,
               DWORD outputSize, DWORD* returned) override;
  int WSARecvFrom(SOCKET socket, void* buffer, DWORD size, HANDLE event) override;
  int sendto(SOCKET socket, const void* data, int size, int flags, const SOCKADDR_INET* to,
             int length) override;
  int closesocket(SOCKET socket) override;
};

}  // namespace corvane::platform::windows
