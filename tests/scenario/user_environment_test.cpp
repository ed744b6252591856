// What the service learns of its user, and what becomes of posting.

#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "scenario/service_fixture.h"
#include "settings/global_config_container.h"
#include "web/statistics_post.h"

namespace corvane::test {
namespace {

class UserEnvironmentStory : public ServiceTest {
 protected:
  static CGlobalConfigContainer& Global() { return CGlobalConfigContainer::GetInstance(); }
};

// The child is the program itself; with ServiceEnable on the service asks it about every 30 s.
TEST_F(UserEnvironmentStory, TheProbeReachesTheServiceAndBadTextLeavesWhatIsKnown) {
  WorldBuilder world = OfficeWorld();
  world->web.proxies.proxy = u"proxy.example:8080";
  Start(world);
  RunFor(5s);
  EXPECT_TRUE(Global().IsProxyPresent());
  EXPECT_EQ(Global().GetUserTempPath(), "/data/temp/");

  for (const char* bad : {R"({"do": "proxies", "proxy": "a\"b:1"})",
                          R"({"do": "proxies", "configUrl": "file://c:\\x\\proxy.pac"})"}) {
    Do(bad);
    Pc().Kernel().Session().SetTempPath("/elsewhere/");
    RunFor(70s);
    EXPECT_TRUE(Printed("InvokeSelfFromServiceToGetUserTempPath() FAILED! - json parse error"));
    EXPECT_TRUE(Global().IsProxyPresent()) << bad;
    EXPECT_EQ(Global().GetUserTempPath(), "/data/temp/") << bad;
  }
  Do(R"({"do": "proxies"})");
  RunFor(70s);
  EXPECT_FALSE(Global().IsProxyPresent());
  EXPECT_EQ(Global().GetUserTempPath(), "/elsewhere/");
}

TEST_F(UserEnvironmentStory, AnApplicationProbesForItself) {
  WorldBuilder world = OfficeWorld();
  world->web.proxies.known = false;
  world->web.proxies.detectedUrl = u"http://wpad.example/wpad.dat";
  world->web.proxies.detectedProxy = u"found.example:3128";
  world->session.loggedOn = false;
  Start(world);
  Pc().Kernel().Session().SetWindows({u"Default IME"});
  RunFor(5s);
  EXPECT_TRUE(Printed("APPLICATION: Proxy is PRESENT [found.example:3128]"));
  EXPECT_TRUE(Global().IsProxyPresent());
}

TEST_F(UserEnvironmentStory, A401TurnsPostingOffUntilAClientTurnsItOn) {
  WorldBuilder world = OfficeWorld();
  platform::sim::WebAnswer answer;
  answer.host = "stats.corvane.example";
  answer.status = 401;
  answer.reason = "Unauthorized";
  world->web.answers.push_back(answer);
  // A home that this process had to make would get its first values in each pass anew.
  for (const char16_t* name : {u"FreshDone", u"EnablePost"}) {
    platform::sim::RegistryWrite write;
    write.key = kHomeKeyPath;
    write.name = name;
    write.number = 1;
    world->registry.push_back(write);
  }
  Start(world);
  RunFor(20s);
  EXPECT_EQ(HomeNumber(u"EnablePost"), 1u);
  EXPECT_FALSE(ProxySend("figures", Global().IsProxyPresent()));
  EXPECT_EQ(HomeNumber(u"EnablePost"), 0u);
  EXPECT_FALSE(Global().m_bEnablePost);

  // Neither time nor a new pass of the service turns it on.
  Do(R"({"do": "adapter", "on": false})");
  RunFor(1min);
  Do(R"({"do": "adapter", "on": true})");
  RunFor(1min);
  EXPECT_EQ(HomeNumber(u"EnablePost"), 0u);
  EXPECT_FALSE(Global().m_bEnablePost);
}

TEST_F(UserEnvironmentStory, TheDomainControllerIsThatOfTheNetworkThatItIsOn) {
  WorldBuilder world = OfficeWorld();
  world->networks[0].ip.dnsSuffix = u"Corp.office.example";
  world->domainControllers = {{u"corp", u"\\\\CORP-DC"}, {u"other", u"\\\\OTHER-DC"}};
  Start(world);
  ASSERT_TRUE(RunUntilTrue([&] { return IsOn(1); }, 1min));
  RunFor(20s);
  EXPECT_EQ(Wlan()->Link().Addresses().dnsSuffix, u"Corp.office.example");
  EXPECT_EQ(Wlan()->Link().Addresses().domainController, u"\\\\CORP-DC");
  Pc().Faults().FailAlways("NetGetDCName", 2453);
  Wlan()->RefreshIPInfo();
  EXPECT_EQ(Wlan()->Link().Addresses().domainController, u"")
      << "what is not known any more is not kept";
}

}  // namespace
}  // namespace corvane::test
