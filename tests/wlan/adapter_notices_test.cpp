#include "notify/ap_summary.h"
#include "notify/notification_manager.h"
#include "store/value_names.h"
#include "wlan/adapter_fixture.h"

namespace corvane::test {
namespace {

using namespace platform;

constexpr DWORD kStart = 9, kComplete = 10, kFailed = 11, kDisconnecting = 20, kGone = 21;

// Takes what clients would be told.
class Subscriber : public SmartObjEx<Subscriber, SmartObj<>>, public INotificationProvider {
 public:
  const char* GetClassName() const override { return "Subscriber"; }
  void SendNotification(CNotificationEvent* event) override {
    told.push_back(event->m_Category + u"/" + event->m_Type);
    last = event;
  }
  std::vector<WString> told;
  CSmartPointer<CNotificationEvent> last;
};

class NotificationsTest : public AdapterTest {
 protected:
  CSmartPointer<Subscriber> Subscribe() {
    auto subscriber = Subscriber::CreateObject();
    auto& manager = CNotificationManagerSingleton::GetInstance();
    manager.AddProvider(subscriber.get());
    manager.BeginThread();
    return subscriber;
  }
};

TEST_F(NotificationsTest, OutsideEventsInhibitForTheirTime) {
  Start();
  struct Case {
    const char* name;
    std::function<void()> event;
    std::uint64_t ms;
    const char* tag;
  };
  const Case cases[] = {
      {"disconnecting", [&] { wlan.NotifyConnection(kDisconnecting, "Office"); }, 3000,
       "out-notify-disc"},
      {"disconnected", [&] { wlan.NotifyConnection(kGone, "Office"); }, 5000, "out-disc"},
      {"start", [&] { wlan.NotifyConnection(kStart, "Office"); }, 10000, "out-notify-con"},
      {"scan end", [&] { wlan.NotifyScan(7); }, 15000, "out-scan"},
      {"scan failure", [&] { wlan.NotifyScan(8); }, 15000, "out-scan"},
  };
  for (const Case& one : cases) {
    RunFor(60s);
    one.event();
    EXPECT_EQ(InhibitMs(), one.ms) << one.name;
    EXPECT_STREQ(InhibitTag(), one.tag) << one.name;
    EXPECT_TRUE(adapter->Config()->IsNoDelayOpen() || one.ms == 15000) << one.name;
  }
  RunFor(60s);
  wlan.NotifyConnection(kFailed, "Office");
  wlan.NotifyConnection(kComplete, "Office");
  EXPECT_EQ(InhibitMs(), 0u) << "neither a failed attempt nor a completion inhibits";
}

TEST_F(NotificationsTest, CompletionDoesNotEndTheInhibitOfItsStart) {
  Start();
  wlan.NotifyConnection(kStart, "Office");
  RunFor(4s);
  wlan.NotifyConnection(kComplete, "Office");
  EXPECT_EQ(InhibitMs(), 6000u);
}

TEST_F(NotificationsTest, OutsideDisconnectForgetsTheConnection) {
  StartConnected("Office", Bssid(1));
  auto& config = *adapter->Config();
  config.m_rate_gate_high = 0.08;
  config.m_rate_gate_low = 0.07;
  config.SetStatusMessage(kStatusNeedCredentials);
  wlan.NotifyConnection(kGone, "Office");
  EXPECT_FALSE(adapter->IsConnected());
  EXPECT_EQ(config.m_force_scan_counter, 1);
  EXPECT_EQ(config.m_rate_gate_high, kRateGateHighStart);
  EXPECT_EQ(config.m_rate_gate_low, kRateGateLowStart);
  EXPECT_EQ(adapter->Link().TimeOfLastConnectedSsid(), Now());
  EXPECT_EQ(AdapterValue(value::kStatusMessage), u"");
}

TEST_F(NotificationsTest, TimeOfTheLastConnectionIsThatOfItsOwnSsidOnly) {
  StartConnected("Office", Bssid(1));
  wlan.NotifyConnection(kGone, "Cafe");
  EXPECT_EQ(adapter->Link().TimeOfLastConnectedSsid(), 0u);
  adapter->Config()->SetRoamingInhibit();
  wlan.NotifyConnection(kGone, "Office");
  EXPECT_EQ(adapter->Link().TimeOfLastConnectedSsid(), 0u) << "while a roaming inhibit is on";
}

TEST_F(NotificationsTest, RoamingInhibitEndsWithAnotherNetwork) {
  StartConnected("Office", Bssid(1));
  auto& config = *adapter->Config();
  config.SetRoamingInhibit();
  wlan.NotifyConnection(kComplete, "Office");
  EXPECT_NE(config.GetRoamingInhibitTick(), 0u);
  EXPECT_TRUE(config.m_bForcePopupOverride);
  wlan.NotifyConnection(kComplete, "Cafe");
  EXPECT_EQ(config.GetRoamingInhibitTick(), 0u);
  EXPECT_EQ(adapter->GetLastConnectedSsid(), u"Cafe");
}

TEST_F(NotificationsTest, OwnCompletionsEndTheRoamingInhibitAndTheOverride) {
  StartConnected("Office", Bssid(1));
  auto& config = *adapter->Config();
  config.SetRoamingInhibit();
  config.m_bForcePopupOverride = true;
  config.SetStatusMessage(kStatusNeedCredentials);
  CApSetMemo& suggested = config.m_Popup.GetMemo();
  suggested.Add(false, u"Office", MacText(Bssid(2)).c_str(), u"", u"", CApSetMemo::kNoFlag, 0);
  wlan.onConnect = [this](const WLAN_CONNECTION_PARAMETERS&) {
    wlan.PostConnection(100, kComplete, "Office");
  };
  adapter->ConnectToNetwork(u"Office");
  EXPECT_EQ(config.GetRoamingInhibitTick(), 0u);
  EXPECT_FALSE(config.m_bForcePopupOverride);
  EXPECT_EQ(AdapterValue(value::kStatusMessage), u"");
  EXPECT_EQ(adapter->GetConnectedBssidIfWeInitiated(), Bssid(1))
      << "where the platform's choice has led to";
  EXPECT_FALSE(suggested.HasNetwork(u"Office")) << "wherever a connect by name alone has led";
}

TEST_F(NotificationsTest, OwnDisconnectSetsNoInhibit) {
  StartConnected("Office", Bssid(1));
  wlan.onDisconnect = [this] {
    wlan.PostConnection(50, kDisconnecting, "Office");
    wlan.PostConnection(100, kGone, "Office");
  };
  adapter->DisconnectSynchronous(u"test");
  EXPECT_EQ(InhibitMs(), 0u);
  EXPECT_EQ(adapter->Config()->m_force_scan_counter, 1);
}

TEST_F(NotificationsTest, ClientsAreToldOfOutsideChanges) {
  wlan.networks = {"Office"};
  wlan.entries = {{"Office", Bssid(1), 60}};
  const auto subscriber = Subscribe();
  Start();
  adapter->EnumerateALLAPProfiles();  // the same list, as at a start of the program
  Discover();
  RunFor(10ms);
  EXPECT_EQ(std::exchange(subscriber->told, {}),
            std::vector<WString>{u"System/ProfiledNetworksJson"})
      << "the first list there is";
  wlan.Connect("Office", Bssid(1), 61);
  CApSetMemo& suggested = adapter->Config()->m_Popup.GetMemo();
  for (const MacAddress& bssid : {Bssid(1), Bssid(2)}) {
    suggested.Add(false, u"Office", MacText(bssid).c_str(), u"", u"", CApSetMemo::kNoFlag, 0);
  }
  wlan.NotifyConnection(kComplete, "Office");
  EXPECT_FALSE(suggested.HasAp(u"Office", MacText(Bssid(1))))
      << "the user followed the suggestion by hand";
  EXPECT_TRUE(suggested.HasAp(u"Office", MacText(Bssid(2))));
  RunFor(10ms);
  ASSERT_EQ(subscriber->told, std::vector<WString>{u"ConnectionChange/ExternalConnect"});
  EXPECT_EQ(subscriber->last->m_Data1,
            Format(u"Score %i, 02-11-22-33-44-01, SQ 61, Channel 36, Max datarate 0 mbps, %s",
                   Entry(u"Office", 1)->GetScore(false, adapter->GetScoreContext()),
                   EscapeForJson(u"Office")));
  EXPECT_EQ(subscriber->last->m_Data3, u"00-00-00-00-00-01");
  wlan.NotifyConnection(kGone, "Office");
  RunFor(10ms);
  EXPECT_EQ(subscriber->told.back(), u"ConnectionChange/ExternalDisconnect");
  EXPECT_EQ(subscriber->last->m_Data4, u"Wireless adapter");

  adapter->QueryChannel();  // of the connection that was
  wlan.channel = 149;
  wlan.Connect("Office", Bssid(9), 50);
  wlan.NotifyConnection(kComplete, "Office");
  RunFor(10ms);
  EXPECT_NE(subscriber->last->m_Data1.find(u"Channel 149"), WString::npos)
      << "an access point that no scan has heard";
  wlan.NotifyConnection(kGone, "Office");
  RunFor(10ms);
  subscriber->told.resize(2);

  wlan.onConnect = [this](const WLAN_CONNECTION_PARAMETERS&) {
    wlan.PostConnection(50, kGone, "Cafe");
    wlan.PostConnection(100, kComplete, "Office");
  };
  adapter->ConnectToNetwork(u"Office");
  RunFor(10ms);
  EXPECT_EQ(subscriber->told.size(), 3u) << "the end of the old connection is told as any other";
  EXPECT_EQ(subscriber->told.back(), u"ConnectionChange/ExternalDisconnect");

  wlan.onDisconnect = [this] { wlan.PostConnection(100, kGone, "Office"); };
  adapter->DisconnectSynchronous(u"test");
  RunFor(10ms);
  EXPECT_EQ(subscriber->told.size(), 3u) << "the service's own change is told elsewhere";

  wlan.profiles[u"Cafe"] = u"<xml/>";
  adapter->RefreshProfiledAPList();
  adapter->RefreshProfiledAPList();
  RunFor(10ms);
  EXPECT_EQ(subscriber->told.size(), 4u);
  EXPECT_EQ(subscriber->told.back(), u"System/ProfiledNetworksJson");
  CNotificationManagerSingleton::GetInstance().Shutdown(1000);
}

TEST_F(NotificationsTest, MalformedOnesAreHarmless) {
  Start();
  WLAN_CONNECTION_NOTIFICATION_DATA data;
  data.dot11Ssid.uSSIDLength = 0xFFFFFFFF;
  std::fill(std::begin(data.dot11Ssid.ucSSID), std::end(data.dot11Ssid.ucSSID), BYTE{'x'});
  wlan.Notify(WLAN_NOTIFICATION_SOURCE_ACM, kGone, &data, sizeof(data));
  EXPECT_STREQ(InhibitTag(), "out-disc");
  RunFor(60s);
  wlan.Notify(WLAN_NOTIFICATION_SOURCE_ACM, kGone, &data, 100);
  wlan.Notify(WLAN_NOTIFICATION_SOURCE_MSM, 8, &data, 4);
  wlan.Notify(WLAN_NOTIFICATION_SOURCE_MSM, 14, &data, 4);
  wlan.Notify(WLAN_NOTIFICATION_SOURCE_MSM, 1, nullptr, 0);
  EXPECT_EQ(InhibitMs(), 0u);
}

TEST_F(NotificationsTest, FaultInAHandlerEndsThere) {
  StartConnected("Office", Bssid(1));
  wlan.codes["WlanQueryInterface"] = FakeWlan::kFault;
  wlan.NotifyConnection(kComplete, "Office");
  EXPECT_TRUE(adapter->Config()->m_bForcePopupOverride)
      << "the connection's facts are a courtesy only";
}

}  // namespace
}  // namespace corvane::test
