#include "settings/interface_config.h"

#include <utility>

#include "platform/clock_api.h"
#include "settings/settings_fixture.h"
#include "store/value_names.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;

using InterfaceConfig = test::ConfigTest;
using test::kAdapter;

TEST_F(InterfaceConfig, PutsTheProjectDefaultsBackAtEachStart) {
  Registry().SetDword(kAdapter, u"PassiveSuggestMode", 0);
  Registry().SetDword(kAdapter, u"ScanInterval", 60);
  Registry().SetDword(kAdapter, u"FreshDone", 0);
  Registry().SetText(kAdapter, u"StatusMessage", LookUpStatusText(kStatusExternalRoaming));
  const auto config = OpenAdapter();
  const std::pair<const char16_t*, platform::DWORD> defaults[] = {
      {u"PassiveSuggestMode", 2},   {u"ForceAutoConnect", 1}, {u"LatchToPrivate", 0},
      {u"PreferPrivateNetwork", 1}, {u"APScoreThreshold", 3}, {u"LQCThreshold", 70},
      {u"ScanInterval", 300},       {u"SuggestCount", 0},     {u"BestCount", 0}};
  for (const auto& [name, value] : defaults) EXPECT_EQ(Number(name), value) << Narrow(name);
  EXPECT_EQ(Text(u"ConnectStatus"), u"idle");
  EXPECT_EQ(Text(u"StatusMessage"), u"");
  EXPECT_TRUE(config->m_bPassive && config->m_bPopupMode && config->m_PreferPrivateNetwork);
  EXPECT_FALSE(config->m_LatchToPrivate);
}

TEST_F(InterfaceConfig, ResetsSuggestionCountersOfTheFirstTwoAdaptersOnly) {
  for (const char16_t* guid : {u"{A}", u"{B}", u"{C}"}) {
    const WString path = WString(test::kHome) + u"\\" + guid;
    for (const char16_t* name : {u"SuggestCount", u"SuggestCount2", u"BestCount", u"BestCount2"}) {
      Registry().SetDword(path, name, 9);
    }
    OpenAdapter(guid);
  }
  const auto count = [&](const char16_t* guid, const char16_t* name) {
    return Registry().GetDword(WString(test::kHome) + u"\\" + guid, name).value_or(99);
  };
  EXPECT_EQ(count(u"{A}", u"SuggestCount"), 0u);
  EXPECT_EQ(count(u"{A}", u"SuggestCount2"), 9u);
  EXPECT_EQ(count(u"{B}", u"SuggestCount"), 9u);
  EXPECT_EQ(count(u"{B}", u"BestCount2"), 0u);
  EXPECT_EQ(count(u"{C}", u"SuggestCount"), 9u);
  EXPECT_EQ(count(u"{C}", u"BestCount2"), 9u);
}

TEST_F(InterfaceConfig, ReadsItsValuesWithinTheirRanges) {
  const auto config = OpenAdapter();
  const struct {
    const char16_t* name;
    platform::DWORD stored;
    std::uint32_t read;
    std::atomic<std::uint32_t>& field;
  } cases[] = {
      {u"ScanInterval", 5, 10, config->m_ScanInterval},
      {u"ScanInterval", 10, 10, config->m_ScanInterval},
      {u"ScanInterval", 3600, 3600, config->m_ScanInterval},
      {u"ScanInterval", 5000, 3600, config->m_ScanInterval},
      {u"APScoreThreshold", 101, 100, config->m_APScoreThreshold},
      {u"APScoreThreshold", 0, 0, config->m_APScoreThreshold},
      {u"LQCThreshold", 100, 100, config->m_LQCThreshold},
      {u"LQCThreshold", 101, 100, config->m_LQCThreshold},
  };
  for (const auto& one : cases) {
    Registry().SetDword(kAdapter, one.name, one.stored);
    config->RefreshFromRegistry();
    EXPECT_EQ(one.field, one.read) << Narrow(one.name) << one.stored;
  }
  // 3 is no mode: the one before stays. A missing value leaves its field.
  const struct {
    platform::DWORD mode;
    bool passive, popup;
  } modes[] = {{0, false, false},
               {3, false, false},
               {1, true, false},
               {0xFFFFFFFF, true, false},
               {2, true, true}};
  for (const auto& one : modes) {
    config->SetDWORD(value::kPassiveSuggestMode, one.mode);
    config->RefreshFromRegistry();
    EXPECT_EQ(config->m_bPassive, one.passive) << one.mode;
    EXPECT_EQ(config->m_bPopupMode, one.popup) << one.mode;
  }
  config->SetDWORD(value::kEnabled, 0);
  config->RefreshFromRegistry();
  Registry().DeleteValue(kAdapter, u"Enabled");
  config->RefreshFromRegistry();
  EXPECT_FALSE(config->m_Enabled);
  config->SetString(value::kScoreCfgJson, u"{\"SQMax\":40}");
  config->RefreshFromRegistry();
  EXPECT_EQ(config->GetScoreWeights().SQMax, 40u);
}

