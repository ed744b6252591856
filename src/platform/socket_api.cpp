#include "platform/socket_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

int SocketApi::WSAStartup(WORD) { return static_cast<int>(ERROR_CALL_NOT_IMPLEMENTED); }

int SocketApi::WSACleanup() {
  SetNotImplemented();
  return kSocketError;
}

DWORD SocketApi::WSAGetLastError() { return ERROR_CALL_NOT_IMPLEMENTED; }

int SocketApi::getaddrinfo(const char*, const char*, const ADDRINFO*, ADDRINFO**) {
  return static_cast<int>(WSAHOST_NOT_FOUND);
}

void SocketApi::freeaddrinfo(ADDRINFO*) {}

SOCKET SocketApi::socket(int, int, int) {
  SetNotImplemented();
  return INVALID_SOCKET;
}

int SocketApi::bind(SOCKET, const SOCKADDR_INET*, int) {
  SetNotImplemented();
  return kSocketError;
}

int SocketApi::setsockopt(SOCKET, int, int, const void*, int) {
  SetNotImplemented();
  return kSocketError;
}

int SocketApi::ioctlsocket(SOCKET, DWORD, ULONG*) {
  SetNotImplemented();
  return kSocketError;
}

int SocketApi::WSAIoctl(SOCKET, DWORD, const void*, DWORD, void*, DWORD, DWORD*) {
  SetNotImplemented();
  return kSocketError;
}

int SocketApi::WSARecvFrom(SOCKET, void*, DWORD, HANDLE) {
  SetNotImplemented();
  return kSocketError;
}

int SocketApi::sendto(SOCKET, const void*, int, int, const SOCKADDR_INET*, int) {
  SetNotImplemented();
  return kSocketError;
}

int SocketApi::closesocket(SOCKET) {
  SetNotImplemented();
  return kSocketError;
}

}  // namespace corvane::platform
