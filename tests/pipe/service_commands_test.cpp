// The commands that name no adapter.

#include <functional>

#include "foundation/log_lines.h"
#include "log/log.h"
#include "notify/notification_manager.h"
#include "pipe/command_fixture.h"

namespace corvane::test {
namespace {

class ServiceCommandTest : public CommandTest {
 protected:
  static std::string Misc(const std::string& name, const std::string& value) {
    return "\"cmd\":\"MiscCommand\",\"name\":\"" + name + "\",\"value\":" + value;
  }
  static std::string EventMembers(const std::string& type, const std::string& state) {
    return "\"evtNamespace\":\"Corvane\",\"evtCategory\":\"StreamDetect\",\"evtType\":\"" + type +
           "\",\"evtTimestamp\":\"then\",\"evtState\":\"" + state +
           "\",\"evtData1\":\"1\",\"evtData2\":\"2\",\"evtData3\":\"3\",\"evtData4\":\"4\","
           "\"evtData5\":\"5\"";
  }
  static std::string Post(const std::string& members) {
    return "\"cmd\":\"EventRouter\",\"type\":\"json1\",\"event\":{" + members + "}";
  }
};

TEST_F(ServiceCommandTest, EachGlobalNumberHasItsRange) {
  struct Row {
    const char* name;
    std::uint32_t first, last;  // accepted
    const char* constant;
    std::uint32_t writeCode;
  };
  constexpr std::uint32_t kAll = 0xFFFFFFFF;
  const Row rows[] = {{"ServiceEnable", 0, 1, "REGVAL_SERVICE_ENABLE", 12},
                      {"RoamingEnabled", 0, 1, "REGVAL_ROAMING_ENABLED", 12},
                      {"DBWMEnable", 0, 1, "REGKEY_VALUE_APS_DBWM_ENABLE", 12},
                      {"RTAudioModeMbps", 1, kAll, "REGKEY_VALUE_RE_AUDIO_MBPS", 11},
                      {"RTAudioMode", 0, 2, "REGKEY_VALUE_RT_AUDIO_MODE", 12},
                      {"DBWMProbeMonthBudgetMB", 0, kAll, nullptr, 16},
                      {"IDET", 0, 1, "REGVAL_IDET", 12},
                      {"IgnoreVPN", 0, 1, "REGVAL_IGNOREVPN", 12},
                      {"PalisadeOptimizer", 0, 1, "REGVAL_PALISADE_OPTIMIZER", 12},
                      {"TelemetryConnectionsCSVFileSizeMB", 0, kAll, nullptr, 12},
                      {"SCOREDIFFPCT", 0, 100, "REGVAL_SCOREDIFFPCT", 12},
                      {"Survey1", 0, 1, "Survey1", 12},
                      {"Survey2", 0, 1, "Survey2", 12},
                      {"Survey3", 0, 1, "Survey3", 12}};
  for (const Row& row : rows) {
    for (const std::uint32_t good : {row.first, row.last}) {
      EXPECT_TRUE(IsEcho(Ask(Misc(row.name, std::to_string(good))))) << row.name;
      EXPECT_EQ(Home(Widen(row.name).c_str()), good) << row.name;
    }
    if (row.first > 0) {
      EXPECT_EQ(Code(Misc(row.name, std::to_string(row.first - 1))), 11u) << row.name;
    }
    if (row.last < kAll) {
      EXPECT_EQ(Code(Misc(row.name, std::to_string(row.last + 1))), 11u) << row.name;
    }
    EXPECT_EQ(Home(Widen(row.name).c_str()), row.last) << row.name << ": refused and written";

    ForgetLog();
    FailWrites(true);
    EXPECT_EQ(Code(Misc(row.name, row.last == 1 ? "0" : "1")), row.writeCode) << row.name;
    FailWrites(false);
    const std::string line = "CNamedPipeListenerJson::HandleJsonCommand: SetRegistryDWORDValue(";
    EXPECT_EQ(HasLog(line), row.constant != nullptr) << row.name;
    if (row.constant) {
      EXPECT_TRUE(HasLog(line + row.constant + (row.last == 1 ? ", 0" : ", 1") + ") failed"))
          << row.name;
    }
  }
  EXPECT_FALSE(WasWoken(0) || WasWoken(1));
}

TEST_F(ServiceCommandTest, AWindowOpensWhateverFollows) {
  for (const char* members :
       {"\"cmd\":\"MiscCommand\"", "\"cmd\":\"MiscCommand\",\"name\":\"IDET\"",
        "\"cmd\":\"MiscCommand\",\"name\":\"IDET\",\"value\":\"1\"",
        "\"cmd\":\"MiscCommand\",\"name\":1,\"value\":1"}) {
    EXPECT_EQ(Code(members), 7u) << members;
  }
  EXPECT_EQ(WindowMs(0) + WindowMs(1), 0u);
  EXPECT_EQ(Code(Misc("Nonsense", "1")), 8u);
  EXPECT_EQ(WindowMs(0), 15'000u);
  EXPECT_EQ(WindowMs(1), 15'000u);
}

TEST_F(ServiceCommandTest, PostModeIsTwoValues) {
  const auto post = [&] { return std::pair(Home(u"EnablePost"), Home(u"FastPost")); };
  EXPECT_EQ(Code(Misc("POSTMode", "2")), 0u);
  EXPECT_EQ(post(), std::pair(1u, 1u));
  EXPECT_EQ(Code(Misc("POSTMode", "3")), 11u);
  EXPECT_EQ(post(), std::pair(1u, 1u));
  EXPECT_EQ(Code(Misc("POSTMode", "1")), 0u);
  EXPECT_EQ(post(), std::pair(1u, 0u));
  EXPECT_EQ(Code(Misc("POSTMode", "0")), 0u);
  EXPECT_EQ(post(), std::pair(0u, 0u));

  // On the way up the first failure ends it.
  kernel.Faults().FailCall("RegSetValueExW", 1, platform::ERROR_ACCESS_DENIED);
  EXPECT_EQ(Code(Misc("POSTMode", "2")), 12u);
  EXPECT_EQ(post(), std::pair(0u, 0u));
  EXPECT_TRUE(HasLog("SetRegistryDWORDValue(REGVAL_ENABLE_POST, 1) failed"));
  kernel.Faults().FailCall("RegSetValueExW", 2, platform::ERROR_ACCESS_DENIED);
  EXPECT_EQ(Code(Misc("POSTMode", "2")), 12u);
  EXPECT_EQ(post(), std::pair(1u, 0u));
  EXPECT_TRUE(HasLog("SetRegistryDWORDValue(REGVAL_FAST_STATUS_POST, 1) failed"));
  // Elsewhere "FastPost" may fail.
  EXPECT_TRUE(Global().GetRegistry()->SetRegistryDWORDValue(u"FastPost", 1));
  kernel.Faults().FailCall("RegSetValueExW", 1, platform::ERROR_ACCESS_DENIED);
  EXPECT_EQ(Code(Misc("POSTMode", "0")), 0u);
  EXPECT_EQ(post(), std::pair(0u, 1u));
}

class Heard : public SmartObjEx<Heard, SmartObj<>>, public INotificationProvider {
 public:
  void SendNotification(CNotificationEvent* event) override { events.push_back(event->GetJson()); }
  std::vector<WString> events;
};

TEST_F(ServiceCommandTest, AnEventGoesToTheSubscribersAsItIs) {
  auto& manager = CNotificationManagerSingleton::GetInstance();
  const auto heard = Heard::CreateObject();
  manager.AddProvider(heard.get());
  ASSERT_EQ(manager.BeginThread(), 0);
  EXPECT_TRUE(IsEcho(Ask(Post(EventMembers("Video", "True") + ",\"extra\":1"))));
  RunFor(1s);
  ASSERT_EQ(heard->events.size(), 1u);
  EXPECT_EQ(WideToUtf8(heard->events[0]),
            R"({ "evtNamespace":"Corvane", "evtCategory":"StreamDetect", "evtType":"Video", )"
            R"("evtTimestamp":"then", "evtState":"false", "evtData1":"1", "evtData2":"2", )"
            R"("evtData3":"3", "evtData4":"4", "evtData5":"5" })");
  EXPECT_FALSE(Global().m_rt_audio);
  manager.Shutdown(1000);
}

TEST_F(ServiceCommandTest, AnIncompleteEventChangesNothing) {
  const std::string whole = EventMembers("RTAudio", "true");
  EXPECT_EQ(Code("\"cmd\":\"EventRouter\",\"event\":{" + whole + "}"), 1u);
  EXPECT_EQ(Code("\"cmd\":\"EventRouter\",\"type\":1,\"event\":{" + whole + "}"), 1u);
  EXPECT_EQ(Code("\"cmd\":\"EventRouter\",\"type\":\"json2\",\"event\":{" + whole + "}"), 15u);
  EXPECT_EQ(Code("\"cmd\":\"EventRouter\",\"type\":\"json1\""), 15u);
  EXPECT_EQ(Code("\"cmd\":\"EventRouter\",\"type\":\"json1\",\"event\":[1]"), 15u);
  for (std::size_t at = 0; (at = whole.find("\"evt", at)) != std::string::npos; ++at) {
    std::string missing = whole, mistyped = whole;
    missing.insert(at + 1, "x");
    const std::size_t value = mistyped.find(':', at) + 1;
    mistyped.replace(value, mistyped.find_first_of(",", value) - value, "1");
    EXPECT_EQ(Code(Post(missing)), 15u) << missing;
    EXPECT_EQ(Code(Post(mistyped)), 15u) << mistyped;
  }
  EXPECT_FALSE(Global().m_rt_audio);
}

TEST_F(ServiceCommandTest, AudioBeginsAndEndsByItsEvent) {
  const std::uint64_t begun = Os().clock.GetTickCount64();
  EXPECT_EQ(Code(Post(EventMembers("RTAudio", "true"))), 0u);
  EXPECT_TRUE(Global().m_rt_audio);
  EXPECT_EQ(Global().m_rt_audio_tick, begun);
  RunFor(1s);
  EXPECT_EQ(Code(Post(EventMembers("RTAudio", "True"))), 0u) << "no other word is true";
  EXPECT_FALSE(Global().m_rt_audio);
  EXPECT_EQ(Global().m_rt_audio_tick, begun);
}

TEST_F(ServiceCommandTest, ADirectoryIsTakenOnce) {
  g_DebugMask = DBG(6);
  const std::string base64 = Base64Encode("/opt/\xC3\xBC");
  kernel.Files().Write(u"/opt/\u00FC/desk", "x");
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(IsEcho(Ask("\"cmd\":\"ClientDir\",\"path\":\"" + base64 + "\"")));
  }
  WString path;
  EXPECT_TRUE(Global().FindFileInClientDirs(u"desk", &path));
  EXPECT_EQ(path, WString(u"/opt/\u00FC") + platform::kPathSeparator + u"desk");
  EXPECT_FALSE(Global().SetClientDir(u"/opt/\u00FC"));
  EXPECT_TRUE(HasLog("[ClientDir] base64[" + base64 + "] path[/opt/"));
  EXPECT_EQ(Code("\"cmd\":\"ClientDir\""), 1u);
  EXPECT_EQ(Code("\"cmd\":\"ClientDir\",\"path\":7"), 1u);
}

TEST_F(ServiceCommandTest, TheMemoryLogComesInBase64) {
  EXPECT_EQ(Ask("\"cmd\":\"AppLog\""), "{ \"status\":\"ok\", \"code\":0, \"log\":\"\" }")
      << "without a logger";
  StartLogger("/data/OstrelNetworks/Corvane/aps");
  LogRecord(kLogMemory, "<I>", "kept \"this\"");
  rapidjson::Document reply;
  reply.Parse(Ask("\"cmd\":\"AppLog\"").c_str());
  ASSERT_TRUE(reply.IsObject());
  const std::string log = Base64Decode(reply["log"].GetString());
  EXPECT_NE(log.find("~<I>kept \"this\""), std::string::npos) << log;
  EXPECT_EQ(log, GetMemoryLog());
}

// Takes every scan, and tells of no end.
class EndlessScans : public PolicyWlan {
 public:
  EndlessScans() : PolicyWlan(2) {}
  platform::DWORD WlanScan(platform::HANDLE, const platform::GUID*, const platform::DOT11_SSID*,
                           const void*, void*) override {
    return platform::ERROR_SUCCESS;
  }
};

TEST_F(ServiceCommandTest, DiagnosisDuringAScanMeasuresNothing) {
  wlan = &Install<EndlessScans>();
  Add("Office", 1, 61);
  Connect("Office", 1);
  std::string reply;
  std::function<void()> ask = [&] { reply = Ask(Misc("Diag1", "0")); };
  const auto later = [](void* call) -> platform::DWORD {
    Os().threads.Sleep(1000);
    (*static_cast<std::function<void()>*>(call))();
    return 0;
  };
  Os().threads.CloseHandle(Os().threads.CreateThread(later, &ask, "client", nullptr));
  EXPECT_THROW(adapters[0]->ScanSynchronous(nullptr), std::exception) << "it has no end";
  EXPECT_EQ(reply,
            "{ \"status\":\"ok\", \"code\":0, \"diag\":{ \"blast\":\"0.000000\", "
            "\"apscore\":\"61\", \"adapterclass\":\"802.11\", \"apclass\":\"802.11\", "
            "\"status\":\"scan\" } }");
}

TEST_F(ServiceCommandTest, DiagnosisTellsOfTheFirstAdaptersLink) {
  const auto failed = [](const char* status, const char* adapterClass) {
    return "{ \"status\":\"error\", \"code\":12, \"diag\":{ \"blast\":\"0.0\", "
           "\"apscore\":\"-1\", \"adapterclass\":\"" +
           std::string(adapterClass) + "\", \"apclass\":\"unknown\", \"status\":\"" + status +
           "\" } }";
  };
  EXPECT_EQ(Code(Misc("Diag1", "\"1\"")), 7u);
  EXPECT_EQ(Ask(Misc("Diag1", "7")), failed("error, not connected", "802.11"));
  EXPECT_EQ(WindowMs(1), 15'000u);
  Add("Office", 1, 61);
  Connect("Office", 1);
  EXPECT_EQ(Ask(Misc("Diag1", "0")),
            "{ \"status\":\"ok\", \"code\":0, \"diag\":{ \"blast\":\"0.000000\", "
            "\"apscore\":\"61\", \"adapterclass\":\"802.11\", \"apclass\":\"802.11\", "
            "\"status\":\"ok\" } }")
      << "there is no gateway to send to";
  CWifiClientContainer::GetInstance().Shutdown();
  EXPECT_EQ(Ask(Misc("Diag1", "0")), failed("error", "unknown")) << "no adapter to look at";
  Global().Shutdown(false);
  EXPECT_EQ(Ask(Misc("Diag1", "0")), failed("error", "unknown")) << "no configuration";
}

}  // namespace
}  // namespace corvane::test