TEST_F(InterfaceConfig, ClearsOnlyTheStatusThatIsShown) {
  const auto config = OpenAdapter();
  EXPECT_TRUE(config->SetStatusMessage(kStatusExternalRoaming));
  EXPECT_TRUE(config->ClearStatusMessage(kStatusRadioDisabled));
  EXPECT_EQ(Text(u"StatusMessage"), LookUpStatusText(kStatusExternalRoaming));
  EXPECT_FALSE(config->SetStatusMessage(100));
  EXPECT_FALSE(config->ClearStatusMessage(114));
  EXPECT_TRUE(config->SetStatusMessage(kStatusNeedCredentials));
  RunFor(59'999ms);
  EXPECT_TRUE(config->ClearStatusMessageIfOlder(kStatusNeedCredentials, 60'000));
  EXPECT_EQ(Text(u"StatusMessage"), LookUpStatusText(kStatusNeedCredentials));
  RunFor(1ms);
  config->ClearStatusMessageIfOlder(kStatusVpn, 60'000);
  EXPECT_EQ(Text(u"StatusMessage"), LookUpStatusText(kStatusNeedCredentials));
  config->ClearStatusMessageIfOlder(kStatusNeedCredentials, 60'000);
  EXPECT_EQ(Text(u"StatusMessage"), u"");
  config->SetSuggestedNetworkReasonPercent(25);
  EXPECT_EQ(
      Text(u"SuggestedNetworkReason"),
      u"A Wireless Network that is 25% better is available. Would you like to connect to it?");
}

TEST_F(InterfaceConfig, CompletesAConnectAndDisturbsNoOtherStatus) {
  const auto config = OpenAdapter();
  const struct {
    const char16_t* before;
    bool connected;
    const char16_t* after;
  } cases[] = {{u"connecting", true, u"connected"}, {u"idle", true, u"idle"},
               {u"error", true, u"error"},          {u"connected", false, u"disconnected"},
               {u"", false, u"disconnected"},       {u"connecting", false, u"connecting"},
               {u"error", false, u"error"}};
  for (const auto& one : cases) {
    Registry().SetText(kAdapter, u"ConnectStatus", one.before);
    config->SetConnectedNetwork(u"Office [Channel 36]", u"Office",
                                one.connected ? u"00-11-22-33-44-55" : u"");
    EXPECT_EQ(Text(u"ConnectStatus"), one.after) << Narrow(one.before) << one.connected;
  }
  EXPECT_EQ(Text(u"ConnectedNetwork"), u"Office [Channel 36]");
  EXPECT_EQ(Text(u"ConnectedSsid"), u"Office");
  EXPECT_EQ(Text(u"ConnectedBssid"), u"");
}

TEST_F(InterfaceConfig, SleepsAndScansByPower) {
  const auto config = OpenAdapter();
  config->Set_MainLoopSleepMs(10'000);
  Global().m_BatteryModeSleepSecs = 30;
  EXPECT_EQ(config->GetMainLoopSleepMs(), 10'000u);
  EXPECT_EQ(config->GetScanIntervalSecs(), 300u);
  const std::pair<platform::BYTE, bool> battery[] = {{0, true}, {255, true}, {1, false}};
  for (const auto& [line, answers] : battery) {
    power.line = line;
    power.answers = answers;
    EXPECT_EQ(config->GetMainLoopSleepMs(), 30'000u);
    EXPECT_EQ(config->GetScanIntervalSecs(), 900u);
  }
  // The product does not wrap into a short sleep, nor become an endless one.
  Global().m_BatteryModeSleepSecs = 0xFFFFFFFF;
  EXPECT_EQ(config->GetMainLoopSleepMs(), platform::INFINITE - 1);
}

TEST_F(InterfaceConfig, RoamingInhibitShowsItsStatusAndAge) {
  const auto config = OpenAdapter();
  EXPECT_EQ(config->GetRoamingInhibitAgeMs(), 0u);
  RunFor(1s);
  config->SetRoamingInhibit();
  EXPECT_EQ(Text(u"StatusMessage"), LookUpStatusText(kStatusExternalRoaming));
  RunFor(250ms);
  EXPECT_EQ(config->GetRoamingInhibitAgeMs(), 250u);
  config->ClearRoamingInhibit();
  EXPECT_EQ(config->GetRoamingInhibitTick(), 0u);
  EXPECT_EQ(Text(u"StatusMessage"), u"");
}

TEST_F(InterfaceConfig, RaisesTheThresholdWhichTheNextReadCaps) {
  const auto config = OpenAdapter();
  config->SetDWORD(value::kAPScoreThreshold, 99);
  config->RefreshFromRegistry();
  config->ResolveUp_APScoreDeltaThreshold({3, 8});
  EXPECT_EQ(Number(u"APScoreThreshold"), 101u);
  config->RefreshFromRegistry();
  EXPECT_EQ(config->m_APScoreThreshold, 100u);
}

TEST_F(InterfaceConfig, AirplaneModeIsTheKeysDefaultValue) {
  constexpr char16_t kRadio[] =
      u"SYSTEM\\CurrentControlSet\\Control\\RadioManagement\\SystemRadioState";
  std::uint32_t mode = 7;
  EXPECT_FALSE(CQUAYInterfaceConfig::GetAirplaneMode(&mode));
  EXPECT_EQ(mode, 7u);
  Registry().SetDword(kRadio, u"", 1);
  EXPECT_TRUE(CQUAYInterfaceConfig::GetAirplaneMode(&mode));
  EXPECT_EQ(mode, 1u);
}

TEST_F(InterfaceConfig, IsHarmlessAfterShutdown) {
  const auto config = OpenAdapter();
  config->SignalMainLoopSemaphore();
  config->SignalMainLoopSemaphore();  // one wake-up waits already: reported, no harm
  EXPECT_TRUE(config->WaitMainLoopSemaphore(1000));
  EXPECT_FALSE(config->WaitMainLoopSemaphore(1000));
  Global().Shutdown(false);
  const std::uint64_t writes = Registry().WriteCount();
  EXPECT_FALSE(config->SetDWORD(value::kEnabled, 0));
  EXPECT_FALSE(config->SetStatusMessage(kStatusVpn));
  config->SetVPNInhibited(true);
  config->RefreshFromRegistry();
  config->SetConnectedNetwork(u"a", u"b", u"c");
  config->SignalMainLoopSemaphore();
  EXPECT_EQ(Registry().WriteCount(), writes);
  EXPECT_TRUE(config->m_VPNInhibited);
  const auto before = kernel.Now();
  EXPECT_FALSE(config->WaitMainLoopSemaphore(700));
  EXPECT_EQ(kernel.Now() - before, 700ms);
  EXPECT_EQ(config->GetScoreWeights(), ScoreWeights{});
  EXPECT_FALSE(config->m_Denylist.LoadFromFileAndRegistry(*config));
}

// A caller that is overtaken between reading its tick and setting the clock would come with an
// older tick, which looks like a clock that went back and cuts the longer inhibit short.
class SlowTick : public platform::ClockApi {
 public:
  explicit SlowTick(platform::ClockApi& real) : m_Real(real) {}
  platform::ULONGLONG GetTickCount64() override {
    const platform::ULONGLONG now = m_Real.GetTickCount64();
    if (std::exchange(m_bSlow, false)) Os().threads.Sleep(50);
    return now;
  }
  void GetSystemTimeAsFileTime(platform::FILETIME* now) override {
    m_Real.GetSystemTimeAsFileTime(now);
  }
  bool m_bSlow = false;

 private:
  platform::ClockApi& m_Real;
};

TEST_F(InterfaceConfig, InhibitIsNotCutByACallerThatWasOvertaken) {
  const auto config = OpenAdapter();
  auto& clock = Install<SlowTick>(Os().clock);
  clock.m_bSlow = true;
  auto& threads = Os().threads;
  threads.CloseHandle(threads.CreateThread(
      [](void* self) -> platform::DWORD {
        static_cast<CQUAYInterfaceConfig*>(self)->Set_InhibitQUAY(5000, "sw-pop");
        return 0;
      },
      config.get(), "worker", nullptr));
  RunFor(10ms);
  config->Set_InhibitQUAY(15000, "out-scan");
  RunFor(100ms);
  EXPECT_GT(config->GetInhibitRemainingMs(), 14'000u);
}

}  // namespace
}  // namespace corvane
