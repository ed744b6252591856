// Where a token lies in memory, and that there may be none for it. Asked over a real socket.

#include <gtest/gtest.h>
#include <malloc.h>
#include <openssl/rsa.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>

#include "any_host/pipe_peer.h"
#include "any_host/temp_directory.h"
#include "foundation/singleton.h"
#include "host/client_token_maker.h"
#include "pipe/named_pipe_listener_json.h"
#include "platform/base64.h"
#include "platform/linux/linux_host.h"
#include "platform/platform.h"
#include "platform/sim/world/world_loader.h"
#include "platform/thread_api.h"

namespace {

std::atomic<std::size_t> g_RefusedSize{0};  // bytes; 0: none
std::atomic<int> g_Refused{0};

constexpr char kSecret[] = "what only the client knows";
std::atomic<bool> g_LookForSecret{false};
std::atomic<int> g_SecretsLeft{0};  // blocks that were given back with the secret in them

// noinline: the bytes of a block that goes are not the compiler's to forget.
[[gnu::noinline]] void GiveBack(void* memory) noexcept {
  if (g_LookForSecret && memory &&
      memmem(memory, malloc_usable_size(memory), kSecret, sizeof kSecret - 1)) {
    ++g_SecretsLeft;
  }
  std::free(memory);
}

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
[[gnu::noinline]] void operator delete(void* memory) noexcept { GiveBack(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { GiveBack(memory); }
[[gnu::noinline]] void operator delete(void* memory, const std::nothrow_t&) noexcept {
  GiveBack(memory);
}

namespace corvane::test {

using namespace platform;
using namespace platform::linux_host;

class TokenMemory : public testing::Test {
 protected:
  TokenMemory() {
    listener->Initialize(u"Test", false);
    listener->BeginThread();
    client.emplace(Connect());
    EXPECT_EQ(Ask("AAAA"), u"{ \"status\":\"error\", \"code\":1002 }");  // has the key made
  }
  ~TokenMemory() override { Stop(); }

  void Stop() {
    if (!listener) return;
    listener->Shutdown();
    listener.reset();
    Os().threads.AwaitAbandoned(10'000);
    singletons::DropAll();  // the key among them
  }
  PipePeer Connect() const {
    for (int i = 0; i < 500 && !PipePeer(home / "pipe/Test").IsConnected(); ++i)
      Os().threads.Sleep(10);
    return PipePeer(home / "pipe/Test");
  }
  std::string Token(const std::string& plain) const {
    return ToBase64(
        ClientTokenMaker(home / "client_key.pub.pem").Encrypt(plain, RSA_PKCS1_PADDING));
  }
  std::u16string Ask(const std::string& token) {
    EXPECT_TRUE(client->Send(u"{\"art\":\"" + std::u16string(token.begin(), token.end()) + u"\"}"));
    return client->Receive().value_or(u"");
  }

  const TempDirectory home;
  const LinuxHost host{{.home = home.Path()}, sim::ParseWorld("{}", "token memory")};
  CSmartPointer<CNamedPipeListenerJson> listener = CNamedPipeListenerJson::CreateObject();
  std::optional<PipePeer> client;
};

TEST_F(TokenMemory, IsACodeWhenItRunsOut) {
  // No other text of the service is as long as the session's name.
  const std::string session(211, 's');
  const std::string token = Token(session + ",1,1,x");
  EXPECT_EQ(Ask(token), u"{ \"status\":\"error\", \"code\":1005 }");
  g_RefusedSize = (session.size() + 1) * sizeof(char16_t);
  EXPECT_EQ(Ask(token), u"{ \"status\":\"error\", \"code\":1004 }");
  g_RefusedSize = 0;
  EXPECT_EQ(g_Refused, 1);
  // And the client is served on.
  EXPECT_EQ(Ask(token), u"{ \"status\":\"error\", \"code\":1005 }");
}

TEST_F(TokenMemory, IsGivenBackWithoutTheTokensText) {
  std::string plain;
  plain.reserve(200);  // leaves no copy behind when it grows
  plain.append("s,1,1,").append(kSecret);
  const std::string first = Token(plain), second = Token("s,1,2,");
  const std::string third = Token(plain);
  g_LookForSecret = true;
  for (const std::string* token : {&first, &second, &third})
    EXPECT_EQ(Ask(*token), u"{ \"status\":\"error\", \"code\":1005 }");
  Stop();
  g_LookForSecret = false;
  EXPECT_EQ(g_SecretsLeft, 0);
}

}  // namespace corvane::test
