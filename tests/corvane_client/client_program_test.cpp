// The client's commands on a service that only notes what it is asked.

#include <gmock/gmock.h>

#include <deque>
#include <filesystem>
#include <fstream>

#include "any_host/temp_directory.h"
#include "corvane_client/client_commands.h"
#include "corvane_client/client_error.h"
#include "platform/base64.h"

namespace corvane::client {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr char kFirst[] = "{00000000-0000-0000-0000-000000000001}";
constexpr char kSecond[] = "{00000000-0000-0000-0000-000000000002}";

struct Notes {
  std::map<std::string, Values> settings;
  std::string reply = R"({ "status":"ok", "code":0, "request":{} })";
  std::vector<std::string> requests;
  std::vector<std::string> statuses;  // "ConnectStatus" as it goes on, one a sleep
  std::string folder;
  std::deque<std::string> events;
  // What happens at the looks at a terminal, one after the other; then somebody types q.
  std::deque<std::function<ITerminalScreen::Wish()>> looks;
  int screens = 0;           // that are open
  int waitsUntilCtrlC = -1;  // for events
};

class CNotedEvents : public IEventSource {
 public:
  explicit CNotedEvents(Notes& notes) : m_Notes(notes) {}
  std::optional<std::string> Next(int) override {
    if (m_Notes.waitsUntilCtrlC > 0) --m_Notes.waitsUntilCtrlC;
    if (m_Notes.events.empty()) return std::nullopt;
    const std::string event = m_Notes.events.front();
    m_Notes.events.pop_front();
    return event;
  }

 private:
  Notes& m_Notes;
};

class CNotingScreen : public ITerminalScreen {
 public:
  explicit CNotingScreen(Notes& notes) : m_Notes(notes) { ++m_Notes.screens; }
  ~CNotingScreen() override { --m_Notes.screens; }
  Wish Look() override {
    if (m_Notes.looks.empty()) return Wish::kEnd;
    const auto look = m_Notes.looks.front();
    m_Notes.looks.pop_front();
    return look();
  }

 private:
  Notes& m_Notes;
};

class CNotingService : public IServiceAccess {
 public:
  explicit CNotingService(Notes& notes) : m_Notes(notes) {}
  std::string Ask(const std::string& request) override {
    m_Notes.requests.push_back(request);
    return m_Notes.reply;
  }
  std::unique_ptr<IEventSource> Subscribe() override {
    return std::make_unique<CNotedEvents>(m_Notes);
  }
  Values Settings(const std::string& guid) override { return m_Notes.settings[guid]; }
  void CheckIsServed() override {}
  std::string ProgramFolder() override { return m_Notes.folder; }
  std::string DataFolder() override { return m_Notes.folder; }
  void Sleep(int) override {
    if (m_Notes.statuses.empty()) return;
    m_Notes.settings[kFirst]["ConnectStatus"] = m_Notes.statuses.front();
    m_Notes.statuses.erase(m_Notes.statuses.begin());
  }
  bool IsInterrupted() override { return m_Notes.waitsUntilCtrlC == 0; }

 private:
  Notes& m_Notes;
};

}  // namespace

class ClientProgramTest : public testing::Test {
 protected:
  ClientProgramTest() {
    notes.settings[""] = {{"NumWifiAdapters", "1"}, {"0", kFirst}, {"1", kSecond}};
    notes.settings[kFirst] = {{"AdapterDescription", "Blue"},
                              {"PassiveSuggestMode", "2"},
                              {"SuggestedNetwork", "Home [02-50-00-00-01-05]"}};
    notes.settings[kSecond] = {{"AdapterDescription", "Red"}, {"SuggestedNetwork", "Home"}};
  }
  int Run(const std::vector<std::string>& words, bool onTerminal = false) {
    out.clear();
    error.clear();
    notes.requests.clear();
    Output output{.write = [this](std::string_view text) { out += text; }};
    if (onTerminal) output.openScreen = [this] { return std::make_unique<CNotingScreen>(notes); };
    const Output errors{.write = [this](std::string_view text) { error += text; }};
    return RunClient(words, output, errors, [this](const std::string&) {
      return std::make_unique<CNotingService>(notes);
    });
  }

