// Loads the service program's pipes: hundreds of clients, slow, silent and rude ones among them,
// thousands of connects and of events. Afterwards the service must be as it was before.

#include <openssl/rsa.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "any_host/pipe_peer.h"
#include "any_host/temp_directory.h"
#include "host/client_token_maker.h"
#include "host/program.h"
#include "platform/base64.h"

namespace corvane::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr char kHelp[] =
    "Usage: corvane_pipe_load [--rounds N] [--help]\n"
    "Starts the service in a directory of its own and loads its pipes N times (default 1, some\n"
    "seconds each). Exit status 1 when a client was not served, or something stays behind.\n";

constexpr std::size_t kClients = 255;
constexpr std::size_t kSilent = 20;
constexpr std::size_t kSlow = 20;
constexpr std::size_t kSubscribers = 20;
constexpr std::size_t kDeafSubscribers = 5;
constexpr int kConnects = 2'000;
constexpr int kEvents = 5'000;
constexpr int kEventsAhead = 200;               // of the sender before its own subscription
constexpr std::size_t kMoreMemory = 8'000'000;  // bytes that the allocator may keep
constexpr auto kStart = 60s;
constexpr auto kSettle = 10s;
constexpr auto kBetweenQuestions = 200ms;  // of a normal client
constexpr auto kServed = 1s;

std::atomic<int> g_Failures{0};

void Expect(bool fine, const char* what) {
  if (fine) return;
  ++g_Failures;
  std::fprintf(stderr, "corvane_pipe_load: not so: %s\n", what);
}

// What the service holds.
struct Holdings {
  std::size_t descriptors = 0;
  std::size_t residentBytes = 0;
};

class Load {
 public:
  Load() : m_Service(m_Directory / "output", {{"CORVANE_HOME", m_Home}, {"CORVANE_SPEED", "20"}}) {
    const std::string key = m_Home + "/client_key.pub.pem";
    const auto isUp = [&] {
      return PipePeer(m_Events).IsConnected() && PipePeer(m_Requests).IsConnected() &&
             std::filesystem::exists(key);
    };
    for (const auto end = Clock::now() + kStart; !isUp() && Clock::now() < end;)
      std::this_thread::sleep_for(20ms);
    const std::string plain = "{load}," + std::to_string(getpid()) + ",1,";
    const std::string token =
        platform::ToBase64(ClientTokenMaker(key).Encrypt(plain, RSA_PKCS1_PADDING));
    m_Head = u"{\"art\":\"" + std::u16string(token.begin(), token.end()) + u"\",";
    m_Ask =
        m_Head + uR"("cmd":"UICommand","idx":0,"guid":"","name":"GetAPsForNetwork","value":""})";
  }

  void Round(int connects, int events) {
    std::vector<PipePeer> silent, slow, normal, subscribers, deaf;
    for (std::size_t i = 0; i < kSilent; ++i) silent.emplace_back(m_Requests);
    for (std::size_t i = 0; i < kSlow; ++i) slow.emplace_back(m_Requests);
    while (silent.size() + slow.size() + normal.size() < kClients) normal.emplace_back(m_Requests);
    for (std::size_t i = 0; i < kSubscribers; ++i) subscribers.push_back(Subscribed());
    for (std::size_t i = 0; i < kDeafSubscribers; ++i) deaf.push_back(Subscribed());

    std::atomic<bool> over{false};
    std::vector<std::thread> threads;
    threads.emplace_back([&] { AskAll(normal, over); });
    threads.emplace_back([&] { Dribble(slow, over); });
    threads.emplace_back([&] { BeRude(over); });
    threads.emplace_back([=, this] { Connects(connects); });
    Events(events, subscribers, {&threads.back(), 1});
    over = true;
    for (std::thread& one : threads) {
      if (one.joinable()) one.join();
    }
    for (PipePeer& one : silent) Expect(Serves(one), "a silent client is served when it asks");
  }

