// Counts what a blast allocates between two packets. This file's operator new serves the whole test
// program.

#include <atomic>
#include <cstdlib>
#include <new>

#include "platform/platform.h"
#include "probes/icmp_helper_singleton.h"
#include "probes/probe_fixture.h"

namespace {

std::atomic<std::uint64_t> g_Allocations{0};

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t bytes) {
  g_Allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* const memory = std::malloc(bytes ? bytes : 1)) return memory;
  throw std::bad_alloc();
}
// What this file's delete gives back has to come from this file.
[[gnu::noinline]] void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  g_Allocations.fetch_add(1, std::memory_order_relaxed);
  return std::malloc(bytes ? bytes : 1);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}

namespace corvane::test {

// The PC's sockets; notes how many passes of the sender's loop have allocated something.
class WatchedSockets : public platform::SocketApi {
 public:
  explicit WatchedSockets(SocketApi& sockets) : m_Sockets(sockets) {}
  platform::DWORD WSAGetLastError() override { return m_Sockets.WSAGetLastError(); }
  int getaddrinfo(const char* name, const char* service, const platform::ADDRINFO* hints,
                  platform::ADDRINFO** result) override {
    return m_Sockets.getaddrinfo(name, service, hints, result);
  }
  void freeaddrinfo(platform::ADDRINFO* list) override { m_Sockets.freeaddrinfo(list); }
  platform::SOCKET socket(int family, int type, int protocol) override {
    return m_Sockets.socket(family, type, protocol);
  }
  int bind(platform::SOCKET socket, const platform::SOCKADDR_INET* to, int length) override {
    return m_Sockets.bind(socket, to, length);
  }
  int ioctlsocket(platform::SOCKET socket, platform::DWORD command,
                  platform::ULONG* argument) override {
    return m_Sockets.ioctlsocket(socket, command, argument);
  }
  int sendto(platform::SOCKET socket, const void* data, int size, int flags,
             const platform::SOCKADDR_INET* to, int length) override {
    if (calls > 0 && g_Allocations != m_Left) ++allocating;
    ++calls;
    const int result = m_Sockets.sendto(socket, data, size, flags, to, length);
    m_Left = g_Allocations;
    return result;
  }
  int closesocket(platform::SOCKET socket) override { return m_Sockets.closesocket(socket); }

  std::uint64_t calls = 0, allocating = 0;

 private:
  SocketApi& m_Sockets;
  std::uint64_t m_Left = 0;  // allocations when the last call ended
};

using BlastAllocationTest = ProbeTest;

TEST_F(BlastAllocationTest, NoPassOfTheLoopAllocates) {
  Start(OfficeWorld());
  const platform::Platform& pc = Pc().GetPlatform();
  WatchedSockets sockets(pc.sockets);
  const platform::Platform watched{.threads = pc.threads,
                                   .clock = pc.clock,
                                   .console = pc.console,
                                   .crypto = pc.crypto,
                                   .eventTrace = pc.eventTrace,
                                   .files = pc.files,
                                   .ipHelper = pc.ipHelper,
                                   .networkList = pc.networkList,
                                   .perfCounters = pc.perfCounters,
                                   .power = pc.power,
                                   .registry = pc.registry,
                                   .session = pc.session,
                                   .wlan = pc.wlan,
                                   .sockets = sockets};
  platform::SetPlatform(nullptr);
  platform::SetPlatform(&watched);
  EXPECT_GT(CICMPHelperSingleton::GetInstance().blast(kFirst, "192.168.1.1", "", platform::AF_INET,
                                                      1.0, 1),
            0.0);
  EXPECT_GT(sockets.calls, 1000u);
  EXPECT_LE(sockets.allocating, 1u) << "the simulated counters allocate when they are read";
  platform::SetPlatform(nullptr);
  platform::SetPlatform(&pc);
}

}  // namespace corvane::test