  Notes notes;
  std::string out, error;
};

TEST_F(ClientProgramTest, SendsWhatTheWordsMean) {
  const std::string guid = std::string("\"guid\":\"") + kFirst + "\"";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"connect", "My \"net\"", "02:50:00:00:01:AB"},
       R"({"cmd":"ConnectAP",)" + guid + R"(,"ssid":"My \"net\"","bssid":"02-50-00-00-01-ab"})"},
      {{"accept"},
       R"({"cmd":"UICommand",)" + guid + R"(,"idx":0,"name":"AcceptAPSuggestion","value":1})"},
      {{"mode", "event"},
       R"({"cmd":"WriteRegDW",)" + guid + R"(,"idx":0,"name":"PassiveSuggestMode","value":1})"},
      {{"disable"}, R"({"cmd":"MiscCommand","name":"ServiceEnable","value":0})"},
      {{"disable", "--adapter=blue"},
       R"({"cmd":"WriteRegDW",)" + guid + R"(,"idx":0,"name":"Enabled","value":0})"},
      {{"set", "scorediffpct", "30"}, R"({"cmd":"MiscCommand","name":"SCOREDIFFPCT","value":30})"},
      {{"set", "LatchToPrivate", "on"},
       R"({"cmd":"WriteRegDW",)" + guid + R"(,"idx":0,"name":"LatchToPrivate","value":1})"},
      {{"list", "deny", "clear"},
       R"({"cmd":"WriteRegString",)" + guid + R"(,"name":"DenylistJson","value":"[]"})"},
      {{"record", "on"}, R"({"cmd":"MiscCommand","name":"RecordAirMB","value":100})"},
      {{"record", "on", "7"}, R"({"cmd":"MiscCommand","name":"RecordAirMB","value":7})"},
      {{"record", "off"}, R"({"cmd":"MiscCommand","name":"RecordAirMB","value":0})"},
      {{"lb", "resume"}, R"({"cmd":"LBCommand","name":"SetLBPaused","value":0})"},
      {{"lb", "weight", "2"}, R"({"cmd":"LBCommand","name":"SetLBWeightMode","value":2})"}};
  for (const auto& [words, request] : cases) {
    EXPECT_EQ(Run(words), kDone) << words[0] << error;
    EXPECT_THAT(notes.requests, ElementsAre(request));
  }
}

TEST_F(ClientProgramTest, TellsOfTheRecordingAndHowLargeItIs) {
  EXPECT_EQ(Run({"record", "status"}), kDone);
  EXPECT_EQ(out, "off\n");
  const test::TempDirectory folder;
  notes.folder = folder.Path();
  std::ofstream(notes.folder + "/air.jsonl") << "12345";
  std::ofstream(notes.folder + "/air.1.jsonl") << "1234567";
  notes.settings[""]["RecordAirMB"] = "20";
  EXPECT_EQ(Run({"record", "status"}), kDone);
  EXPECT_THAT(out, HasSubstr("on, at most 20 million bytes\n"));
  EXPECT_THAT(out, HasSubstr("air.jsonl, 12 bytes\n"));
  EXPECT_EQ(Run({"record", "status", "--json"}), kDone);
  EXPECT_THAT(out, HasSubstr("\"megabytes\":20"));
  EXPECT_THAT(out, HasSubstr("\"bytes\":12"));
}