  // Once all that serves clients has been used.
  Holdings Fresh() {
    Expect(PostOne(), "an event is taken at the start");
    std::this_thread::sleep_for(1s);
    return Held();
  }
  // Waits until what clients held is given back, or for a while. That a subscriber has gone is
  // found by the next event.
  Holdings Settle(std::size_t descriptors) {
    for (const auto end = Clock::now() + kSettle; Clock::now() < end;) {
      Expect(PostOne(), "an event is taken afterwards");
      std::this_thread::sleep_for(100ms);
      if (Held().descriptors <= descriptors) break;
    }
    return Held();
  }
  bool PostOne() {
    PipePeer client(m_Requests);
    return IsGood(Post(0, client));
  }
  // How long a new client waits for its answer.
  Clock::duration TimeToServe() {
    const auto start = Clock::now();
    PipePeer client(m_Requests);
    Expect(Serves(client), "a normal client is served afterwards");
    return Clock::now() - start;
  }
  bool End() {
    m_Service.Signal(SIGTERM);
    return m_Service.Wait(60s) == 0;
  }

 private:
  Holdings Held() {
    Holdings holdings;
    const std::string process = "/proc/" + std::to_string(m_Service.Id());
    std::error_code gone;
    for ([[maybe_unused]] const auto& one :
         std::filesystem::directory_iterator(process + "/fd", gone))
      ++holdings.descriptors;
    std::size_t total = 0, resident = 0;
    std::ifstream(process + "/statm") >> total >> resident;
    holdings.residentBytes = resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return holdings;
  }

  static bool IsGood(const std::optional<std::u16string>& reply) {
    return reply && reply->starts_with(u"{ \"status\":\"ok\", \"code\":0,");
  }
  bool Serves(PipePeer& client) { return client.Send(m_Ask) && IsGood(client.Receive()); }

  PipePeer Subscribed() {
    PipePeer client(m_Events);
    Expect(client.Send(uR"({"cmd":"Subscribe"})") && IsGood(client.Receive()),
           "a client can subscribe");
    return client;
  }

  void AskAll(std::vector<PipePeer>& clients, const std::atomic<bool>& over) {
    while (!over) {
      bool fine = true;
      for (PipePeer& one : clients) fine = one.Send(m_Ask) && fine;
      for (PipePeer& one : clients) fine = IsGood(one.Receive()) && fine;
      Expect(fine, "every normal client is served all the time");
      std::this_thread::sleep_for(kBetweenQuestions);
    }
  }

  // A byte of a request at a time, and never its end.
  static void Dribble(std::vector<PipePeer>& clients, const std::atomic<bool>& over) {
    while (!over) {
      for (PipePeer& one : clients) Expect(one.SendBytes("{"), "a slow client stays connected");
      std::this_thread::sleep_for(5ms);
    }
  }

  void BeRude(const std::atomic<bool>& over) {
    const std::string noise(300'000, '\xff');
    std::vector<PipePeer> deaf;  // ask for much and read nothing
    const std::u16string large(200'000, u'x');
    for (int i = 0; !over; ++i) {
      PipePeer rude(i % 2 ? m_Requests : m_Events);
      switch (i % 6) {
        case 0:
          rude.SendBytes(std::string_view(noise).substr(0, 11));
          break;
        case 1:  // longer than a message may be
          for (int k = 0; k < 5 && rude.SendBytes(noise); ++k) continue;
          break;
        case 2:
          rude.Send(u"[[[[\x0001");
          rude.EndSending();
          break;
        case 3:
          rude.EndReceiving();
          rude.Send(m_Ask);
          rude.SendBytes("{");
          break;
        case 4:
          rude.SendBytes(std::string(1'000, '\0'));
          break;
        default:
          rude.Send(large);
          if (deaf.size() >= 5) deaf.clear();
          deaf.push_back(std::move(rude));
      }
      std::this_thread::sleep_for(2ms);
    }
  }

  void Connects(int count) {
    for (int i = 0; i < count; ++i) {
      PipePeer client(i % 4 == 3 ? m_Events : m_Requests);
      if (i % 4 == 0) Expect(Serves(client), "each of many clients is served");
      if (i % 4 == 1) client.Send(m_Ask);  // and does not wait for the answer
    }
  }

  std::optional<std::u16string> Post(int number, PipePeer& client) {
    const std::string digits = std::to_string(number);
    std::u16string event =
        m_Head + uR"("cmd":"EventRouter","type":"json1","event":{"evtNamespace":"Load",)";
    event += uR"("evtCategory":"","evtType":"","evtTimestamp":"","evtState":"true","evtData1":")";
    event += std::u16string(digits.begin(), digits.end());
    event += uR"(","evtData2":"","evtData3":"","evtData4":"","evtData5":""}})";
    return client.Send(event) ? client.Receive() : std::nullopt;
  }

