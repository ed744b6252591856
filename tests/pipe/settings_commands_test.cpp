// The commands that write an adapter's settings.

#include "pipe/command_fixture.h"

namespace corvane::test {
namespace {

class SettingsCommandTest : public CommandTest {
 protected:
  static std::string Dword(const std::string& name, const std::string& value) {
    return "\"cmd\":\"WriteRegDW\",\"name\":\"" + name + "\",\"value\":" + value;
  }
  static std::string Text(const std::string& name, const std::string& value) {
    return "\"cmd\":\"WriteRegString\",\"name\":\"" + name + "\",\"value\":\"" + value + "\"";
  }
  std::uint32_t Number(const WString& name, std::size_t index = 0) {
    std::uint32_t number = 0xFFFFFFFF;
    adapters[index]->Config()->GetDWORD(name, &number);
    return number;
  }
  WString TextOf(const char16_t* name, std::size_t index) {
    WString text;
    adapters[index]->Config()->GetString(name, &text);
    return text;
  }
};

TEST_F(SettingsCommandTest, EachNumberIsWrittenInAWindowAndWakes) {
  for (const char* name :
       {"Enabled", "PreferPrivateNetwork", "ForceAutoConnect", "APScoreThreshold", "ScanInterval",
        "LQCThreshold", "LatchToPrivate", "GatewayRoaming", "PassiveSuggestMode"}) {
    CloseWindows();
    EXPECT_TRUE(IsEcho(AskAdapter(Dword(name, "4294967295")))) << name;
    EXPECT_EQ(Number(Widen(name)), 4294967295u) << name << ": no range is checked";
    EXPECT_EQ(WindowMs(), 15'000u) << name;
    EXPECT_TRUE(WasWoken()) << name;
    CloseWindows();
    EXPECT_TRUE(IsEcho(AskAdapter(Dword(name, "0")))) << name;
    EXPECT_EQ(Number(Widen(name)), 0u) << name;
    const bool isEnabled = std::string(name) == "Enabled";
    EXPECT_EQ(WindowMs(), isEnabled ? 0u : 15'000u) << name;
    EXPECT_EQ(WasWoken(), !isEnabled) << name;
  }
  EXPECT_EQ(WindowMs(1), 0u) << "another adapter's";
  EXPECT_FALSE(WasWoken(1));
}

TEST_F(SettingsCommandTest, WrongMembersHaveTheirCodes) {
  const std::string cmd = "\"cmd\":\"WriteRegDW\"";
  EXPECT_EQ(Code(cmd), 1u) << "no guid";
  EXPECT_EQ(Code(cmd + ",\"guid\":7"), 1u);
  EXPECT_EQ(Code(cmd + ",\"guid\":\"{NONE}\""), 2u);
  EXPECT_EQ(Code(cmd + ",\"guid\":\"" + guid + " \""), 2u);
  EXPECT_EQ(AdapterCode(cmd), 7u);
  EXPECT_EQ(AdapterCode(cmd + ",\"name\":\"Enabled\""), 7u);
  EXPECT_EQ(AdapterCode(cmd + ",\"name\":7,\"value\":1"), 7u);
  for (const char* value : {"-1", "1.5", "1.0", "4294967296", "true", "\"1\"", "null", "[1]"}) {
    EXPECT_EQ(AdapterCode(Dword("Enabled", value)), 7u) << value;
  }
  for (const char* name : {"", "enabled", "Enabled\\u0000", "AdapterEnabled"}) {
    EXPECT_EQ(AdapterCode(Dword(name, "1")), 8u) << name;
  }
  EXPECT_EQ(WindowMs(), 0u);
  EXPECT_FALSE(WasWoken());
}

TEST_F(SettingsCommandTest, AFailedWriteLeavesTheWindowOpen) {
  FailWrites(true);
  EXPECT_EQ(AdapterCode(Dword("ScanInterval", "77")), 9u);
  EXPECT_EQ(WindowMs(), 15'000u);
  EXPECT_FALSE(WasWoken());
  CloseWindows();
  EXPECT_EQ(AdapterCode(Text("ScoreCfgJson", "{}")), 9u);
  EXPECT_EQ(WindowMs(), 0u);
  FailWrites(false);
}

TEST_F(SettingsCommandTest, WeightsGoToTheirAdapterWithoutAWindow) {
  EXPECT_TRUE(IsEcho(AskAdapter(Text("ScoreCfgJson", "{\\\"a\\\":\\u00fc}"))));
  EXPECT_EQ(TextOf(u"ScoreCfgJson", 0), u"{\"a\":\u00FC}");
  EXPECT_EQ(TextOf(u"ScoreCfgJson", 1), u"");
  EXPECT_EQ(WindowMs(), 0u);
  EXPECT_TRUE(WasWoken());
  EXPECT_EQ(AdapterCode(Text("PreferredlistJson", "x")), 8u);
  EXPECT_EQ(AdapterCode("\"cmd\":\"WriteRegString\",\"name\":\"ScoreCfgJson\",\"value\":7"), 7u);
  EXPECT_EQ(Code("\"cmd\":\"WriteRegString\""), 1u);
  EXPECT_EQ(Code("\"cmd\":\"WriteRegString\",\"guid\":\"x\""), 2u);
}

// The GUID only tells whom to wake.
TEST_F(SettingsCommandTest, ListsGoToTheFirstTwoAdapters) {
  guid = WideToUtf8(adapters[1]->Config()->GetGuidText());
  for (const char* name : {"DenylistJson", "AllowlistJson"}) {
    CloseWindows();
    EXPECT_TRUE(IsEcho(AskAdapter(Text(name, name))));
    for (const std::size_t index : {0u, 1u}) {
      EXPECT_EQ(TextOf(Widen(name).c_str(), index), Widen(name)) << index;
      EXPECT_EQ(WindowMs(index), 15'000u) << index;
    }
    EXPECT_FALSE(WasWoken(0));
    EXPECT_TRUE(WasWoken(1));
  }
}

TEST_F(SettingsCommandTest, OnlyTheFirstAdaptersFailureIsTold) {
  g_DebugMask = DBG(6);
  kernel.Faults().FailCall("RegSetValueExW", 1, platform::ERROR_ACCESS_DENIED);
  EXPECT_EQ(AdapterCode(Text("DenylistJson", "d")), 0u) << "the second adapter's write";
  EXPECT_TRUE(HasLog("SetRegistry_DenylistJson() failed for CFG-index 1"));
  kernel.Faults().FailCall("RegSetValueExW", 1, platform::ERROR_ACCESS_DENIED);
  EXPECT_EQ(AdapterCode(Text("AllowlistJson", "a")), 0u);
  EXPECT_TRUE(HasLog("SetRegistry_AllowlistJson() failed for index 1"));
  EXPECT_EQ(TextOf(u"AllowlistJson", 0), u"a");
  WasWoken();
  kernel.Faults().FailCall("RegSetValueExW", 2, platform::ERROR_ACCESS_DENIED);
  EXPECT_EQ(AdapterCode(Text("DenylistJson", "e")), 9u);
  EXPECT_EQ(TextOf(u"DenylistJson", 1), u"e");
  EXPECT_FALSE(WasWoken());
}

class OneAdapterCommandTest : public CommandTest {
 protected:
  OneAdapterCommandTest() : CommandTest(1) {}
};

TEST_F(OneAdapterCommandTest, AListNeedsNoSecondAdapter) {
  EXPECT_TRUE(
      IsEcho(AskAdapter("\"cmd\":\"WriteRegString\",\"name\":\"DenylistJson\",\"value\":\"[]\"")));
  EXPECT_EQ(Value(u"DenylistJson"), u"[]");
  EXPECT_EQ(Code("\"cmd\":\"MiscCommand\",\"name\":\"IDET\",\"value\":1"), 0u);
}

}  // namespace
}  // namespace corvane::test
