// A token that the service has no memory for, asked over a real socket.

#include <gtest/gtest.h>
#include <openssl/rsa.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "foundation/singleton.h"
#include "host/client_token_maker.h"
#include "host/pipe_peer.h"
#include "host/temp_directory.h"
#include "pipe/named_pipe_listener_json.h"
#include "platform/base64.h"
#include "platform/linux/linux_host.h"
#include "platform/platform.h"
#include "platform/sim/world/world_loader.h"
#include "platform/thread_api.h"

namespace {

std::atomic<std::size_t> g_RefusedSize{0};  // bytes; 0: none
std::atomic<int> g_Refused{0};

}  // namespace

// All of this program's memory; what is not refused is malloc's. Inlined they are taken for a
// mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (size == g_RefusedSize && size != 0) {
    ++g_Refused;
    throw std::bad_alloc();
  }
  if (void* const memory = std::malloc(size ? size : 1)) return memory;
  throw std::bad_alloc();
}
// What this file's delete gives back has to come from this file.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}

namespace corvane::test {

using namespace platform;
using namespace platform::linux_host;

TEST(TokenMemory, IsACodeWhenItRunsOut) {
  const TempDirectory home;
  const LinuxHost host({.home = home.Path()}, sim::ParseWorld("{}", "token memory"));
  auto listener = CNamedPipeListenerJson::CreateObject();
  listener->Initialize(u"Test", false);
  listener->BeginThread();
  const auto connect = [&] {
    for (int i = 0; i < 500 && !PipePeer(home / "pipe/Test").IsConnected(); ++i)
      Os().threads.Sleep(10);
    return PipePeer(home / "pipe/Test");
  };
  PipePeer client = connect();
  EXPECT_TRUE(client.Send(u"{\"art\":\"AAAA\"}"));  // has the key made
  EXPECT_EQ(client.Receive(), u"{ \"status\":\"error\", \"code\":1002 }");

  // No other text of the service is as long as the session's name.
  const std::string session(211, 's');
  const std::string token = ToBase64(
      ClientTokenMaker(home / "client_key.pub.pem").Encrypt(session + ",1,1,x", RSA_PKCS1_PADDING));
  const std::u16string request =
      u"{\"art\":\"" + std::u16string(token.begin(), token.end()) + u"\"}";
  EXPECT_TRUE(client.Send(request));
  EXPECT_EQ(client.Receive(), u"{ \"status\":\"error\", \"code\":1005 }");
  g_RefusedSize = (session.size() + 1) * sizeof(char16_t);
  EXPECT_TRUE(client.Send(request));
  EXPECT_EQ(client.Receive(), u"{ \"status\":\"error\", \"code\":1004 }");
  g_RefusedSize = 0;
  EXPECT_EQ(g_Refused, 1);
  EXPECT_TRUE(client.Send(request));  // and the client is served on
  EXPECT_EQ(client.Receive(), u"{ \"status\":\"error\", \"code\":1005 }");

  listener->Shutdown();
  listener.reset();
  Os().threads.AwaitAbandoned(10'000);
  singletons::DropAll();  // the key among them
}

}  // namespace corvane::test
