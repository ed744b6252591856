// What the client reads and prints, without a service.

#include <gmock/gmock.h>

#include "corvane_client/candidate_rows.h"
#include "corvane_client/connect_progress.h"
#include "corvane_client/event_text.h"
#include "corvane_client/json_check.h"
#include "corvane_client/json_writer.h"
#include "corvane_client/service_reply.h"
#include "corvane_client/text_table.h"

namespace corvane::client {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(ClientTexts, AlignsColumnsByWhatATerminalShows) {
  EXPECT_THAT(TableLines({{"a", "n"}, {"日本", "10"}, {"é", ""}, {"e\u0301e", "7"}}, {1}),
              ElementsAre("a      n", "日本  10", "é", "e\u0301e     7"));
  EXPECT_EQ(Clip("日本語", 5), "日本…");
  EXPECT_EQ(Clip("日本語", 6), "日本語");
  EXPECT_EQ(Clip("日本語", 4), "日…");
}

// An SSID is anybody's choice, also one that would command the terminal.
TEST(ClientTexts, PrintsNoCommandsToTheTerminal) {
  EXPECT_EQ(Printable("a\x1b[2J\x07\u202Eb\xFFü"), "a\uFFFD[2J\uFFFD\uFFFDb\uFFFDü");
}

TEST(ClientTexts, ReadsCandidateRows) {
  const std::string row =
      "Caf\u00e9\v02-50-00-00-01-05\v5Ghz\v75\v100\vPrivate\vauto\vgood\v12.50\v100\v802.11ax\v7"
      "\v1\v20,40\vno\v3";
  const auto rows = ParseCandidates(row + "\t" + "short\vrow" + "\t" + "B" + row.substr(5));
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].score, "75");
  EXPECT_EQ(rows[0].load, "12.50");
  EXPECT_EQ(rows[0].occupancy, "3");
  const auto lines = CandidateLines(rows, "02:50:00:00:01:05");
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1].substr(0, 9), "*  Caf\u00e9 ");
  EXPECT_THAT(lines[1], HasSubstr("WPA2-PSK"));
  EXPECT_THAT(CandidatesJson(rows, ""), HasSubstr(R"("channel":100,"score":75)"));
  EXPECT_TRUE(ParseCandidates("").empty());
}

TEST(ClientTexts, WritesNumbersAsNumbers) {
  const std::pair<const char*, const char*> cases[] = {
      {"-70", "[-70]"},     {"9.80", "[9.80]"},
      {"-0.5", "[-0.5]"},   {"007.5", "[7.5]"},
      {"", "[\"\"]"},       {"9.", "[\"9.\"]"},
      {".5", "[\".5\"]"},   {"1.2.3", "[\"1.2.3\"]"},
      {"1e5", "[\"1e5\"]"}, {"36 MHz", "[\"36 MHz\"]"},
      {"inf", "[\"inf\"]"}, {"99999999999999999999", "[\"99999999999999999999\"]"}};
  for (const auto& [text, json] : cases)
    EXPECT_EQ(CJsonWriter().BeginArray().Value(text).EndArray().Text(), json);
}

TEST(ClientTexts, TellsEventsInWords) {
  const std::string event =
      R"({ "evtNamespace":"Corvane", "evtCategory":"ConnectionChange", "evtType":"Autoswitch", )"
      R"("evtTimestamp":"25/11/2026T9:05:07.12Z", "evtState":"true", "evtData1":"Score 75, )"
      R"(02-50-00-00-01-05, SQ 100, Channel 36, Max datarate 1201 mbps, \u0041, b", )"
      R"("evtData2":"None", "evtData3":"", "evtData4":"Wi-Fi", "evtData5":"" })";
  EXPECT_EQ(EventLine(event),
            "09:05:07  switched to A, b 02-50-00-00-01-05 (score 75) from None [Wi-Fi]");
  // It comes with the service's own moves, too.
  EXPECT_EQ(EventLine(R"({"evtCategory":"ConnectionChange","evtType":"ExternalDisconnect",)"
                      R"("evtTimestamp":"25/11/2026T19:05:07.12Z","evtData4":"Wi-Fi"})"),
            "19:05:07  was disconnected [Wi-Fi]");
  EXPECT_EQ(EventLine("{ \"broken\" \x1b"), "{ \"broken\" \uFFFD");
}

