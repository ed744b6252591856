#include "settings/settings_fixture.h"
#include "store/address_text.h"

namespace corvane {
namespace {

using GlobalConfig = test::ConfigTest;
using test::kHome;

TEST_F(GlobalConfig, WritesFirstRunValuesOnce) {
  Global().Initialize(false);
  const std::pair<const char16_t*, platform::DWORD> first[] = {
      {u"EnablePost", 1},       {u"MonitorWhileDisabled", 1},
      {u"GatewayRoaming", 0},   {u"RTAudioMode", 2},
      {u"FastPost", 0},         {u"DBWMEnable", 0},
      {u"RTAudioModeMbps", 15}, {u"BTPenaltyEnabled", 0},
      {u"BTPenaltyValue", 3},   {u"ServiceEnable", 1},
      {u"EnablePilot", 0},      {u"ULScan", 0},
      {u"FreshDone", 1},        {u"SCOREMAX", 155},
      {u"SCOREMAX_AC", 133},    {u"SCOREMAX_MID_AC", 96},
      {u"SCOREMAX_LOW_AC", 81}};
  for (const auto& [name, value] : first)
    EXPECT_EQ(Registry().GetDword(kHome, name), value) << Narrow(name);
  EXPECT_EQ(Registry().GetText(kHome, u"RandomCsv"), u"1\t1\t1");
  EXPECT_FALSE(Global().m_bULScan);
  EXPECT_FALSE(Global().m_bGatewayRoaming);

  Registry().SetDword(kHome, u"ULScan", 1);
  Registry().SetDword(kHome, u"SCOREMAX", 1);
  Global().Shutdown(false);
  Global().Initialize(false);  // the next pass: the key is not fresh any more
  EXPECT_TRUE(Global().m_bULScan);
  EXPECT_EQ(Registry().GetDword(kHome, u"SCOREMAX"), 155u);
  Global().Initialize(true);
  EXPECT_FALSE(Global().m_bULScan);
}

TEST_F(GlobalConfig, RefusesNumbersOutOfRangeAndKeepsWhatItHas) {
  Registry().SetDword(kHome, u"FreshDone", 1);
  const struct {
    const char16_t* name;
    std::atomic<std::uint32_t>& field;
    std::uint32_t start;
  } cases[] = {{u"BTPenaltyValue", Global().m_BTPenaltyValue, 3},
               {u"AllowFilterScoreBonus", Global().m_AllowFilterScoreBonus, 20},
               {u"SCOREDIFFPCT", Global().m_ScoreDiffPct, 20}};
  for (const auto& one : cases) {
    Registry().SetDword(kHome, one.name, 101);
    Global().Initialize(false);
    EXPECT_EQ(one.field, one.start) << Narrow(one.name);
    Registry().SetDword(kHome, one.name, 100);
    Global().Initialize(false);
    EXPECT_EQ(one.field, 100u) << Narrow(one.name);
  }
}

TEST_F(GlobalConfig, RefreshReadsOnlyItsOwnValues) {
  Registry().SetDword(kHome, u"FreshDone", 1);
  Registry().SetDword(kHome, u"RoamingEnabled", 0);
  Registry().SetDword(kHome, u"AllowlistEnabled", 0);
  Global().Initialize(false);
  EXPECT_FALSE(Global().m_bRoamingEnabled);
  Registry().DeleteValue(kHome, u"RoamingEnabled");
  Registry().DeleteValue(kHome, u"AllowlistEnabled");
  Registry().SetDword(kHome, u"PalisadeOptimizer", 1);
  Registry().SetDword(kHome, u"ULScan", 0);
  Registry().SetDword(kHome, u"EnablePilot", 1);
  Global().RefreshGlobals();
  EXPECT_TRUE(Global().m_bRoamingEnabled);     // missing means on
  EXPECT_FALSE(Global().m_bAllowlistEnabled);  // missing leaves it
  EXPECT_TRUE(Global().m_bPalisadeOptimizer);
  EXPECT_TRUE(Global().m_bEnablePilot);
  EXPECT_TRUE(Global().m_bULScan);  // needs a new pass
}

TEST_F(GlobalConfig, WeeksOfAnyTextAreEnabledUnlessTheySayZero) {
  Registry().SetDword(kHome, u"FreshDone", 1);
  Registry().SetDword(kHome, u"InstallTime", 0xFFFFFFFF);  // in the future
  Registry().SetText(kHome, u"RandomCsv", u"1\t0\tx\t\t00");
  Global().Initialize(false);
  const std::pair<int, bool> weeks[] = {{-5, true}, {0, true}, {1, true}, {2, false},
                                        {3, true},  {4, true}, {5, true}};
  for (const auto& [week, enabled] : weeks)
    EXPECT_EQ(Global().IsEnabledForWeek(week), enabled) << week;
  Global().Shutdown(false);
  EXPECT_TRUE(Global().IsEnabledForWeek(2));
}

TEST_F(GlobalConfig, KeepsTheSystemGuidOrMakesOne) {
  constexpr char16_t kGuid[] = u"{01234567-89AB-CDEF-0123-456789ABCDEF}";
  Registry().SetText(kHome, u"SystemGuid", kGuid);
  Global().Initialize(false);
  EXPECT_EQ(Global().GetSystemGuidText(), kGuid);
  Registry().SetText(kHome, u"SystemGuid", u"{rubbish}");
  Global().Initialize(false);
  platform::GUID guid;
  EXPECT_NE(Global().GetSystemGuidText(), kGuid);
  EXPECT_TRUE(GuidFromText(Registry().GetText(kHome, u"SystemGuid").value(), &guid));
  EXPECT_EQ(Registry().GetText(kHome, u"SystemGuid"), Global().GetSystemGuidText());
}

TEST_F(GlobalConfig, WithoutARandomNumberItHasNoSystemGuidUntilTheNextStart) {
  kernel.Faults().FailCall("CoCreateGuid", 1, platform::ERROR_GEN_FAILURE);
  Global().Initialize(false);
  EXPECT_FALSE(Registry().GetText(kHome, u"SystemGuid")) << "none that another PC might have, too";
  Global().Shutdown(false);
  Global().Initialize(false);
  EXPECT_TRUE(Registry().GetText(kHome, u"SystemGuid"));
}

TEST_F(GlobalConfig, KnowsItsAdaptersByIndexAndGuid) {
  Global().m_bForceLQEtw = true;
  const auto config = OpenAdapter();
  EXPECT_TRUE(config->m_bForceLQEtw);
  EXPECT_EQ(Global().GetIFConfigCount(), 1);
  EXPECT_EQ(Global().GetIFConfigByGuid(u"{G}"), config);
  EXPECT_FALSE(Global().GetIFConfigByGuid(u"{X}"));
  for (const int index : {-1, 1}) {
    try {
      Global().GetIFConfig(index);
      ADD_FAILURE() << index;
    } catch (const Exception& e) {
      EXPECT_EQ(std::string(e.what()),
                FormatA("CGlobalConfigContainer::GetIFConfig: INVALID idx %i", index));
    }
  }
  Global().Shutdown(false);
  EXPECT_EQ(Global().GetIFConfigCount(), 0);
  EXPECT_THROW(Global().GetIFConfig(0), Exception);
  EXPECT_FALSE(Global().ReadFlagAndClear(u"Survey1"));
}

TEST_F(GlobalConfig, FindsFilesInClientDirectoriesInListOrder) {
  kernel.Files().Write(u"/b/tool.exe", "b");
  kernel.Files().Write(u"/c/tool.exe", "c");
  kernel.Files().MakeDirectories(u"/a/tool.exe");
  for (const char16_t* folder : {u"/a", u"/b", u"/c"}) EXPECT_TRUE(Global().SetClientDir(folder));
  EXPECT_FALSE(Global().SetClientDir(u"/b"));
  WString path;
  EXPECT_TRUE(Global().FindFileInClientDirs(u"tool.exe", &path));
  EXPECT_EQ(path, WString(u"/b") + platform::kPathSeparator +
                      u"tool.exe");  // a directory of that name is no file
  EXPECT_FALSE(Global().FindFileInClientDirs(u"other.exe", &path));
}

TEST_F(GlobalConfig, OneShotFlagsAreExactlyOne) {
  Global().Initialize(false);
  Registry().SetDword(kHome, u"Survey1", 2);
  EXPECT_FALSE(Global().ReadFlagAndClear(u"Survey1"));
  Registry().SetDword(kHome, u"Survey1", 1);
  EXPECT_TRUE(Global().ReadFlagAndClear(u"Survey1"));
  EXPECT_FALSE(Global().ReadFlagAndClear(u"Survey1"));
}

TEST_F(GlobalConfig, EndsNoThreadWhenEveryRegistryCallFails) {
  for (const char* call :
       {"RegOpenKeyExW", "RegCreateKeyExW", "RegQueryValueExW", "RegSetValueExW"}) {
    SCOPED_TRACE(call);
    kernel.Faults().FailAlways(call, platform::ERROR_ACCESS_DENIED);
    Global().Initialize(false);
    const auto config = OpenAdapter();
    config->RefreshFromRegistry();
    config->SetStatusMessage(kStatusVpn);
    EXPECT_EQ(config->m_LQCThreshold, 70u);
    Global().Shutdown(false);
    kernel.Faults().Clear();
  }
}

}  // namespace
}  // namespace corvane
