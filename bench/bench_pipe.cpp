// What the pipes of the Linux host cost: an answer beside that of a bare echo over the same kind of
// socket, the check of a client's token beside the decryption alone and beside a bare echo that
// decrypts, clients that are silent, and an event for many beside as many bare writes. Compare
// medians of one run:
//
//   cp build/release/bench_pipe corvane-client  # only companions by name have their tokens
//   accepted
//   ./corvane-client --benchmark_repetitions=9 --benchmark_report_aggregates_only=true

#include <benchmark/benchmark.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "any_host/temp_directory.h"
#include "foundation/singleton.h"
#include "pipe/named_pipe_listener_json.h"
#include "pipe/named_pipe_listener_notifications_json.h"
#include "platform/base64.h"
#include "platform/linux/linux_host.h"
#include "platform/linux/openssl_objects.h"
#include "platform/platform.h"
#include "platform/sim/world/world_loader.h"
#include "platform/thread_api.h"

namespace corvane {
namespace {

using namespace platform;
using namespace platform::linux_host;

constexpr int kSilentClients = 255;
constexpr std::size_t kSubscribers = 250;
constexpr std::size_t kTokens = 64;

sockaddr_un AddressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), std::min(path.size(), sizeof address.sun_path - 1));
  return address;
}

int Connect(const std::string& path) {
  const sockaddr_un address = AddressOf(path);
  for (;;) {
    const int client = socket(AF_UNIX, SOCK_STREAM, 0);
    if (connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
      return client;
    close(client);
    std::this_thread::yield();
  }
}

// Sends a message and takes what comes back, up to its NUL; false when the other end has gone.
bool Ask(int client, const std::string& message) {
  char block[65'536];
  if (send(client, message.data(), message.size(), MSG_NOSIGNAL) !=
      static_cast<ssize_t>(message.size())) {
    return false;
  }
  for (;;) {
    const ssize_t count = recv(client, block, sizeof block, 0);
    if (count < 2) return false;
    if (block[count - 1] == '\0' && block[count - 2] == '\0') return true;
  }
}

std::string Message(const std::string& ascii) {
  std::string bytes;
  for (const char c : ascii) bytes.append({c, '\0'});
  return bytes.append(2, '\0');
}

// The host with one listener, in a home directory of its own.
template <class Listener>
class Served {
 public:
  Served() : m_Host({.home = m_Home.Path()}, sim::ParseWorld("{}", "bench")) {
    m_pListener = Listener::CreateObject();
    m_pListener->Initialize(u"Bench", std::is_base_of_v<INotificationProvider, Listener>);
    m_pListener->BeginThread();
  }
  ~Served() {
    m_pListener->Shutdown();
    m_pListener.reset();
    Os().threads.AwaitAbandoned(10'000);
    singletons::DropAll();  // the key among them
  }
  Served(const Served&) = delete;
  Served& operator=(const Served&) = delete;

  std::string Path() const { return m_Home / "pipe/Bench"; }
  Listener& Get() const { return *m_pListener; }
  std::string PrivateKeyPath() const { return m_Home / "private/client_key.pem"; }
  std::string PublicKeyPath() const { return m_Home / "client_key.pub.pem"; }

 private:
  test::TempDirectory m_Home;
  LinuxHost m_Host;
  CSmartPointer<Listener> m_pListener;
};

void Run(benchmark::State& state, int client, const std::vector<std::string>& messages) {
  std::size_t next = 0;
  for (auto _ : state) {
    if (!Ask(client, messages[next++ % messages.size()])) {
      state.SkipWithError("the server has gone");
      break;
    }
  }
  close(client);
}

// A server that answers each message by itself, after `work`.
void Echo(benchmark::State& state, const std::function<bool()>& work) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) return state.SkipWithError("no sockets");
  std::thread server([end = ends[1], &work] {
    char block[65'536];
    for (ssize_t count; (count = recv(end, block, sizeof block, 0)) > 0;) {
      if (!work() || send(end, block, static_cast<std::size_t>(count), MSG_NOSIGNAL) < 0) break;
    }
    close(end);
  });
  Run(state, ends[0], {Message(std::string(400, 'x'))});
  server.join();
}

void BareEcho(benchmark::State& state) {
  Echo(state, [] { return true; });
}
BENCHMARK(BareEcho)->UseRealTime();

void ListenerEcho(benchmark::State& state) {
  const Served<CNamedPipeListener> served;
  Run(state, Connect(served.Path()), {Message(std::string(400, 'x'))});
}
BENCHMARK(ListenerEcho)->UseRealTime();

std::string Encrypt(const std::string& publicKeyPath, const std::string& plain) {
  const Bio file(BIO_new_file(publicKeyPath.c_str(), "r"));
  const EvpKey key(PEM_read_bio_PUBKEY(file.get(), nullptr, nullptr, nullptr));
  const EvpContext context(EVP_PKEY_CTX_new(key.get(), nullptr));
  std::string block(256, '\0');
  std::size_t size = block.size();
  EVP_PKEY_encrypt_init(context.get());
  EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING);
  EVP_PKEY_encrypt(context.get(), reinterpret_cast<unsigned char*>(block.data()), &size,
                   reinterpret_cast<const unsigned char*>(plain.data()), plain.size());
  return block;
}

// Requests whose tokens pass when this program goes by a companion's name, each for a session of
// its own. By its own name it is refused, and that is logged.
std::vector<std::string> Requests(const std::string& publicKeyPath, std::size_t count) {
  std::vector<std::string> requests;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string plain = std::to_string(i) + "," + std::to_string(getpid()) + ",1,x";
    requests.push_back(Message(R"({"art":")" + ToBase64(Encrypt(publicKeyPath, plain)) + R"("})"));
  }
  return requests;
}