TEST_F(ClientProgramTest, RefusesBadCallsWithoutAsking) {
  const std::vector<std::string> cases[] = {{},
                                            {"nonsense"},
                                            {"status", "more"},
                                            {"connect", "Home"},
                                            {"connect", "Home", "02-50"},
                                            {"mode", "quick"},
                                            {"set", "Nothing", "1"},
                                            {"set", "SCOREDIFFPCT", "-1"},
                                            {"lb", "weight", "3"},
                                            {"lb", "off", "1"},
                                            {"list", "deny", "set"},
                                            {"list", "deny", "set", "/nowhere/list.json"},
                                            {"--colour", "status"},
                                            {"status", "--adapter"},
                                            {"status", "--wait"},
                                            {"candidates", "--timeout", "5"},
                                            {"diag", "--adapter", "0"},
                                            {"set", "SCOREDIFFPCT", "30", "--adapter", "0"},
                                            {"lb", "status", "1"},
                                            {"record"},
                                            {"record", "on", "0"},
                                            {"record", "on", "1001"},
                                            {"record", "off", "1"},
                                            {"status", "--adapter", "green"}};
  for (const auto& words : cases) {
    EXPECT_EQ(Run(words), kBadCall) << (words.empty() ? "" : words[0]);
    EXPECT_THAT(notes.requests, IsEmpty());
    EXPECT_THAT(error, HasSubstr("corvane-client"));
  }
  // With two adapters a change must say which.
  notes.settings[""]["NumWifiAdapters"] = "2";
  EXPECT_EQ(Run({"accept"}), kBadCall);
  EXPECT_THAT(error, HasSubstr("Red"));
  EXPECT_EQ(Run({"accept", "--adapter", "1"}), kDone);
  EXPECT_THAT(notes.requests, ElementsAre(HasSubstr(kSecond)));
  notes.settings[kSecond]["SuggestedNetwork"].clear();
  EXPECT_EQ(Run({"accept", "--adapter", "1"}), kRefused);
  EXPECT_THAT(notes.requests, IsEmpty());
}

TEST_F(ClientProgramTest, SaysARefusalInWords) {
  notes.reply = R"({ "status":"error", "code":14, "reason":"vpn", "request":"" })";
  EXPECT_EQ(Run({"connect", "Home", "02-50-00-00-01-05"}), kRefused);
  EXPECT_THAT(error, HasSubstr("code 14: the connect was refused (vpn)"));
  EXPECT_EQ(Run({"raw", R"({"cmd":"AppLog"})"}), kRefused);
  EXPECT_EQ(out, notes.reply + "\n");
  notes.reply = R"({ "status":"error", "code":12, "diag":{ "blast":"0.0", "apscore":"-1", )"
                R"("adapterclass":"802.11ax", "apclass":"unknown", "status":"error" } })";
  EXPECT_EQ(Run({"diag"}), kRefused);
  EXPECT_THAT(out, HasSubstr("802.11ax"));
}

TEST_F(ClientProgramTest, WaitsForTheEndOfAConnect) {
  auto& adapter = notes.settings[kFirst];
  adapter["ConnectStatus"] = "pending";
  notes.statuses = {"connecting", "error", "connecting", "connected"};
  adapter["ConnectedBssid"] = "02-50-00-00-01-05";
  adapter["ConnectedNetwork"] = "Home [Channel 36]";
  EXPECT_EQ(Run({"connect", "Home", "02-50-00-00-01-05", "--wait"}), kDone) << error;
  EXPECT_EQ(out, "connected to Home [Channel 36]\n");
  notes.statuses = {"connected"};
  EXPECT_EQ(Run({"connect", "Home", "02-50-00-00-01-05", "--wait", "--json"}), kDone);
  EXPECT_EQ(out, "{\"connected\":true,\"ssid\":\"\",\"bssid\":\"02-50-00-00-01-05\"}\n");
  notes.statuses = {"error"};
  EXPECT_EQ(Run({"connect", "Home", "02-50-00-00-01-06", "--wait"}), kRefused);
  EXPECT_THAT(error, HasSubstr("failed"));
  adapter["ConnectStatus"] = "pending";
  EXPECT_EQ(Run({"connect", "Home", "02-50-00-00-01-06", "--wait", "--timeout", "2"}), kRefused);
  EXPECT_THAT(error, HasSubstr("within 2 s"));
}

