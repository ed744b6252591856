#include "monitors/utils.h"
#include "platform/session_api.h"
#include "platform/sim/kernel/sim_session.h"
#include "wlan/adapter_fixture.h"

namespace corvane::test {
namespace {

using namespace platform;

constexpr DWORD kStart = 9, kComplete = 10, kFailed = 11, kDisconnecting = 20, kGone = 21;
constexpr char16_t kXml[] = u"<WLANProfile/>";

class ConnectTest : public AdapterTest {
 protected:
  ConnectTest() {
    wlan.networks = {"Office", "Cafe"};
    wlan.entries = {{"Office", Bssid(1)}, {"Cafe", Bssid(3)}};
    wlan.profiles[u"Office"] = u"<xml/>";
    wlan.onConnect = [this](const WLAN_CONNECTION_PARAMETERS& parameters) {
      if (parameters.pDesiredBssidList) asked = ToMac(parameters.pDesiredBssidList->BSSIDs[0]);
      mode = parameters.wlanConnectionMode;
      ConnectLikeThePlatform("Office");
    };
  }

  // What a platform tells of a connect that goes well: start, completion, and then the state.
  void ConnectLikeThePlatform(const char* ssid) {
    wlan.PostConnection(100, kStart, ssid);
    wlan.Post(2000, [this, ssid] {
      wlan.Connect(ssid, asked);
      wlan.NotifyConnection(kComplete, ssid);
    });
  }
  void StartDiscovered() {
    Start();
    Discover();
  }
  std::string ConnectThrows(const char16_t* profile = u"", bool save = false, DWORD timeout = 15000,
                            const char16_t* ssid = u"Office", std::uint8_t last = 1) {
    return ThrownBy(
        [&] { Entry(ssid, last)->ConnectSynchronous(adapter.get(), profile, save, timeout); });
  }

