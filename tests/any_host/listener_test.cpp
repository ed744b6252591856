// The program's own listener over the pipes of the host.

#include <gtest/gtest.h>

#include "any_host/pipe_kernel.h"
#include "any_host/pipe_peer.h"
#include "foundation/singleton.h"
#include "pipe/named_pipe_listener.h"
#include "platform/console_api.h"
#include "platform/crypto_api.h"
#include "platform/event_trace_api.h"
#include "platform/file_api.h"
#include "platform/ip_helper_api.h"
#include "platform/network_list_api.h"
#include "platform/perf_counter_api.h"
#include "platform/platform.h"
#include "platform/power_api.h"
#include "platform/registry_api.h"
#include "platform/session_api.h"
#include "platform/wlan_api.h"

namespace corvane::test {

using namespace platform;

// What else the program asks of a platform is not implemented here, and it goes on without.
class HostListener : public testing::Test, protected HostKernel {
 protected:
  HostListener() { SetPlatform(&it); }
  ~HostListener() override {
    singletons::DropAll();
    EXPECT_EQ(kernel.pipes.OpenHandles(), 0u);
    EXPECT_EQ(kernel.pipes.OpenRecords(), 0u);
    EXPECT_EQ(kernel.threads.OpenHandles(), 0u);
    SetPlatform(nullptr);
  }

  PipeKernel kernel;
  ConsoleApi console;
  CryptoApi crypto;
  EventTraceApi eventTrace;
  FileApi files;
  IpHelperApi ipHelper;
  NetworkListApi networkList;
  PerfCounterApi perfCounters;
  PowerApi power;
  RegistryApi registry;
  SessionApi session;
  WlanApi wlan;
  Platform it{.threads = kernel.threads,
              .clock = clock,
              .console = console,
              .crypto = crypto,
              .eventTrace = eventTrace,
              .files = files,
              .ipHelper = ipHelper,
              .networkList = networkList,
              .perfCounters = perfCounters,
              .power = power,
              .registry = registry,
              .session = session,
              .wlan = wlan,
              .pipes = kernel.pipes};
};

TEST_F(HostListener, EchoesToItsClientsAndClosesThemAtTheStop) {
  const auto listener = CNamedPipeListener::CreateObject();
  listener->Initialize(kernel.pipePath + std::u16string_view(u"\\\\.\\pipe\\").size(), false);
  listener->BeginThread();
  std::vector<PipePeer> clients;
  for (int i = 0; i < 200 && clients.empty(); ++i) {
    kernel.threads.Sleep(10);
    if (PipePeer client(kernel.place); client.IsConnected()) clients.push_back(std::move(client));
  }
  for (int i = 0; i < 9; ++i) clients.emplace_back(kernel.place);
  for (PipePeer& client : clients) {
    EXPECT_TRUE(client.Send(u"all of us"));
    EXPECT_EQ(client.Receive(), u"ECHO Server Got:\r\nall of us\r\nEOR\r\n");
  }
  clients.pop_back();
  // Longer than the buffer that it is answered in: cut, and answered all the same.
  const std::u16string longest(499'999, u'x');
  EXPECT_TRUE(clients[0].Send(longest));
  EXPECT_EQ(clients[0].Receive(), (u"ECHO Server Got:\r\n" + longest).substr(0, 499'999));
  listener->Shutdown();
  EXPECT_TRUE(kernel.threads.AwaitAbandoned(10'000));
  for (PipePeer& client : clients) EXPECT_TRUE(client.IsAtEnd());
}

}  // namespace corvane::test
