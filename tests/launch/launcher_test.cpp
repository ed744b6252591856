#include "launch/launcher.h"

#include "foundation/log_lines.h"
#include "launch/session_launch.h"
#include "launch/user_environment.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_session.h"
#include "store/registry.h"
#include "support/pc_fixture.h"

namespace corvane::test {
namespace {

using platform::ERROR_GEN_FAILURE;
using platform::sim::SimSession;

class ClientFiles : public IClientFileFinder {
 public:
  bool FindFileInClientDirs(WStringView, WString* out) override {
    if (path.empty()) return false;
    *out = path;
    return true;
  }
  WString path;
};

const char16_t* s_pProxy = u"";  // what the probe finds; empty: none
bool FindProxy(WString* config) {
  *config = s_pProxy;
  return !config->empty();
}

class LauncherTest : public KernelTest {
 protected:
  LauncherTest() { g_DebugMask = ~std::uint64_t{0} & ~(DBG(12) | DBG(23)); }

  SimSession& Session() { return kernel.Session(); }
  bool HasLog(std::string_view text) {
    return kernel.Console().Text().find(text) != std::string::npos;
  }
  SimSession::Launch OnlyLaunch() {
    const auto launches = Session().TakeLaunches();
    EXPECT_EQ(launches.size(), 1u);
    return launches.empty() ? SimSession::Launch() : launches.front();
  }