  MacAddress asked{};
  LONG mode = -1;
};

TEST_F(ConnectTest, ConnectsByProfileToTheWantedBss) {
  StartDiscovered();
  EXPECT_EQ(ConnectThrows(), "");
  EXPECT_EQ(wlan.connects, std::vector<std::u16string>{u"Office"});
  EXPECT_EQ(asked, Bssid(1));
  EXPECT_EQ(mode, wlan_connection_mode_profile);
  EXPECT_TRUE(adapter->IsConnected());
  EXPECT_EQ(adapter->GetConnectedBssidIfWeInitiated(), Bssid(1));
  EXPECT_EQ(AdapterValue(u"ConnectStatus"), u"connecting");
  EXPECT_EQ(InhibitMs(), 0u) << "its own notifications inhibit nothing";
}

TEST_F(ConnectTest, NewStateIsAwaitedAfterTheCompletion) {
  wlan.onConnect = [this](const WLAN_CONNECTION_PARAMETERS&) {
    wlan.Connect("Office", Bssid(1));
    wlan.connection.isState = wlan_interface_state_authenticating;
    wlan.PostConnection(500, kComplete, "Office");
    wlan.Post(2600, [this] { wlan.connection.isState = wlan_interface_state_connected; });
  };
  StartDiscovered();
  const std::uint64_t before = Now();
  EXPECT_EQ(ConnectThrows(), "");
  EXPECT_EQ(Now() - before, 3500u);
}

TEST_F(ConnectTest, ConnectThatHangsInAuthenticationIsGivenUp) {
  wlan.onConnect = [this](const WLAN_CONNECTION_PARAMETERS&) {
    wlan.Connect("Office", Bssid(1));
    wlan.connection.isState = wlan_interface_state_authenticating;
    wlan.PostConnection(500, kComplete, "Office");
  };
  StartDiscovered();
  EXPECT_EQ(ConnectThrows(), "WlanConnect(pConnectParams) failed, not connected after 60 polls");
}

TEST_F(ConnectTest, FailuresAreTold) {
  StartDiscovered();
  wlan.codes["WlanConnect"] = ERROR_INVALID_PARAMETER;
  EXPECT_EQ(ConnectThrows(), "WlanConnect(pConnectParams) failed: 87");
  wlan.codes["WlanConnect"] = FakeWlan::kFault;
  EXPECT_EQ(ConnectThrows(), "WlanConnect() failed: 0xc0000005");
  wlan.codes.clear();
  EXPECT_EQ(adapter->GetConnectedBssidIfWeInitiated(), MacAddress{});

  wlan.onConnect = [this](const WLAN_CONNECTION_PARAMETERS&) {
    wlan.PostConnection(100, kFailed, "Office", 5);
    wlan.PostConnection(200, kComplete, "Office", WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE);
  };
  try {
    Entry(u"Office", 1)->ConnectSynchronous(adapter.get(), u"", false, 15000);
    FAIL();
  } catch (const Exception& e) {
    EXPECT_STREQ(e.what(), "WlanConnect(pConnectParams) failed, reason: 163851");
    EXPECT_EQ(e.GetCode(), WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE);
  }
  // A completion without a connection behind it.
  wlan.onConnect = [this](const WLAN_CONNECTION_PARAMETERS&) {
    wlan.PostConnection(100, kComplete, "Office");
  };
  EXPECT_EQ(ConnectThrows(),
            "WlanQueryInterface(...wlan_intf_opcode_current_connection...) failed: 5023");
}

TEST_F(ConnectTest, CompletionAfterTheTimeOutIsAnOutsideConnection) {
  StartDiscovered();
  EXPECT_EQ(ConnectThrows(u"", false, 1000),
            "CWlanInterface::ConnectSynchronous: Got EXIT/ABORT?TIMEOUT Event!");
  EXPECT_EQ(adapter->GetConnectedBssidIfWeInitiated(), Bssid(1));
  RunFor(1100ms);
  EXPECT_EQ(adapter->GetConnectedBssidIfWeInitiated(), MacAddress{});
  EXPECT_TRUE(adapter->Config()->m_bForcePopupOverride);
  EXPECT_EQ(ConnectThrows(), "") << "the late signal does not end the next connect";
}

TEST_F(ConnectTest, OldNetworksEndDuringAConnectInhibitsButKeepsTheInitiative) {
  wlan.onConnect = [this](const WLAN_CONNECTION_PARAMETERS&) {
    wlan.PostConnection(100, kDisconnecting, "Cafe");
    wlan.PostConnection(200, kGone, "Cafe");
    wlan.Post(5000, [this] {
      wlan.Connect("Office", Bssid(1));
      wlan.NotifyConnection(kComplete, "Office");
    });
  };
  StartDiscovered();
  std::string thrown = "not ended";
  OnThread([&] { thrown = ConnectThrows(); });
  RunFor(250ms);
  EXPECT_STREQ(InhibitTag(), "out-disc");
  EXPECT_EQ(InhibitMs(), 4950u);
  EXPECT_EQ(adapter->GetConnectedBssidIfWeInitiated(), Bssid(1));
  RunFor(6s);
  EXPECT_EQ(thrown, "");
}

TEST_F(ConnectTest, ScanEndDuringAConnectIsSomebodyElses) {
  StartDiscovered();
  OnThread([&] { ConnectThrows(); });
  RunFor(500ms);
  wlan.NotifyScan(wlan_notification_acm_scan_complete);
  EXPECT_STREQ(InhibitTag(), "out-scan");
  EXPECT_EQ(InhibitMs(), 15000u);
  RunFor(5s);
}

TEST_F(ConnectTest, OperationsOfTwoThreadsQueue) {
  StartDiscovered();
  std::string first = "not ended", second = "not ended";
  wlan.onDisconnect = [this] { wlan.PostConnection(300, kGone, "Office"); };
  OnThread([&] { first = ConnectThrows(); });
  RunFor(50ms);
  OnThread([&] { second = ThrownBy([&] { adapter->DisconnectSynchronous(u"test"); }); });
  RunFor(1s);
  EXPECT_EQ(std::count(wlan.calls.begin(), wlan.calls.end(), "WlanDisconnect"), 0);
  RunFor(3s);
  EXPECT_EQ(first, "");
  EXPECT_EQ(second, "");
  EXPECT_EQ(InhibitMs(), 0u);
}

TEST_F(ConnectTest, DisconnectEndsInEachWay) {
  StartDiscovered();
  EXPECT_EQ(ThrownBy([&] { adapter->DisconnectSynchronous(u""); }),
            "WlanDisconnect() - Got Timeout!");
  wlan.codes["WlanDisconnect"] = ERROR_GEN_FAILURE;
  EXPECT_EQ(ThrownBy([&] { adapter->DisconnectSynchronous(u""); }), "WlanDisconnect() failed: 31");
  wlan.codes.clear();
  wlan.onDisconnect = [this] { wlan.PostConnection(100, kGone, "Office", 9); };
  EXPECT_EQ(ThrownBy([&] { adapter->DisconnectSynchronous(u""); }),
            "WlanDisconnect() failed, reason: 9");
  wlan.onDisconnect = [this] { wlan.PostConnection(100, kGone, "Office"); };
  EXPECT_EQ(ThrownBy([&] { adapter->DisconnectSynchronous(u""); }), "");
}

TEST_F(ConnectTest, DetachEndsAConnectThatWaits) {
  wlan.onConnect = nullptr;
  StartDiscovered();
  std::string first, second = "not ended";
  OnThread([&] { first = ConnectThrows(); });
  RunFor(50ms);
  OnThread([&] { second = ThrownBy([&] { adapter->ConnectToNetwork(u"Cafe"); }); });
  RunFor(1s);
  CWifiClientContainer::GetInstance().Shutdown();
  RunFor(200ms);
  EXPECT_EQ(first, "CWlanInterface::ConnectSynchronous: Got EXIT/ABORT?TIMEOUT Event!");
  EXPECT_EQ(second, "") << "the one in the queue goes home";
  EXPECT_EQ(wlan.connects.size(), 1u);
}

// Takes the command lines of programs; all of them end with the same result.
class FakeSession : public SessionApi {
 public:
  int result = 0;
  std::vector<std::u16string> commands;
  int _wsystem(LPCWSTR command) override {
    commands.emplace_back(command);
    return result;
  }
};

TEST_F(ConnectTest, WithoutAUsableProfileThePrompterIsAsked) {
  auto& session = Install<FakeSession>();
  StartDiscovered();
  EXPECT_EQ(ConnectThrows(u"", false, 15000, u"Cafe", 3), "");
  EXPECT_EQ(AdapterValue(u"ConnectStatus"), u"external");
  EXPECT_FALSE(adapter->IsConnected());
  ASSERT_EQ(session.commands.size(), 1u);
  EXPECT_NE(session.commands[0].find(u"PassphraseDesk.exe 0 \"Cafe\" 02-11-22-33-44-03"),
            std::u16string::npos);

  session.result = 1;
  EXPECT_EQ(ConnectThrows(u"", false, 15000, u"Cafe", 3),
            "CWlanBssEntry::ConnectSynchronous() - StartPassphraseDeskAsApp() failed");
  wlan.profiles[u"Cafe"] = u"<xml/>";
  wlan.grantedAccess = WLAN_READ_ACCESS;
  Discover();
  EXPECT_NE(ConnectThrows(u"", false, 15000, u"Cafe", 3), "") << "a profile that may only be read";
  EXPECT_TRUE(wlan.connects.empty());
}

TEST_F(ConnectTest, AsAServiceThePrompterIsStartedOnTheUsersDesktop) {
  CUtils::GetInstance().SetRunningAsService(true);
  StartDiscovered();
  EXPECT_EQ(ConnectThrows(u"", false, 15000, u"Cafe", 3), "");
  EXPECT_EQ(AdapterValue(u"ConnectStatus"), u"external");
  const auto launches = kernel.Session().TakeLaunches();
  ASSERT_EQ(launches.size(), 1u);
  EXPECT_EQ(launches[0].commandLine.find(u"PassphraseDesk.exe 0 \"Cafe\" 02-11-22-33-44-03"), 0u);
  kernel.Faults().FailCall("CreateProcessAsUserW", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(ConnectThrows(u"", false, 15000, u"Cafe", 3),
            "CWlanBssEntry::ConnectSynchronous() - StartPassphraseDeskAsUser() failed");
  EXPECT_TRUE(wlan.connects.empty());
}

TEST_F(ConnectTest, TemporaryProfileServesAgainAndIsStoredAtTheDisconnect) {
  StartDiscovered();
  wlan.onConnect = [this](const WLAN_CONNECTION_PARAMETERS& parameters) {
    mode = parameters.wlanConnectionMode;
    asked = Bssid(3);
    ConnectLikeThePlatform("Cafe");
  };
  EXPECT_EQ(ConnectThrows(kXml, true, 15000, u"Cafe", 3), "");
  EXPECT_EQ(mode, wlan_connection_mode_temporary_profile);
  EXPECT_TRUE(Entry(u"Cafe", 3)->m_bHasTempProfile);
  EXPECT_TRUE(wlan.saved.empty());

  EXPECT_EQ(ConnectThrows(u"", false, 15000, u"Cafe", 3), "") << "again, by the text that is kept";
  EXPECT_EQ(wlan.connects.back(), kXml);
  Discover();
  EXPECT_TRUE(Entry(u"Cafe", 3)->m_bHasTempProfile) << "a new scan does not forget it";

  wlan.codes["WlanSetProfile"] = ERROR_GEN_FAILURE;
  wlan.NotifyConnection(kGone, "Cafe");
  wlan.codes.clear();
  wlan.NotifyConnection(kGone, "Cafe");
  EXPECT_TRUE(wlan.saved.empty()) << "a text that failed is not tried again";
}

TEST_F(ConnectTest, SaveForANetworkWithAProfileOnlyWaitsForTheDisconnect) {
  StartDiscovered();
  EXPECT_EQ(ConnectThrows(kXml, true), "");
  EXPECT_FALSE(Entry(u"Office", 1)->m_bHasTempProfile);
  wlan.NotifyConnection(kGone, "Office");
  EXPECT_EQ(wlan.saved, std::vector<std::u16string>{kXml});
}

}  // namespace
}  // namespace corvane::test
