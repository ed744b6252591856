// The whole service on real threads with a fast clock: what the baton of the simulated PC hides,
// the thread sanitizer finds here.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <thread>

#include "any_host/temp_directory.h"
#include "foundation/smart_obj.h"
#include "platform/linux/host_console.h"
#include "platform/linux/linux_host.h"
#include "platform/sim/devices/pc_observer.h"
#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/world/world_loader.h"
#include "service/service_main.h"

namespace corvane::test {

namespace {

using namespace std::chrono_literals;
using namespace platform::linux_host;
using platform::sim::Cause;

constexpr double kSpeed = 200.0;
constexpr int kRounds = 1000;
constexpr auto kRunLimit = 300s;

constexpr char kWorld[] = R"({
  "networks": [{ "name": "Office", "ssid": "Office", "category": "private" }],
  "accessPoints": [
    { "ssid": "Office", "bssid": "02-50-00-01-01-05", "channel": 36, "phy": "he", "widthMHz": 80,
      "security": "wpa2", "key": "open sesame", "at": [0, 2] },
    { "ssid": "Office", "bssid": "02-50-00-01-02-05", "channel": 149, "phy": "vht", "widthMHz": 80,
      "security": "wpa2", "key": "open sesame", "at": [12, 2] },
    { "ssid": "Office", "bssid": "02-50-00-01-03-02", "channel": 6, "phy": "ht",
      "security": "wpa2", "key": "open sesame", "at": [6, 8] }
  ],
  "adapters": [
    { "description": "First adapter", "connectionName": "Wi-Fi",
      "connectedTo": "02-50-00-01-03-02" },
    { "description": "Second adapter", "connectionName": "Wi-Fi 2",
      "connectedTo": "02-50-00-01-02-05" }
  ],
  "profiles": [{ "ssid": "Office", "security": "wpa2", "key": "open sesame" }],
  "machine": { "at": [6, 0] },
  "timeline": [
    { "at": "8s", "do": "registry", "adapter": 0, "name": "PassiveSuggestMode", "dword": 0 },
    { "at": "8s", "do": "registry", "adapter": 1, "name": "PassiveSuggestMode", "dword": 0 },
    { "at": "8s", "do": "registry", "adapter": 0, "name": "ScanInterval", "dword": 10 },
    { "at": "8s", "do": "registry", "adapter": 1, "name": "ScanInterval", "dword": 10 }
  ]
})";

// What befalls the machine, over and over, each with the minutes of quiet before it. What others do
// holds the program's own switches back for a while, so some of them are long.
struct Event {
  const char* action;
  int quietMinutes;
};
constexpr Event kEvents[] = {
    {R"({ "do": "scan", "adapter": 1 })", 4},
    {R"({ "do": "signal", "bssid": "02-50-00-01-01-05", "dbm": -85 })", 4},
    {R"({ "do": "signal", "bssid": "02-50-00-01-01-05", "dbm": -45 })", 4},
    {R"({ "do": "roam", "adapter": 0, "bssid": "02-50-00-01-03-02" })", 1},
    {R"({ "do": "scan", "adapter": 0 })", 1},
    {R"({ "do": "connect", "adapter": 1, "ssid": "Office", "bssid": "02-50-00-01-02-05" })", 2},
    {R"({ "do": "disconnect", "adapter": 0 })", 1},
    {R"({ "do": "connect", "adapter": 0, "ssid": "Office", "bssid": "02-50-00-01-03-02" })", 1},
};

class Counter : public platform::sim::IPcObserver {
 public:
  std::atomic<int> scans{0};  // by the program
  std::atomic<int> connects{0};
  std::atomic<int> roams{0};  // by others
  void OnScanEnded(int, Cause cause, bool) override { scans += cause == Cause::kProgram; }
  void OnConnectEnded(int, Cause cause, const std::string&, const std::string&,
                      platform::DWORD reason) override {
    connects += cause == Cause::kProgram && reason == 0;
  }
  void OnRoamed(int, Cause cause, const std::string&, const std::string&) override {
    roams += cause != Cause::kProgram;
  }
};

// Standard output goes to a file while it lives; rounds are counted in it as it grows.
class CapturedOutput {
 public:
  explicit CapturedOutput(const std::string& path) : m_Before(dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(file, STDOUT_FILENO);
    close(file);
    m_File.open(path);
  }
  ~CapturedOutput() {
    std::fflush(stdout);
    dup2(m_Before, STDOUT_FILENO);
    close(m_Before);
  }
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  int CountRounds() {
    m_File.clear();
    for (std::string line; std::getline(m_File, line);) {
      m_Rounds += line.find("__MAIN SLEEP__") != line.npos;
    }
    return m_Rounds;
  }

 private:
  int m_Before;
  std::ifstream m_File;
  int m_Rounds = 0;
};

}  // namespace

TEST(ServiceRealtime, KeepsTwoAdaptersThroughAThousandRoundsOnRealThreads) {
  const TempDirectory directory;
  Counter counter;
  int rounds = 0, exitCode = -1;
  {
    CapturedOutput output(directory / "output");
    LinuxHost host({.home = directory / "home", .speed = kSpeed, .observer = &counter},
                   platform::sim::ParseWorld(kWorld, "the test's world"));
    std::thread service([&] {
      const char16_t* arguments[] = {u"corvane"};
      exitCode = ServiceMain(1, arguments);
    });
    const auto end = std::chrono::steady_clock::now() + kRunLimit;
    for (std::size_t i = 0; rounds < kRounds && std::chrono::steady_clock::now() < end; ++i) {
      const Event& event = kEvents[i % std::size(kEvents)];
      std::this_thread::sleep_for(event.quietMinutes * 60s / kSpeed);
      host.Devices().Do(event.action);
      rounds = output.CountRounds();
    }
    host.Console().PressKey();
    service.join();
  }
  EXPECT_GE(rounds, kRounds);
  EXPECT_EQ(exitCode, 0);
  EXPECT_EQ(LiveObjectCount(), 0u);
  EXPECT_GT(counter.scans, 10);
  EXPECT_GT(counter.connects, 1);
  EXPECT_GT(counter.roams, 1);
}

}  // namespace corvane::test
