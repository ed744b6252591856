#pragma once
#include <cstddef>
#include <cstdint>
#include <map>

#include "platform/icmp_api.h"
#include "platform/sim/devices/sim_paths.h"
#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform {
class ThreadApi;
}

namespace corvane::platform::sim {

// Echo requests over the simulated PC's routers. An echo takes its round trip time.
class SimIcmp final : public IcmpApi {
 public:
  SimIcmp(SimMachine& machine, SeamGate& gate, ThreadApi& threads, SimPaths& paths)
      : m_Machine(machine), m_Gate(gate), m_Threads(threads), m_Paths(paths) {}

  HANDLE IcmpCreateFile() override { return Create("IcmpCreateFile", AF_INET); }
  HANDLE Icmp6CreateFile() override { return Create("Icmp6CreateFile", AF_INET6); }
  // A call that fails by injection has closed the handle all the same.
  BOOL IcmpCloseHandle(HANDLE icmp) override;
  DWORD IcmpSendEcho(HANDLE icmp, DWORD destination, const void* data, WORD size,
                     const IP_OPTION_INFORMATION* options, void* reply, DWORD replySize,
                     DWORD timeoutMs) override;
  DWORD Icmp6SendEcho2(HANDLE icmp, const SOCKADDR_IN6* source, const SOCKADDR_IN6* destination,
                       const void* data, WORD size, const IP_OPTION_INFORMATION* options,
                       void* reply, DWORD replySize, DWORD timeoutMs) override;

  std::size_t Open();  // handles

 private:
  HANDLE Create(const char* operation, WORD family);
  DWORD Fail(DWORD code);  // 0, with the code as the thread's last error
  struct Request {
    HANDLE icmp = nullptr;
    IpAddress destination;
    BYTE ttl = 128;
    std::size_t room = 0, needed = 0;  // bytes of the reply buffer
    DWORD timeoutMs = 0;
  };
  // False, with the last error set, when nothing comes back.
  bool Exchange(const char* operation, const Request& request, SimPaths::Answer* answer);

  SimMachine& m_Machine;
  SeamGate& m_Gate;
  ThreadApi& m_Threads;
  SimPaths& m_Paths;
  std::map<std::uintptr_t, WORD> m_Handles;  // with the family
  std::uintptr_t m_LastHandle = 0xE000;
};

}  // namespace corvane::platform::sim
