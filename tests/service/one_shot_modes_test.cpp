// The one-shot modes on a simulated PC: what they print, what they do, and their results.

#include "service/one_shot_modes.h"

#include "launch/user_environment.h"
#include "monitors/network_list_manager.h"
#include "platform/sim/devices/sim_sockets.h"
#include "platform/sim/devices/sim_windows.h"
#include "platform/sim/kernel/sim_files.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "service/service_main.h"
#include "support/world_builder.h"
#include "web/web_fixture.h"

namespace corvane::test {
namespace {

using namespace platform;
using sim::SimWindows;

class OneShotModesTest : public WebTest {
 protected:
  // The result; `printed` is what the call wrote.
  int Run(std::vector<const char16_t*> words) {
    words.insert(words.begin(), u"corvane");
    const std::size_t before = Pc().ConsoleText().size();
    const int result = ServiceMain(static_cast<int>(words.size()), words.data());
    printed = Pc().ConsoleText().substr(before);
    EXPECT_EQ(Outstanding(), 0u);
    EXPECT_EQ(Pc().Devices().Sockets().Users(), 0);
    return result;
  }
  std::string printed;
};

TEST_F(OneShotModesTest, UserEnvIsOneLineThatTheServiceReads) {
  BootWeb(R"({"proxies": {"proxy": "p:80"}})");
  Pc().Kernel().Session().SetTempPath("C:\\Temp\\");
  EXPECT_EQ(Run({u"-u", u"--testhttp"}), 0) << "it comes before all others";
  EXPECT_EQ(printed, R"({ "path":"C:\\Temp\\", "proxy":"yes", "proxy_cfg":"p:80" })");
  const auto read = ParseUserEnvironment(printed);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->tempPath, "C:\\Temp\\");
  EXPECT_EQ(read->proxyConfig, u"p:80");