// The argument is the number of tokens that are used in turn.
void RequestWithToken(benchmark::State& state) {
  const Served<CNamedPipeListenerJson> served;
  const int client = Connect(served.Path());
  if (!Ask(client, Message(R"({"art":"AAAA"})"))) return state.SkipWithError("not served");
  Run(state, client, Requests(served.PublicKeyPath(), static_cast<std::size_t>(state.range(0))));
}
BENCHMARK(RequestWithToken)->Arg(1)->Arg(kTokens)->UseRealTime();

// Decrypts one block again and again with a key that the service has made.
class Decrypter {
 public:
  Decrypter() {
    const Served<CNamedPipeListenerJson> served;
    const int client = Connect(served.Path());
    const bool made = Ask(client, Message(R"({"art":"AAAA"})"));
    close(client);
    if (!made) return;
    const Bio file(BIO_new_file(served.PrivateKeyPath().c_str(), "r"));
    m_Key.reset(PEM_read_bio_PrivateKey(file.get(), nullptr, nullptr, nullptr));
    m_Context.reset(EVP_PKEY_CTX_new(m_Key.get(), nullptr));
    EVP_PKEY_decrypt_init(m_Context.get());
    EVP_PKEY_CTX_set_rsa_padding(m_Context.get(), RSA_PKCS1_PADDING);
    m_Block = Encrypt(served.PublicKeyPath(), "{guid},1,1,x");
  }
  bool Decrypt() {
    std::size_t size = sizeof m_Plain;
    const auto* const block = reinterpret_cast<const unsigned char*>(m_Block.data());
    return m_Context &&
           EVP_PKEY_decrypt(m_Context.get(), m_Plain, &size, block, m_Block.size()) > 0;
  }

 private:
  EvpKey m_Key;
  EvpContext m_Context;
  std::string m_Block;
  unsigned char m_Plain[256];
};