TEST_F(ClientProgramTest, TellsWhatHoldsTheServiceStill) {
  EXPECT_EQ(Run({"status"}), kDone);
  EXPECT_THAT(out, HasSubstr("Holds still  no"));
  EXPECT_THAT(out, HasSubstr("popup"));
  notes.settings[""]["ServiceEnable"] = "0";
  notes.settings[kFirst]["VPNInhibited"] = "1";
  EXPECT_EQ(Run({"status"}), kDone);
  EXPECT_THAT(out, HasSubstr("the service is disabled; a VPN is up"));
  EXPECT_EQ(Run({"status", "--json"}), kDone);
  EXPECT_THAT(out, HasSubstr(R"("holds_still":["the service is disabled","a VPN is up"])"));
}

TEST_F(ClientProgramTest, TellsWhatIsAskedOfTheLoadBalanceEngine) {
  EXPECT_EQ(Run({"lb", "status"}), kDone);
  EXPECT_EQ(out, "Load-balance engine  off\n  Paused             no\n  Weight mode        2\n");
  notes.settings[""].insert({{"LBEnabled", "1"}, {"LBPaused", "1"}, {"LBWeightMode", "1"}});
  EXPECT_EQ(Run({"lb", "status"}), kDone);
  EXPECT_EQ(out, "Load-balance engine  on\n  Paused             yes\n  Weight mode        1\n");
  EXPECT_EQ(Run({"lb", "status", "--json"}), kDone);
  EXPECT_EQ(out, "{\"enabled\":true,\"paused\":true,\"weight_mode\":1}\n");
  EXPECT_THAT(notes.requests, IsEmpty());
}

TEST_F(ClientProgramTest, DrawsWhatChangesUntilSomebodyTypesQ) {
  using Wish = ITerminalScreen::Wish;
  const auto nothing = [] { return Wish::kNone; };
  notes.looks.assign(5, nothing);
  notes.looks.front() = [this] {
    EXPECT_THAT(out, HasSubstr("Adapter 0"));
    EXPECT_THAT(out, HasSubstr("Suggests     Home [02-50-00-00-01-05]"));
    out.clear();
    return Wish::kNone;
  };
  notes.looks.push_back([this] {
    EXPECT_EQ(out, "");  // half a second without a change
    notes.settings[kFirst]["PassiveSuggestMode"] = "0";
    notes.events = {"an \x1b event"};
    return Wish::kNone;
  });
  notes.looks.push_back(nothing);  // the event is taken, and is drawn at once
  notes.looks.push_back([this] {
    EXPECT_THAT(out, HasSubstr("an \uFFFD event"));
    EXPECT_THAT(out, HasSubstr("autoswitch"));
    EXPECT_THAT(out, Not(HasSubstr("Adapter 0")));
    out.clear();
    notes.settings[""]["NumWifiAdapters"] = "0";
    return Wish::kRedraw;
  });
  notes.looks.push_back([this] {
    EXPECT_THAT(out, HasSubstr("There is no adapter."));
    EXPECT_THAT(out, HasSubstr("an \uFFFD event"));
    EXPECT_EQ(notes.screens, 1);
    return Wish::kEnd;
  });
  EXPECT_EQ(Run({"watch", "--adapter", "0"}, true), kDone) << error;
  EXPECT_THAT(notes.looks, IsEmpty());
  EXPECT_EQ(notes.screens, 0);
}

TEST_F(ClientProgramTest, WatchesInLinesOfWhatHasChanged) {
  notes.waitsUntilCtrlC = 5;
  notes.events = {"one", "two"};
  EXPECT_EQ(Run({"watch"}), kDone);
  EXPECT_EQ(out,
            "adapter 0: not connected, mode popup, suggests Home [02-50-00-00-01-05]\none\ntwo\n");
  notes.waitsUntilCtrlC = 1;
  notes.settings[kFirst]["CandidatesCSV"] =
      "B\v02-50-00-00-01-05\v5Ghz\v75\v100\vPrivate\vauto\vgood\v12.50\v100\vac\v7\v1\v20\vno\v3";
  EXPECT_EQ(Run({"watch", "--json"}, true), kDone);
  EXPECT_THAT(out, HasSubstr(R"("candidates":[{"ssid":"B","bssid":"02-50-00-00-01-05")"));
}