TEST(ClientTexts, ReadsRepliesAlsoWhenTheyAreCut) {
  EXPECT_TRUE(ReadReply(R"({ "status":"ok", "code":0, "log":"QUJ)").ok);
  EXPECT_FALSE(ReadReply(R"({ "status":"error", "code":1005 })").ok);
  EXPECT_FALSE(ReadReply("ok").understood);
  const ServiceReply refused =
      ReadReply(R"({ "status":"error", "code":14, "reason":"vpn", "request":"{}" })");
  EXPECT_EQ(refused.code, 14u);
  EXPECT_EQ(refused.reason, "vpn");
}

// The texts are wrong at exactly this place; "" is a good one.
TEST(ClientTexts, FindsTheMistakeInALine) {
  struct Case {
    ListKind kind;
    const char* text;
    const char* place;
  };
  const Case cases[] = {
      {ListKind::kDeny, R"([["Home","any"],["Office","00-11-22-33-44-AA"]])", ""},
      {ListKind::kDeny, "[]", ""},
      {ListKind::kDeny, "[[\"Home\",\n  \"00:11:22:33:44:55\"]]", "2:3"},
      {ListKind::kDeny, "[\n [\"Home\"]]", "2:2"},
      {ListKind::kDeny, R"(["Home","any"])", "1:2"},
      {ListKind::kDeny, R"([["ü",7]])", "1:7"},
      {ListKind::kDeny, R"([[["Home"],"any"]])", "1:3"},
      {ListKind::kDeny, R"({"Home":"any"})", "1:1"},
      {ListKind::kDeny, "[[\"Home\",\"any\"]\n", "2:1"},
      {ListKind::kDeny, R"([["123456789012345678901234567890123","any"]])", "1:3"},
      {ListKind::kAllow, R"([["Home"],["any","Office"],["Office","00-11-22-33-44-55"]])", ""},
      {ListKind::kAllow, R"([["Home","Office"]])", "1:10"},
      {ListKind::kAllow, "[[]]", "1:2"},
      {ListKind::kPreferred, R"([["Office","any",60]])", ""},
      {ListKind::kPreferred, R"([["Office","any",101]])", "1:18"},
      {ListKind::kPreferred, R"([["Office","any","60"]])", "1:18"},
      {ListKind::kPreferred, R"([["Office","any"]])", "1:2"}};
  for (const Case& one : cases) {
    const std::string wrong = CheckApList(one.text, one.kind);
    EXPECT_EQ(wrong.substr(0, wrong.find(": ")), one.place) << one.text << " " << wrong;
  }
  EXPECT_EQ(CheckWeights(R"({"SQMax":40,"Internet":0})"), "");
  EXPECT_THAT(CheckWeights(R"({"SqMax":40})"), HasSubstr("1:2: there is no weight"));
  EXPECT_THAT(CheckWeights("{\"SQMax\":\n 4.5}"), HasSubstr("2:2: "));
  EXPECT_THAT(CheckWeights(R"({"SQMax":4294967296})"), HasSubstr("1:10: "));
  EXPECT_THAT(CheckWeights("7"), HasSubstr("1:1: "));
}

// A failed try is followed by another within two seconds.
TEST(ClientTexts, TakesOnlyALastingErrorForTheEndOfAConnect) {
  CConnectProgress progress("02-50-00-00-01-05");
  EXPECT_EQ(progress.Look("pending", "", 0), ConnectEnd::kNotYet);
  EXPECT_EQ(progress.Look("error", "", 1000), ConnectEnd::kNotYet);
  EXPECT_EQ(progress.Look("connecting", "", 3500), ConnectEnd::kNotYet);
  EXPECT_EQ(progress.Look("error", "", 4000), ConnectEnd::kNotYet);
  EXPECT_EQ(progress.Look("error", "", 7000), ConnectEnd::kFailed);
  EXPECT_EQ(progress.Look("connected", "02-50-00-00-01-06", 7200), ConnectEnd::kNotYet);
  EXPECT_EQ(progress.Look("connected", "02-50-00-00-01-05", 7400), ConnectEnd::kConnected);
  // The service has gone elsewhere, to stay.
  EXPECT_EQ(progress.Look("connected", "02-50-00-00-01-06", 8000), ConnectEnd::kNotYet);
  EXPECT_EQ(progress.Look("connected", "02-50-00-00-01-06", 10'300), ConnectEnd::kFailed);
  CConnectProgress already("02-50-00-00-01-05");
  EXPECT_EQ(already.Look("pending", "02-50-00-00-01-05", 0), ConnectEnd::kNotYet);
  EXPECT_EQ(already.Look("pending", "02-50-00-00-01-05", 3000), ConnectEnd::kConnected);
}

}  // namespace corvane::client