  ClientFiles finder;
};

TEST_F(LauncherTest, DialogAppearsOnTheUsersDesktop) {
  EXPECT_TRUE(StartNudgeDialogFromService(1));
  const auto launch = OnlyLaunch();
  EXPECT_EQ(launch.commandLine, u"NudgeDialog.exe 1");
  EXPECT_EQ(launch.desktop, u"winsta0\\default");
  EXPECT_EQ(launch.session, SimSession::kFirstSession);
  EXPECT_EQ(launch.flags, 0x480u);
  EXPECT_TRUE(launch.environment);
  EXPECT_EQ(Session().CountRunning(u"NudgeDialog.exe"), 1u);
}

// The token decides: with nobody at the console a remote user's session is taken.
TEST_F(LauncherTest, TakesTheFirstSessionWithAUser) {
  Session().AddSession(SimSession::kFirstSession, false);
  Session().AddSession(2, false);
  Session().AddSession(3, true);
  Session().AddSession(4, true);
  EXPECT_TRUE(StartNudgeDialogFromService(0));
  EXPECT_EQ(OnlyLaunch().session, 3u);
}

struct FailedLaunch {
  const char* name;
  void (*prepare)(SimSession& session, platform::sim::FaultPlan& faults);
  const char* log;
};

TEST_F(LauncherTest, EachFailedStepIsToldAndLeavesNothingOpen) {
  const FailedLaunch kCases[] = {
      {"no console session",
       [](SimSession& s, auto&) { s.SetConsoleSession(platform::NO_CONSOLE_SESSION); },
       "=WARNING= | [StartNudgeDialogFromService] WTSGetActiveConsoleSessionId() failed"},
      {"nobody logged on",
       [](SimSession& s, auto&) { s.AddSession(SimSession::kFirstSession, false); },
       "=WARNING= | [StartNudgeDialogFromService] WTSQueryUserToken(1) failed 1008"},
      {"no list of sessions",
       [](SimSession& s, auto& faults) {
         s.AddSession(SimSession::kFirstSession, false);
         faults.FailCall("WTSEnumerateSessionsA", 1, 5);
       },
       "=WARNING= | [StartNudgeDialogFromService] WTSEnumerateSessionsA() failed 5"},
      {"program missing", [](SimSession& s, auto&) { s.Uninstall(u"NudgeDialog.exe"); },
       "-FATAL- | [StartNudgeDialogFromService] CreateProcessAsUser(NudgeDialog.exe) failed 2 "
       "[ERROR_FILE_NOT_FOUND]"},
      {"no process",
       [](SimSession&, auto& faults) { faults.FailCall("CreateProcessAsUserW", 1, 5); },
       "-FATAL- | [StartNudgeDialogFromService] CreateProcessAsUser(NudgeDialog.exe) failed 5\n"},
      {"a fault",
       [](SimSession&, auto& faults) {
         faults.FailCall("CreateProcessAsUserW", 1, platform::sim::FaultPlan::kFault);
       },
       "Launcher::StartNudgeDialogFromService: __EXCEPTION__ - s_LastExceptionCode=0xc0000005"},
  };
  for (const FailedLaunch& one : kCases) {
    SCOPED_TRACE(one.name);
    Session().SetConsoleSession(SimSession::kFirstSession);
    Session().AddSession(SimSession::kFirstSession, true);
    Session().Install(u"NudgeDialog.exe", {});
    one.prepare(Session(), kernel.Faults());
    EXPECT_FALSE(StartNudgeDialogFromService(0));
    EXPECT_TRUE(HasLog(one.log));
    EXPECT_EQ(Session().OpenHandles(), 0u);
    kernel.Faults().Clear();
  }
}

TEST_F(LauncherTest, AMissingEnvironmentBlockIsNoFailure) {
  kernel.Faults().FailCall("CreateEnvironmentBlock", 1, 5);
  EXPECT_TRUE(StartNudgeDialogFromService(0));
  EXPECT_FALSE(OnlyLaunch().environment);
  EXPECT_TRUE(
      HasLog("=WARNING= | [StartNudgeDialogFromService] CreateEnvironmentBlock() failed 5"));
}

// ---- the prompt for credentials

TEST_F(LauncherTest, PromptIsTakenFromHereThenFromAClientThenBare) {
  const WString bare = u"PassphraseDesk.exe 1 \"Guest Net\" 02-00-00-00-00-01 7 7";
  const auto start = [&] {
    return StartPassphraseDeskAsUser(1, u"Guest Net", u"02-00-00-00-00-01", 7, finder);
  };
  EXPECT_TRUE(start()) << "the platform finds it";
  EXPECT_EQ(OnlyLaunch().commandLine, bare);

  finder.path = u"/clients/PassphraseDesk.exe";
  EXPECT_TRUE(start());
  EXPECT_EQ(OnlyLaunch().commandLine,
            u"/clients/PassphraseDesk.exe 1 \"Guest Net\" 02-00-00-00-00-01 7 7");
  EXPECT_TRUE(HasLog(
      "=INFO= | __?_?_?___ [StartPassphraseDeskAsUser] [USING CLIENT DIR] buffer = /clients/"));

  finder.path.clear();
  Session().Uninstall(u"PassphraseDesk.exe");
  EXPECT_FALSE(start());
  EXPECT_TRUE(HasLog("CreateProcessAsUser(PassphraseDesk.exe) failed 2 [ERROR_FILE_NOT_FOUND]"));
}

// Finds one file in the current directory.
class CurrentDirectory : public platform::FileApi {
 public:
  platform::DWORD GetFileAttributesW(platform::LPCWSTR path) override {
    return WStringView(path) == u"PassphraseDesk.exe" ? platform::FILE_ATTRIBUTE_NORMAL
                                                      : platform::INVALID_FILE_ATTRIBUTES;
  }
};

TEST_F(LauncherTest, PromptAsApplicationGoesToTheInterpreter) {
  const auto start = [&](WStringView ssid) {
    return StartPassphraseDeskAsApp(0, ssid, u"02-00-00-00-00-01", 0x1F, finder);
  };
  finder.path = u"/clients/PassphraseDesk.exe";
  EXPECT_TRUE(start(u"Home"));
  Install<CurrentDirectory>();
  Session().SetCommandResult(3);
  EXPECT_FALSE(start(u"Home"));
  EXPECT_EQ(
      Session().TakeCommands(),
      (std::vector<WString>{u"start /clients/PassphraseDesk.exe 0 \"Home\" 02-00-00-00-00-01 1f 1f",
                            u"start PassphraseDesk.exe 0 \"Home\" 02-00-00-00-00-01 1f 1f"}));
  EXPECT_TRUE(HasLog("StartPassphraseDeskAsApp: system(...) FAILED, rc=3"));

  Session().SetCommandResult(0);
  EXPECT_FALSE(start(u"x\" & format c: & \"")) << "an SSID is no command";
  EXPECT_FALSE(start(u"%PATH%")) << "nor a variable";
  EXPECT_TRUE(Session().TakeCommands().empty());
}

TEST_F(LauncherTest, ATooLongCommandLineIsRefused) {
  EXPECT_TRUE(StartBrowserUrlAsUser(WString(1023 - 29, u'u')));
  EXPECT_FALSE(StartBrowserUrlAsUser(WString(1023 - 28, u'u')));
}

// ---- browser and networks

TEST_F(LauncherTest, BrowserOpensBeyondItsFirstRunScreens) {
  EXPECT_TRUE(StartBrowserUrl(u"http://survey.example/pre.php", u"{0001}"));
  EXPECT_EQ(OnlyLaunch().commandLine,
            u"cmd /c start /MAX iexplore \"http://survey.example/pre.php?GUID={0001}\"");
  std::uint32_t value = 0;
  const CRegistry edge(u"SOFTWARE\\Policies\\Microsoft\\MicrosoftEdge\\Main");
  const CRegistry explorer(u"SOFTWARE\\Policies\\Microsoft\\Internet Explorer\\Main");
  EXPECT_TRUE(edge.GetRegistryDWORDValue(u"PreventFirstRunPage", &value) && value == 1);
  EXPECT_TRUE(explorer.GetRegistryDWORDValue(u"DisableFirstRunCustomize", &value) && value == 1);
}

TEST_F(LauncherTest, BrowserFallsBackOnTheInterpreterAndNeedsNoPolicy) {
  Session().AddSession(SimSession::kFirstSession, false);
  kernel.Faults().FailAlways("RegCreateKeyExW", 5);
  EXPECT_TRUE(StartBrowserUrl(u"http://x", u"{1}"));
  kernel.Faults().Clear();
  kernel.Faults().FailAlways("RegCreateKeyExW", platform::sim::FaultPlan::kFault);
  Session().SetCommandResult(9);
  EXPECT_FALSE(StartBrowserUrl(u"http://x", u"{1}"));
  EXPECT_EQ(Session().TakeCommands(),
            std::vector<WString>(2, u"cmd /c start /MAX iexplore \"http://x?GUID={1}\""));
}

TEST_F(LauncherTest, AvailableNetworksFallBackOnTheInterpreter) {
  DoAvailableNetworks();
  EXPECT_EQ(OnlyLaunch().commandLine, u"explorer.exe ms-availablenetworks:");
  EXPECT_TRUE(Session().TakeCommands().empty());
  Session().AddSession(SimSession::kFirstSession, false);
  DoAvailableNetworks();
  EXPECT_EQ(Session().TakeCommands(),
            std::vector<WString>{u"start /B cmd.exe /c explorer.exe ms-availablenetworks:"});
}

// ---- the probe

TEST_F(LauncherTest, ProbeGivesTheChildsOutputInOrder) {
  const std::string longText = std::string(1500, 'a') + std::string(1500, 'b');
  Session().Install(u"Corvane.exe", {.output = longText, .runMs = 120});
  std::string text = "old";
  EXPECT_TRUE(InvokeSelfFromServiceToGetUserTempPath(&text));
  EXPECT_EQ(text, longText);
  const auto launch = OnlyLaunch();
  EXPECT_EQ(launch.commandLine, u"Corvane.exe -u");
  EXPECT_TRUE(launch.hidden);
  EXPECT_TRUE(HasLog("ret exitCode=0"));
}

TEST_F(LauncherTest, ProbeTrustsTwoExitCodesOnly) {
  const struct {
    platform::DWORD exitCode;
    bool good;
  } kCases[] = {{0, true}, {999, true}, {1, false}, {998, false}, {0xFFFFFFFF, false}};
  for (const auto& one : kCases) {
    SCOPED_TRACE(one.exitCode);
    Session().Install(u"Corvane.exe", {.output = "line", .exitCode = one.exitCode, .runMs = 10});
    std::string text;
    EXPECT_EQ(InvokeSelfFromServiceToGetUserTempPath(&text), one.good);
    EXPECT_EQ(text, "line");
  }
}

TEST_F(LauncherTest, AHungChildDoesNotHoldTheMainLoop) {
  Session().Install(u"Corvane.exe", {.output = "half a li"});
  std::string text;
  EXPECT_FALSE(InvokeSelfFromServiceToGetUserTempPath(&text));
  EXPECT_GE(kernel.Now(), std::chrono::milliseconds(kProbeLimitMs));
  EXPECT_LT(kernel.Now(), std::chrono::milliseconds(kProbeLimitMs + 1000));
  EXPECT_EQ(Session().CountRunning(u"Corvane.exe"), 0u);
}

TEST_F(LauncherTest, EachFailedStepOfTheProbeLeavesNothingOpen) {
  for (const char* operation :
       {"CreatePipe", "CreateProcessAsUserW", "WaitForSingleObject", "GetExitCodeProcess"}) {
    SCOPED_TRACE(operation);
    kernel.Faults().FailCall(operation, 1, ERROR_GEN_FAILURE);
    std::string text;
    EXPECT_FALSE(InvokeSelfFromServiceToGetUserTempPath(&text));
    EXPECT_EQ(Session().OpenHandles(), 0u);
    kernel.Faults().Clear();
  }
  EXPECT_TRUE(HasLog("-FATAL- | InvokeSelfFromServiceToGetUserTempPath: CreatePipe() failed 31"));
}

TEST_F(LauncherTest, ServiceAsksTheUsersSessionAndApplicationItself) {
  Session().SetTempPath("/mine/");
  Session().Install(
      u"Corvane.exe",
      {.output = R"({ "path":"/users/a/", "proxy":"yes", "proxy_cfg":"p:80" })", .runMs = 10});
  const auto asService = RefreshUserEnvironment(true, &FindProxy);
  ASSERT_TRUE(asService);
  EXPECT_EQ(asService->tempPath, "/users/a/");
  EXPECT_TRUE(asService->proxyPresent);
  const auto asApplication = RefreshUserEnvironment(false, &FindProxy);
  ASSERT_TRUE(asApplication);
  EXPECT_EQ(asApplication->tempPath, "/mine/");
  EXPECT_FALSE(asApplication->proxyPresent);
  EXPECT_TRUE(HasLog("APPLICATION: Proxy is NOT present"));
  s_pProxy = u"p:81";
  const auto behindProxy = RefreshUserEnvironment(false, &FindProxy);
  s_pProxy = u"";
  ASSERT_TRUE(behindProxy);
  EXPECT_TRUE(behindProxy->proxyPresent);
  EXPECT_EQ(behindProxy->proxyConfig, u"p:81");
  EXPECT_TRUE(HasLog("APPLICATION: Proxy is PRESENT [p:81]"));

  Session().Install(u"Corvane.exe", {.output = "no json", .runMs = 10});
  EXPECT_FALSE(RefreshUserEnvironment(true, &FindProxy));
  EXPECT_TRUE(HasLog("InvokeSelfFromServiceToGetUserTempPath() FAILED! - json parse error"));
  Session().Install(u"Corvane.exe", {.exitCode = 1, .runMs = 10});
  EXPECT_FALSE(RefreshUserEnvironment(true, &FindProxy));
  Session().SetTempPath(std::string(300, 'x'));
  EXPECT_FALSE(RefreshUserEnvironment(false, &FindProxy)) << "a path that the buffer does not hold";
}

TEST(UserEnvironmentText, OnlyTheExactWordTurnsTheProxyOn) {
  const struct {
    const char* json;
    bool good;
    const char* path;
    bool proxy;
    const char16_t* config;
  } kCases[] = {
      {R"({ "path":"C:\\Temp\\", "proxy":"no", "proxy_cfg":"x" })", true, "C:\\Temp\\", false, u""},
      {R"({ "path":"p", "proxy":"yes", "proxy_cfg":"x" })", true, "p", true, u"x"},
      {R"({ "path":"p", "proxy":"Yes", "proxy_cfg":"x" })", true, "p", false, u""},
      {R"({ "proxy":true, "path":7 })", true, "", false, u""},
      {R"({ "path":"p", "proxy":"yes", "proxy_cfg":"a"b" })", false, "", false, u""},
      {"[]", false, "", false, u""},
      {"", false, "", false, u""},
  };
  for (const auto& one : kCases) {
    SCOPED_TRACE(one.json);
    const auto read = ParseUserEnvironment(one.json);
    ASSERT_EQ(read.has_value(), one.good);
    if (!read) continue;
    EXPECT_EQ(read->tempPath, one.path);
    EXPECT_EQ(read->proxyPresent, one.proxy);
    EXPECT_EQ(read->proxyConfig, one.config);
  }
}

// ---- ending programs by name

TEST_F(LauncherTest, KillEndsEveryProcessOfThatNameAndNoOther) {
  EXPECT_FALSE(KillTrayApp()) << "none runs";
  Session().StartProcess(u"Corvane_TrayApp.exe");
  Session().StartProcess(u"corvane_trayAPP.EXE");
  Session().StartProcess(u"Corvane_ConfigApp.exe");
  Session().StartProcess(u"Corvane_TrayApp.exe.bak");
  EXPECT_TRUE(KillTrayApp());
  EXPECT_EQ(Session().CountRunning(u"Corvane_TrayApp.exe"), 0u);
  EXPECT_EQ(Session().CountRunning(u"Corvane_ConfigApp.exe"), 1u);
  EXPECT_EQ(Session().CountRunning(u"Corvane_TrayApp.exe.bak"), 1u);
  EXPECT_TRUE(KillConfigApp());
  EXPECT_FALSE(KillNudgeDialog());
}

TEST_F(LauncherTest, KillGoesOnPastAProcessThatResists) {
  Session().StartProcess(u"NudgeDialog.exe");
  Session().StartProcess(u"NudgeDialog.exe");
  kernel.Faults().FailCall("TerminateProcess", 1, platform::ERROR_ACCESS_DENIED);
  EXPECT_TRUE(KillNudgeDialog());
  EXPECT_EQ(Session().CountRunning(u"NudgeDialog.exe"), 1u);
  kernel.Faults().FailCall("CreateToolhelp32Snapshot", 1, ERROR_GEN_FAILURE);
  EXPECT_FALSE(KillNudgeDialog());
  kernel.Faults().FailCall("OpenProcess", 1, platform::ERROR_ACCESS_DENIED);
  EXPECT_FALSE(KillNudgeDialog());
}

TEST_F(LauncherTest, FaultInClosingAHandleEndsThere) {
  struct FaultyClose : platform::SessionApi {
    platform::BOOL CloseHandle(platform::HANDLE) override {
      throw platform::PlatformFault{platform::sim::FaultPlan::kFault};
    }
  };
  { const CSessionHandle handle(&Install<FaultyClose>()); }
  EXPECT_TRUE(HasLog("CSessionHandle::CloseHandle: __EXCEPTION__"));
}

}  // namespace
}  // namespace corvane::test