TEST_F(ClientProgramTest, ShowsTheRecordsOfALogAsLinesAlsoOfOneThatCameCut) {
  notes.reply = R"({ "status":"ok", "code":0, "log":"bGluZQps)";
  EXPECT_EQ(Run({"log"}), kDone);
  EXPECT_EQ(out, "line\nl\n");
  const std::string first = "0000001<11/25/2026/T9:00:00.000Z>~<I>one 1234567<",
                    second = "0000002<11/25/2026/T9:00:01.000Z>~<I>two\n",
                    third = "0000003<11/25/2026/T9:00:02.000Z>~<E>three";
  notes.reply = R"({ "status":"ok", "code":0, "log":")" +
                platform::ToBase64(first + second + third) + R"(" })";
  EXPECT_EQ(Run({"log"}), kDone);
  EXPECT_EQ(out, first + "\n" + second + third + "\n");
  // Names that others chose command no terminal, and leave the JSON as it has to be.
  notes.reply =
      R"({ "status":"ok", "code":0, "log":")" + platform::ToBase64("a\tb\x1b[2J\xE9") + R"(" })";
  EXPECT_EQ(Run({"log"}), kDone);
  EXPECT_EQ(out, "a\tb\uFFFD[2J\uFFFD\n");
  EXPECT_EQ(Run({"log", "--json"}), kDone);
  EXPECT_EQ(out, "{\"log\":\"a\\tb\\u001B[2J\uFFFD\"}\n");
}

class ClientListTest : public ClientProgramTest {
 protected:
  std::string Write(const std::string& text) {
    std::ofstream(directory / "list.json", std::ios::binary) << text;
    return directory / "list.json";
  }

  const test::TempDirectory directory;
  const std::string folder = directory.Path();
};

TEST_F(ClientListTest, SendsAListThatTheServiceKeeps) {
  EXPECT_EQ(Run({"list", "allow", "set", Write("\xEF\xBB\xBF[[\"Café\"]]")}), kDone) << error;
  EXPECT_THAT(notes.requests, ElementsAre(HasSubstr(R"("value":"[[\"Café\"]]")")));
  EXPECT_EQ(Run({"list", "deny", "set", Write("[[\"Home\"]]")}), kBadCall);
  EXPECT_THAT(error, HasSubstr("list.json:1:2: a row takes an SSID and a BSSID"));
  // A longer value would read as none: nobody would be denied any more.
  const std::string row = "[\"Home\",\"any\"]";
  EXPECT_EQ(Run({"list", "deny", "set", Write("[" + row + std::string(10'224, ' ') + "]")}), kDone);
  EXPECT_EQ(Run({"list", "deny", "set", Write("[" + row + std::string(10'225, ' ') + "]")}),
            kBadCall);
  EXPECT_THAT(error, HasSubstr("10240 characters"));
  EXPECT_THAT(notes.requests, IsEmpty());
}

TEST_F(ClientListTest, KeepsThePreferredListBesideTheServicesProgram) {
  notes.folder = folder;
  EXPECT_EQ(Run({"list", "preferred"}), kDone);
  EXPECT_EQ(out, "the list is empty\n");
  EXPECT_EQ(Run({"list", "preferred", "set", Write(R"([["Home","any",60]])")}), kDone) << error;
  EXPECT_THAT(out, HasSubstr(folder + "/preferred_ap.json"));
  EXPECT_EQ(Run({"list", "preferred", "set", Write(R"([["Home","any"]])")}), kBadCall);
  EXPECT_EQ(Run({"list", "preferred", "show"}), kDone);
  EXPECT_EQ(out, "Home  any  60\n");
  EXPECT_EQ(Run({"list", "preferred", "clear"}), kDone);
  EXPECT_EQ(Run({"list", "preferred", "show", "--json"}), kDone);
  EXPECT_EQ(out, "[]\n");
  notes.folder += "/nowhere";
  EXPECT_EQ(Run({"list", "preferred", "set", Write("[]")}), kRefused);
  EXPECT_THAT(notes.requests, IsEmpty());
}

}  // namespace corvane::client