void DecryptAlone(benchmark::State& state) {
  Decrypter decrypter;
  for (auto _ : state) {
    if (!decrypter.Decrypt()) return state.SkipWithError("not decrypted");
  }
}
BENCHMARK(DecryptAlone)->UseRealTime();

// What a request with a new token is to be held against: after a sleep a decryption costs more
// than in a loop, where it finds its memory and its clock as the last one left them.
void BareDecryptEcho(benchmark::State& state) {
  Decrypter decrypter;
  Echo(state, [&] { return decrypter.Decrypt(); });
}
BENCHMARK(BareDecryptEcho)->UseRealTime();

std::size_t ResidentBytes() {
  std::size_t total = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// Each has asked once and is silent; their ends of the sockets are in the figure, too.
void SilentClients(benchmark::State& state) {
  const Served<CNamedPipeListener> served;
  for (auto _ : state) {
    const std::size_t before = ResidentBytes();
    std::vector<int> clients;
    for (int i = 0; i < kSilentClients; ++i) {
      clients.push_back(Connect(served.Path()));
      if (!Ask(clients.back(), Message("hello"))) return state.SkipWithError("not served");
    }
    state.counters["resident MB"] = static_cast<double>(ResidentBytes() - before) / 1e6;
    for (const int client : clients) close(client);
  }
}
BENCHMARK(SilentClients)->Iterations(1)->UseRealTime();

void Drain(const std::vector<int>& ends) {
  char block[65'536];
  for (const int end : ends) {
    if (recv(end, block, sizeof block, 0) <= 0) return;
  }
}

CSmartPointer<CNotificationEvent> MakeEvent() {
  auto event = CNotificationEvent::CreateObject();
  event->Set(u"Corvane", u"ConnectionStatus", u"Connected", true);
  event->m_Data1 = WString(300, u'x');  // about a long summary
  return event;
}

void BareWrites(benchmark::State& state) {
  const Served<CNamedPipeListener> served;  // an event needs a platform
  std::vector<int> ours, theirs;
  for (std::size_t i = 0; i < kSubscribers; ++i) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) return state.SkipWithError("no sockets");
    ours.push_back(ends[0]);
    theirs.push_back(ends[1]);
  }
  const auto text = MakeEvent()->GetJson();
  for (auto _ : state) {
    for (const int end : ours)
      send(end, text.data(), (text.size() + 1) * sizeof(char16_t), MSG_NOSIGNAL);
    state.PauseTiming();
    Drain(theirs);
    state.ResumeTiming();
  }
  for (const std::vector<int>* side : {&ours, &theirs}) {
    for (const int end : *side) close(end);
  }
}
BENCHMARK(BareWrites)->UseRealTime();

// Counts the events that are written to every subscriber.
class CountingListener : public SmartObjEx<CountingListener, CNamedPipeListenerNotificationsJson> {
 public:
  std::atomic<std::size_t> delivered{0};

 protected:
  void OnAllWritten() override {
    CNamedPipeListenerNotificationsJson::OnAllWritten();
    ++delivered;
  }
};

// From the hand of the notification thread until the last subscriber's write is complete.
void EventToSubscribers(benchmark::State& state) {
  const Served<CountingListener> served;
  auto& listener = served.Get();
  std::vector<int> clients;
  for (std::size_t i = 0; i < kSubscribers; ++i) {
    clients.push_back(Connect(served.Path()));
    if (!Ask(clients.back(), Message(R"({"cmd":"Subscribe"})")))
      return state.SkipWithError("not served");
  }
  const auto event = MakeEvent();
  for (auto _ : state) {
    const std::size_t before = listener.delivered;
    listener.SendNotification(event.get());
    while (listener.delivered == before) std::this_thread::yield();
    state.PauseTiming();
    Drain(clients);
    state.ResumeTiming();
  }
  for (const int client : clients) close(client);
}
BENCHMARK(EventToSubscribers)->UseRealTime();

}  // namespace
}  // namespace corvane

BENCHMARK_MAIN();
