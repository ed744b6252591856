#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>

#include "platform/sim/devices/sim_paths.h"
#include "platform/sim/kernel/seam_gate.h"
#include "platform/socket_api.h"

namespace corvane::platform {
class ThreadApi;
}

namespace corvane::platform::sim {

// Windows sockets between a start and an end: names, and raw sockets that only send. What a socket
// takes drains at the rate of the link that it goes over. Every name has one address of each
// family that some interface has a gateway of.
class SimSockets final : public SocketApi {
 public:
  SimSockets(SimMachine& machine, SeamGate& gate, ThreadApi& threads, SimPaths& paths,
             SimTraffic& traffic)
      : m_Machine(machine), m_Gate(gate), m_Threads(threads), m_Paths(paths), m_Traffic(traffic) {}

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
  // A call on a full queue takes a moment.
  int sendto(SOCKET socket, const void* data, int size, int flags, const SOCKADDR_INET* to,
             int length) override;
  int closesocket(SOCKET socket) override;

  int Users() const { return m_Users; }  // starts that no cleanup has ended
  std::size_t Open();                    // sockets and lists of addresses
  // What the last packet of the socket sent last held, and its time to live.
  struct Sent {
    std::vector<BYTE> packet;
    int ttl = 0;
  };
  Sent LastSent();

 private:
  struct Socket {
    int family = 0;
    int ttl = 128;
    double queueLimit = 65'536.0;  // bytes
    double queued = 0.0;
    double mbps = 0.0;
    int adapter = -1;
    std::uint64_t drainedToMs = 0;
    bool started = false;
  };
  int Fail(DWORD code);  // kSocketError
  DWORD Lookup(const char* name, int family, IpAddress* address);
  // Runs `serve(socket)` under the devices' lock, behind gate and handle.
  template <class Serve>
  int On(const char* operation, SOCKET socket, DWORD ordinary, Serve&& serve);
  DWORD Send(Socket& socket, const IpAddress& to, int size);

  SimMachine& m_Machine;
  SeamGate& m_Gate;
  ThreadApi& m_Threads;
  SimPaths& m_Paths;
  SimTraffic& m_Traffic;
  std::atomic<int> m_Users{0};
  std::map<SOCKET, Socket> m_Sockets;
  std::set<ADDRINFO*> m_Lists;
  SOCKET m_LastSocket = 0x100;
  Sent m_Sent;
};

}  // namespace corvane::platform::sim