  // Posts events, and reads them as the subscribers do; goes on until the threads have ended.
  void Events(int count, std::span<PipePeer> subscribers, std::span<std::thread> until) {
    PipePeer client(m_Requests);
    PipePeer own = Subscribed();
    std::vector<std::thread> readers;
    for (PipePeer& one : subscribers)
      readers.emplace_back([&one, count] { ReadTo(one, 0, count); });
    for (int i = 0; i < count; ++i) {
      Expect(IsGood(Post(i + 1, client)), "an event is taken");
      if ((i + 1) % kEventsAhead == 0) ReadTo(own, i + 1 - kEventsAhead, i + 1);
    }
    for (std::thread& one : readers) one.join();
    for (std::thread& one : until) one.join();
  }

  // The client gets each of these events, in order; other events come in between.
  static void ReadTo(PipePeer& client, int from, int to) {
    for (int number = from + 1; number <= to;) {
      const auto text = client.Receive();
      Expect(text.has_value(), "a subscriber who reads gets every event");
      if (!text) return;
      if (text->find(u"\"evtNamespace\":\"Load\"") == text->npos) continue;
      const std::string digits = std::to_string(number++);
      const std::u16string data = u"\"evtData1\":\"" + std::u16string(digits.begin(), digits.end());
      Expect(text->find(data + u"\"") != text->npos, "events come in order, and none is left out");
    }
  }

  TempDirectory m_Directory;
  const std::string m_Home = m_Directory / "home";
  const std::string m_Requests = m_Home + "/pipe/TRLSPipe";
  const std::string m_Events = m_Home + "/pipe/TRLSPipe_N";
  Program m_Service;
  std::u16string m_Head;  // a request's, with its token
  std::u16string m_Ask;
};

int RunLoad(int rounds) {
  Load load;
  const std::size_t descriptors = load.Fresh().descriptors;
  // As much memory as the load takes at once is not given back to the system.
  load.Round(kConnects / 10, kEvents / 10);
  const Holdings before = load.Settle(descriptors);
  for (int round = 0; round < rounds; ++round) {
    const auto start = Clock::now();
    load.Round(kConnects, kEvents);
    const auto served = load.TimeToServe();
    const Holdings after = load.Settle(descriptors);
    Expect(served <= kServed, "afterwards a client is served within a second");
    Expect(after.descriptors <= descriptors, "no descriptor is left");
    Expect(after.residentBytes <= before.residentBytes + kMoreMemory, "no memory is left");
    const auto ms = [](Clock::duration time) {
      return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
    };
    std::printf(
        "round %d: %ld ms; then served in %ld ms; descriptors %zu, %zu before; "
        "memory %.1f MB, %.1f before\n",
        round + 1, ms(Clock::now() - start), ms(served), after.descriptors, descriptors,
        static_cast<double>(after.residentBytes) / 1e6,
        static_cast<double>(before.residentBytes) / 1e6);
  }
  Expect(load.End(), "the service ends in order");
  return g_Failures == 0 ? 0 : 1;
}

// Only programs of certain file names may speak: runs a copy of this one by such a name.
int RunCopy(char** arguments) {
  const TempDirectory directory;
  const std::string copy = directory / "corvane-client";
  std::filesystem::copy_file("/proc/self/exe", copy);
  std::string command = copy;
  for (char** word = arguments + 1; *word; ++word) command += std::string(" ") + *word;
  const int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

}  // namespace
}  // namespace corvane::test

int main(int argc, char** argv) {
  using namespace corvane::test;
  int rounds = 1;
  if (argc == 2 && std::string(argv[1]) == "--help") {
    std::fputs(kHelp, stdout);
    return 0;
  }
  if (argc == 3 && std::string(argv[1]) == "--rounds") rounds = std::atoi(argv[2]);
  if (rounds < 1 || (argc != 1 && argc != 3)) {
    std::fputs(kHelp, stderr);
    return 2;
  }
  const auto self = std::filesystem::read_symlink("/proc/self/exe").filename();
  return self == "corvane-client" ? RunLoad(rounds) : RunCopy(argv);
}
