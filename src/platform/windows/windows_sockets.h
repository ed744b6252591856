#pragma once
#include <cstddef>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "platform/socket_api.h"

namespace corvane::platform::windows {

// Windows sockets, version 2 (ws2_32.dll). The last error is that of the calling thread's last
// failing operation here, and its last error of all, too.
class WindowsSockets final : public SocketApi {
 public:
  WindowsSockets();
  // Sockets that are still open keep what the system may write to.
  ~WindowsSockets() override;

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

  std::size_t PendingReads();  // that have not been ended by closing their socket

 private:
  struct Read;

  void Drop(const Read* read);
  void EndReads(SOCKET socket);

  std::mutex m_Mutex;  // guards the reads
  std::unordered_multimap<SOCKET, std::unique_ptr<Read>> m_Reads;
};

}  // namespace corvane::platform::windows
