// Orders to connect, and the removal of profiles.

#include "pipe/command_fixture.h"

namespace corvane::test {
namespace {

class ConnectCommandTest : public CommandTest {
 protected:
  static std::string Order(const std::string& ssid, const std::string& bssid,
                           const std::string& more = "") {
    return "\"cmd\":\"ConnectAP\",\"ssid\":\"" + ssid + "\",\"bssid\":\"" + bssid + "\"" + more;
  }
  static std::string Member(const std::string& name, const std::string& text) {
    return ",\"" + name + "\":\"" + Base64Encode(text) + "\"";
  }
  WString Found(WStringView name) {
    WString path;
    Global().FindFileInClientDirs(name, &path);
    return path;
  }
};

TEST_F(ConnectCommandTest, AnOrderStandsForTheNextRound) {
  EXPECT_TRUE(IsEcho(AskAdapter(
      Order("Office", "02:50:00:00:00:AB", Member("profile", "<x/>") + ",\"save_profile\":true"))));
  EXPECT_EQ(WindowMs(), 20'000u);
  EXPECT_TRUE(WasWoken());
  EXPECT_EQ(Value(u"ConnectStatus"), u"pending");
  const UIConnectRequest order = config->TakeUIConnectRequest();
  EXPECT_EQ(order.ssid, u"Office");
  EXPECT_EQ(order.bssid, u"02-50-00-00-00-ab");
  EXPECT_EQ(order.profile, u"<x/>");
  EXPECT_TRUE(order.save);
}

TEST_F(ConnectCommandTest, TheNextOrderForgetsProfileAndSaving) {
  AskAdapter(Order("a", "02-50-00-00-00-01", Member("profile", "<x/>") + ",\"save_profile\":true"));
  EXPECT_TRUE(
      IsEcho(AskAdapter(Order("", "02-50-00-00-00-02", ",\"save_profile\":1,\"profile\":\"\""))))
      << "an empty ssid will do";
  const UIConnectRequest order = config->TakeUIConnectRequest();
  EXPECT_EQ(order.ssid, u"");
  EXPECT_EQ(order.bssid, u"02-50-00-00-00-02");
  EXPECT_EQ(order.profile, u"");
  EXPECT_FALSE(order.save);
}

TEST_F(ConnectCommandTest, WrongMembersHaveTheirCodes) {
  EXPECT_EQ(Code(Order("a", "b")), 1u);
  EXPECT_EQ(Code("\"guid\":\"x\"," + Order("a", "b")), 2u);
  EXPECT_EQ(AdapterCode("\"cmd\":\"ConnectAP\",\"ssid\":\"a\""), 7u);
  EXPECT_EQ(AdapterCode("\"cmd\":\"ConnectAP\",\"ssid\":7,\"bssid\":\"b\""), 7u);
  EXPECT_EQ(AdapterCode(Order("a", "")), 10u);
  EXPECT_EQ(AdapterCode(Order("a", "b", ",\"profile\":\"*\"")), 13u);
  EXPECT_EQ(WindowMs(), 0u);
  EXPECT_FALSE(WasWoken());
  EXPECT_TRUE(config->TakeUIConnectRequest().bssid.empty());
  EXPECT_NE(Value(u"ConnectStatus"), u"pending");
}

TEST_F(ConnectCommandTest, WhatCameBeforeAMistakeIsTaken) {
  AskAdapter(Order("a", "02-50-00-00-00-01", Member("profile", "<old/>")));
  EXPECT_EQ(AdapterCode(Order(
                "b", "",
                Member("path", "/tools") + Member("profile", "<new/>") + ",\"save_profile\":true")),
            10u);
  kernel.Files().Write(u"/tools/desk", "x");
  EXPECT_EQ(Found(u"desk"), WString(u"/tools") + platform::kPathSeparator + u"desk");
  const UIConnectRequest order = config->TakeUIConnectRequest();
  EXPECT_EQ(order.ssid, u"a");
  EXPECT_EQ(order.profile, u"<new/>");
  EXPECT_TRUE(order.save);
  config->SetUIConnectProfile(u"<old/>");
  config->SetUIConnectSave(true);
  EXPECT_EQ(AdapterCode(Order("b", "b", ",\"profile\":\"*\"")), 13u);
  const UIConnectRequest left = config->TakeUIConnectRequest();
  EXPECT_EQ(left.profile, u"");
  EXPECT_TRUE(left.save) << "the order stops before it";
}

TEST_F(ConnectCommandTest, AnObstacleIsToldBeforeAnythingElse) {
  const std::string bare = "\"cmd\":\"ConnectAP\"";
  const auto refused = [this](const char* reason) {
    std::string quoted;
    for (const char c : sent) quoted += c == '"' ? std::string("\\\"") : std::string(1, c);
    return "{ \"status\":\"error\", \"code\":14, \"reason\":\"" + std::string(reason) +
           "\", \"request\":\"" + quoted + "\" }";
  };
  g_DebugMask = DBG(45);
  config->SetUIConnectProfile(u"<old/>");
  config->SetDWORD(u"AdapterEnabled", 0);
  std::string reply = AskAdapter(bare);
  EXPECT_EQ(reply, refused("adapter disabled"));
  EXPECT_TRUE(HasLog("[ConnectAP][][] REJECT due to VPN INHIBITION"));
  config->m_AirplaneInhibited = true;
  reply = AskAdapter(bare);
  EXPECT_EQ(reply, refused("airplane mode"));
  config->m_RadioInhibited = true;
  reply = AskAdapter(bare);
  EXPECT_EQ(reply, refused("radio disabled"));
  config->m_VPNInhibited = true;
  reply = AskAdapter(Order("Office", "b", Member("profile", "<new/>")));
  EXPECT_EQ(reply, refused("vpn"));
  EXPECT_TRUE(HasLog("[ConnectAP][Office][b] REJECT due to VPN INHIBITION"));
  EXPECT_EQ(WindowMs(), 0u);
  EXPECT_EQ(config->TakeUIConnectRequest().profile, u"<old/>") << "nothing was touched";
}

TEST_F(ConnectCommandTest, AnUnreadableAdapterStateIsNoObstacle) {
  kernel.Faults().FailAlways("RegQueryValueExW", platform::ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(AdapterCode(Order("a", "b")), 0u);
  kernel.Faults().Clear();
}

// Keeps the names of the profiles that are to go.
class ProfileWlan : public PolicyWlan {
 public:
  ProfileWlan() : PolicyWlan(2) {}
  platform::DWORD WlanDeleteProfile(platform::HANDLE, const platform::GUID* adapter,
                                    platform::LPCWSTR name, void*) override {
    deleted.emplace_back(adapter->Data1, name);
    return WStringView(name).empty() ? platform::ERROR_INVALID_PARAMETER : platform::ERROR_SUCCESS;
  }
  std::vector<std::pair<std::uint32_t, WString>> deleted;
};

TEST_F(ConnectCommandTest, AProfileIsDeletedByItsName) {
  auto& own = Install<ProfileWlan>();
  const std::string cmd = "\"cmd\":\"DeleteProfile\"";
  EXPECT_EQ(Code(cmd), 1u);
  EXPECT_EQ(Code(cmd + ",\"guid\":\"x\""), 2u);
  EXPECT_TRUE(IsEcho(AskAdapter(cmd + ",\"ssid\":\"B\\u00fcro\"")));
  EXPECT_EQ(AdapterCode(cmd + ",\"ssid\":7"), 9u) << "no name at all";
  EXPECT_TRUE(
      HasLog("CWlanInterface::DeleteWlanProfile: strProfileName=[] WlanDeleteProfile() "
             "__FAILED__, rc=0x00000057"));
  EXPECT_EQ(AdapterCode(cmd), 9u);
  ASSERT_EQ(own.deleted.size(), 3u);
  EXPECT_EQ(own.deleted[0], std::pair(1u, WString(u"B\u00FCro")));
  EXPECT_EQ(own.deleted[2].second, u"");
  EXPECT_FALSE(WasWoken());
  Global().AddIFConfig(u"{G}", u"", u"");
  EXPECT_EQ(Code("\"guid\":\"{G}\"," + cmd), 9u) << "no GUID";
  Global().AddIFConfig(u"{12345678-0000-0000-0000-000000000000}", u"", u"");
  EXPECT_EQ(Code("\"guid\":\"{12345678-0000-0000-0000-000000000000}\"," + cmd), 9u)
      << "an adapter that went away";
}

}  // namespace
}  // namespace corvane::test