  Do(R"({"do": "proxies"})");
  Pc().Kernel().Session().SetTempPath(std::string(300, 'x'));
  EXPECT_EQ(Run({u"--userenv"}), 0);
  EXPECT_EQ(printed, R"({ "path":"", "proxy":"no", "proxy_cfg":"" })");
  for (const DWORD code : {DWORD{5}, sim::FaultPlan::kFault}) {
    Pc().Faults().FailCall("GetTempPathA", 1, code);
    EXPECT_EQ(Run({u"--userenv"}), 0);
    EXPECT_EQ(printed, R"({ "path":"", "proxy":"no", "proxy_cfg":"" })");
  }
  for (const char* operation :
       {"WinHttpGetIEProxyConfigForCurrentUser", "WinHttpOpen", "WinHttpCloseHandle"}) {
    Do(R"({"do": "proxies", "known": false})");
    Pc().Faults().FailCall(operation, 1, sim::FaultPlan::kFault);
    EXPECT_EQ(Run({u"--userenv"}), 0);
    EXPECT_EQ(printed, R"({ "path":"", "proxy":"no", "proxy_cfg":"" })") << operation;
    Pc().Faults().Clear();
  }
}

TEST_F(OneShotModesTest, TestHttpTellsWhatCameAndEndsWell) {
  BootWeb(R"({"hosts": [{"host": "www.corvane.example", "body": "hello"}]})");
  EXPECT_EQ(Run({u"-y"}), 0);
  EXPECT_EQ(printed,
            "NO PROXY FOUND, Calling SyncSendHttpRequest\nSyncSendHttpRequest() succeeded.\n"
            "response headers:\nHTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n\n"
            "response content:\nhello\n");
  Do(R"({"do": "proxies", "proxy": "p:80"})");
  Do(R"({"do": "web", "host": "www.corvane.example", "status": 500, "reason": "No"})");
  EXPECT_EQ(Run({u"--testhttp"}), 0);
  EXPECT_EQ(printed,
            "PROXY FOUND, Calling SyncSendHttpRequest\nSyncSendHttpRequest() failed [rc=58]\n");
  EXPECT_EQ(Requests().back().proxy, "p:80");
}

TEST_F(OneShotModesTest, PostFileEndsWithWhatBecameOfIt) {
  BootWeb(R"({"hosts": [{"host": "stats.corvane.example"}]})");
  Pc().Files().Write(u"/data/post.txt", "content");
  EXPECT_EQ(Run({u"--postfile", u"/data/post.txt"}), 0);
  EXPECT_EQ(Requests().at(0).body, "content");
  EXPECT_EQ(Run({u"--postfile", u"/data/none.txt"}), -1);
  EXPECT_TRUE(Requests().empty());
  Do(R"({"do": "web", "host": "stats.corvane.example", "status": 503, "reason": "Busy"})");
  EXPECT_EQ(Run({u"-p/data/post.txt"}), -2);
}

TEST_F(OneShotModesTest, MessagesGoToTheTrayThatRuns) {
  BootWeb("{}");
  EXPECT_EQ(Run({u"--notifymsg", u"5"}), -1) << "no tray";
  Do(R"({"do": "process", "name": "Corvane_TrayApp.exe", "on": true})");
  EXPECT_EQ(Run({u"--notifymsg=5"}), 0);
  EXPECT_EQ(Run({u"-i", u"3", u"--notifymsg", u"7"}), 0);
  EXPECT_EQ(Pc().Devices().Windows().TakeTrayMessages(),
            (std::vector<SimWindows::Posted>{{273, 5, -1}, {273, 7, 3}}));
  for (const DWORD code : {DWORD{5}, sim::FaultPlan::kFault}) {
    Pc().Faults().FailCall("PostMessageA", 1, code);
    EXPECT_EQ(Run({u"--notifymsg", u"5"}), -1);
    Pc().Faults().FailCall("FindWindowW", 1, code);
    EXPECT_EQ(Run({u"--notifymsg", u"5"}), -1);
  }
  EXPECT_TRUE(Pc().Devices().Windows().TakeTrayMessages().empty());
}

TEST_F(OneShotModesTest, FlagsAreSetAndTheServiceGoesOn) {
  BootWeb("{}");
  EXPECT_EQ(Run({u"-n", u"2", u"-t"}), 0);
  EXPECT_EQ(printed,
            "-----------------------> NLM DEBUG = 2 <-----------------------\ntestconnect\n");
  CNetworkListManager::SetDebugLevel(0);
  Pc().PressKey();
  EXPECT_EQ(Run({u"-w", u"-i", u"3", u"word"}), 0);
  EXPECT_NE(printed.find("[corvane] Enabling forcing of TRELLIS_N_WIFI_QUALITY/2"),
            std::string::npos);
  EXPECT_NE(printed.find("No Wifi Adapters"), std::string::npos) << "the service ran";
}

TEST_F(OneShotModesTest, AServiceWithoutSocketsEndsWithOneInItsOrder) {
  BootWeb("{}");
  Pc().Faults().FailCall("WSAStartup", 1, 10091);
  EXPECT_EQ(Run({}), 1);
  EXPECT_NE(printed.find("WSAStartup failed with error: 10091\n"), std::string::npos);
}

// Whatever had been started before the failure is stopped again.
TEST_F(OneShotModesTest, AStartThatFailsHalfwayEndsWithOneInItsOrder) {
  BootWeb("{}");
  Pc().Faults().FailCall("CreateToolhelp32Snapshot", 1, sim::FaultPlan::kNoMemory);
  EXPECT_EQ(Run({}), 1);
  EXPECT_NE(printed.find("Main: std:exception: std::bad_alloc"), std::string::npos) << printed;
  EXPECT_EQ(Pc().LiveThreads(), 0);
  EXPECT_EQ(Pc().Devices().CountOutstanding(), sim::SimDevices::Outstanding{});
}

// ---- connecting

class ConnectModeTest : public OneShotModesTest {
 protected:
  static constexpr char16_t kSsid32[] = u"12345678901234567890123456789012";
  void BootAir() {
    WorldBuilder world;
    world.Adapter()
        .Ap(Beacon(u8"Office").Channel(36).Vht80(2).Rsn({AKM_PSK}), 1, -50)
        .Ap(Beacon(u8"12345678901234567890123456789012").Channel(40).Rsn({AKM_PSK}), 2, -50)
        .Profile("Office", false)
        .Profile("12345678901234567890123456789012", false);
    world->adapters[0].ifIndex = 7;
    Boot(world.Build());
  }
  static std::string Line(const std::string& text) {
    return "__________>>> ConnectAndExit: " + text + "\n";
  }
};

TEST_F(ConnectModeTest, SaysWhatIsMissing) {
  const struct {
    std::vector<const char16_t*> words;
    int result;
    const char* printed;
  } kCases[] = {
      {{u"-c", u"a", u"-b", u"b"}, -1, "missing ifindex\n"},
      {{u"-c", u"a", u"-b", u"b", u"-x", u"-1"}, -1, "missing ifindex\n"},
      {{u"-b", u"b", u"-x", u"0"}, -1, "missing connect arg\n"},
      {{u"-c", u"a", u"-x", u"0"}, -2, "missing connect bssid\n"},
  };
  BootAir();
  for (const auto& one : kCases) {
    EXPECT_EQ(Run(one.words), one.result);
    EXPECT_EQ(printed, one.printed);
  }
}

TEST_F(ConnectModeTest, ConnectsTheAdapterOfTheIndexToTheBssid) {
  BootAir();
  EXPECT_EQ(Run({u"-c", u"Office", u"-b", u"02:50:00:00:00:01", u"-x", u"7"}), 0);
  EXPECT_TRUE(printed.starts_with("[corvane]got both connect Office and bssid 02:50:00:00:00:01\n"))
      << printed;
  EXPECT_TRUE(printed.ends_with(Line("WIFIC_S::GetInstance().Shutdown()") + Line("returning 0")))
      << printed;
  EXPECT_EQ(Pc().Kernel().Session().TakeLaunches().at(0).commandLine,
            u"explorer.exe ms-availablenetworks:");
  Pc().Faults().FailAlways("WSACleanup", sim::FaultPlan::kFault);
  EXPECT_EQ(Run({u"-c", kSsid32, u"-b", u"02:50:00:00:00:02", u"-x", u"7"}), 0) << printed;
}

TEST_F(ConnectModeTest, EveryFailureIsOneAndSaysWhy) {
  const struct {
    const char16_t* ssid;
    const char16_t* bssid;
    const char16_t* index;
    const char* fault;
    const char* text;
  } kCases[] = {
      {u"Office", u"02-50-00-00-00-01", u"7", nullptr, "Bad bssid(mac) string: 02-50-00-00-00-01"},
      {u"", u"02:50:00:00:00:01", u"7", nullptr, "Bad ssid string: "},
      {u"1234567890123456789012345678901\u00E4", u"02:50:00:00:00:01", u"7", nullptr,
       "Bad ssid too long: 1234567890123456789012345678901\u00E4"},
      {u"Office", u"02:50:00:00:00:01", u"8", nullptr,
       "ConnectAndExit: Target wireless interfaces not found!"},
      {u"Office", u"02:50:00:00:00:01", u"7", "WlanOpenHandle",
       "ConnectAndExit: No wireless interfaces found!"},
      {u"Office", u"02:50:00:00:00:01", u"7", "WSAStartup", "WSAStartup failed with error: 5"},
      {u"Office", u"02:50:00:00:00:01", u"7", "WlanConnect", "exception WlanConnect"},
      {u"Office", u"02:50:00:00:00:09", u"7", nullptr, "exception WlanConnect"},
  };
  BootAir();
  for (const auto& one : kCases) {
    SCOPED_TRACE(one.text);
    if (one.fault) Pc().Faults().FailAlways(one.fault, 5);
    EXPECT_EQ(Run({u"-c", one.ssid, u"-b", one.bssid, u"-x", one.index}), 1);
    EXPECT_NE(printed.find("__________>>> ConnectAndExit: " + std::string(one.text)),
              std::string::npos)
        << printed;
    Pc().Faults().Clear();
  }
}

}  // namespace
}  // namespace corvane::test
