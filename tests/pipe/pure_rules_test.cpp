// What the pipes decide without looking at anything: texts, fields, lists.

#include <gtest/gtest.h>

#include "foundation/exception.h"
#include "pipe/client_request.h"
#include "pipe/client_token.h"
#include "pipe/connect_rules.h"
#include "pipe/csec.h"
#include "pipe/diagnosis.h"
#include "pipe/json_print.h"
#include "pipe/null_session_pipes.h"
#include "pipe/reply_text.h"
#include "pipe/token_fields.h"

namespace corvane {
namespace {

TEST(ReplyText, FormsReadCharacterForCharacter) {
  const std::pair<WString, WStringView> cases[] = {
      {EchoReply(u"{\"a\":\"\\\"\"}"),
       u"{ \"status\":\"ok\", \"code\":0, \"request\":{\"a\":\"\\\"\"} }"},
      {ListReply(u"[]"), u"{ \"status\":\"ok\", \"code\":0, \"response\":[] }"},
      {LogReply(u"Zm8="), u"{ \"status\":\"ok\", \"code\":0, \"log\":\"Zm8=\" }"},
      {DiagnosisReply(u"{}"), u"{ \"status\":\"ok\", \"code\":0, \"diag\":{} }"},
      {DiagnosisFailureReply(12, u"{}"), u"{ \"status\":\"error\", \"code\":12, \"diag\":{} }"},
      {FailureReply(7, u"{\"a\":\"\\n\"}"),
       u"{ \"status\":\"error\", \"code\":7, \"request\":\"{\\\"a\\\":\\\"\\n\\\"}\" }"},
      {RefusalReply(u"radio disabled", u"\"x\""),
       u"{ \"status\":\"error\", \"code\":14, \"reason\":\"radio disabled\", "
       u"\"request\":\"\\\"x\\\"\" }"},
      {TokenFailureReply(1002), u"{ \"status\":\"error\", \"code\":1002 }"},
      {DiagnosisObject({u"1.500000", 88, u"802.11ax", u"802.11ac", u"ok"}),
       u"{ \"blast\":\"1.500000\", \"apscore\":\"88\", \"adapterclass\":\"802.11ax\", "
       u"\"apclass\":\"802.11ac\", \"status\":\"ok\" }"},
      {DiagnosisObject({}),
       u"{ \"blast\":\"0.0\", \"apscore\":\"-1\", \"adapterclass\":\"unknown\", "
       u"\"apclass\":\"unknown\", \"status\":\"error\" }"}};
  for (const auto& [reply, form] : cases) EXPECT_EQ(WideToUtf8(reply), WideToUtf8(form));
}

TEST(TokenFields, GoByPosition) {
  const auto token = ParseToken("g-1,4294967295,18446744073709551615,who");
  ASSERT_TRUE(token);
  EXPECT_EQ(token->guid, u"g-1");
  EXPECT_EQ(token->pid, 4294967295u);
  EXPECT_EQ(token->nonce, 18446744073709551615u);
  EXPECT_EQ(token->x, u"who");
  const auto bare = ParseToken(",7,8,");
  ASSERT_TRUE(bare);
  EXPECT_EQ(bare->pid, 7u);
  EXPECT_TRUE(bare->guid.empty() && bare->x.empty());
  const auto cut = ParseToken(std::string_view("g,1,2,x\0,y,z", 12));
  ASSERT_TRUE(cut) << "the text ends at its NUL";
  EXPECT_EQ(cut->x, u"x");
  EXPECT_EQ(ParseToken("g,1,2,\xE9")->x, u"\u00E9") << "a byte is a character";
}

TEST(TokenFields, RefuseOtherCountsAndOtherNumbers) {
  for (const char* text : {"", "g", "g,1,2", "g,1,2,x,", "g,1,2,x,y"}) {
    EXPECT_FALSE(ParseToken(text)) << text;
  }
  for (const char* text :
       {"g,,2,x", "g,1,,x", "g,a,2,x", "g,1a,2,x", "g,-1,2,x", "g,+1,2,x", "g, 1,2,x", "g,1 ,2,x",
        "g,0x1,2,x", "g,4294967296,2,x", "g,1,18446744073709551616,x", "g,1,-2,x", "g,1,2.0,x"}) {
    EXPECT_THROW(ParseToken(text), Exception) << text;
  }
}

TEST(ClientExecutable, IsComparedExactly) {
  for (const WStringView name :
       {u"PalisadeOptimizer.exe", u"PassphraseDesk.exe", u"NudgeDialog.exe",
        u"Corvane_ConfigApp.exe", u"Trellis_ConfigApp_orig.exe", u"corvane-client",
        u"corvane-client.exe"}) {
    EXPECT_TRUE(IsClientExecutable(name)) << WideToUtf8(name);
  }
  for (const WStringView name :
       {u"", u"nudgedialog.exe", u"NudgeDialog", u"NudgeDialog.exe ", u"Corvane_TrayApp.exe"}) {
    EXPECT_FALSE(IsClientExecutable(name)) << WideToUtf8(name);
  }
}

TEST(ConnectRules, TheFirstObstacleIsTheReason) {
  EXPECT_EQ(RefusalFor({}), u"");
  EXPECT_EQ(RefusalFor({.adapterOff = true}), u"adapter disabled");
  EXPECT_EQ(RefusalFor({.airplane = true, .adapterOff = true}), u"airplane mode");
  EXPECT_EQ(RefusalFor({.radioOff = true, .airplane = true}), u"radio disabled");
  EXPECT_EQ(RefusalFor({.vpn = true, .radioOff = true, .airplane = true, .adapterOff = true}),
            u"vpn");
}

TEST(ConnectRules, ABssidComesInThreeSpellings) {
  for (const WStringView text :
       {u"02-50-00-00-00-ab", u"02:50:00:00:00:ab", u"02:50:00:00:00:AB", u"02-50-00-00-00-AB"}) {
    EXPECT_EQ(NormalBssid(text), u"02-50-00-00-00-ab");
  }
}

TEST(PipeDescriptor, GrantsTheServiceAllAndUsersToReadAndWrite) {
  EXPECT_EQ(PipeDescriptorText(u"S-1-5-18", 10),
            u"D:(A;;GA;;;S-1-5-18)(A;;GWGR;;;AU)S:(ML;;NW;;;S-1-16-0)");
  EXPECT_EQ(PipeDescriptorText(u"S-1-5-18", 6),
            u"D:(A;;GA;;;S-1-5-18)(A;;GWGR;;;AU)S:(ML;;NW;;;S-1-16-0)");
  EXPECT_EQ(PipeDescriptorText(u"S-1-5-18", 5), u"D:(A;;GA;;;S-1-5-18)(A;;GWGR;;;AU)");
}

TEST(NullSessionPipes, GetTheNameOnceBehindTheOthers) {
  using namespace std::string_view_literals;
  const std::pair<WStringView, WStringView> added[] = {
      {u"a\0bc\0\0"sv, u"a\0bc\0TRLSPipe\0\0"sv},
      {u"a\0"sv, u"a\0TRLSPipe\0\0"sv},
      {u"trlspipe\0\0"sv, u"trlspipe\0TRLSPipe\0\0"sv},
      {u"TRLSPipe_N\0\0"sv, u"TRLSPipe_N\0TRLSPipe\0\0"sv},
      {u"\0"sv, u"TRLSPipe\0\0"sv},
      {u""sv, u"TRLSPipe\0\0"sv},
      {u"a"sv, u"a\0TRLSPipe\0\0"sv}};
  for (const auto& [list, longer] : added) EXPECT_EQ(WithPipeName(list, u"TRLSPipe"), longer);
  EXPECT_EQ(WithPipeName(u"TRLSPipe\0a\0\0"sv, u"TRLSPipe"), std::nullopt);
  EXPECT_EQ(WithPipeName(u"a\0TRLSPipe\0\0"sv, u"TRLSPipe"), std::nullopt);
}

TEST(StandardText, NormalisesAClass) {
  const std::pair<WStringView, WStringView> cases[] = {
      {u"ax", u"802.11ax"}, {u"b", u"802.11b"}, {u"802.11", u"802.11"}, {u"11", u"802.11"}};
  for (const auto& [letters, text] : cases) EXPECT_EQ(StandardText(letters), text);
}

TEST(WideFromBytes, TakesUtf8AndElseEachByte) {
  EXPECT_EQ(WideFromBytes("C:\\a"), u"C:\\a");
  EXPECT_EQ(WideFromBytes("\xC3\xBC"), u"\u00FC");
  EXPECT_EQ(WideFromBytes("\xFC"), u"\u00FC");
  EXPECT_EQ(WideFromBytes("\xEF\xBF\xBD"), u"\uFFFD");
}

TEST(PrettyJson, IndentsByFour) {
  EXPECT_EQ(PrettyJson(R"({"a":[1,-2.5,true,null],"b":{"c":"d"}})"),
            "{\n    \"a\": [\n        1,\n        -2.5,\n        true,\n        null\n    ],\n"
            "    \"b\": {\n        \"c\": \"d\"\n    }\n}");
  EXPECT_EQ(PrettyJson("{\"a\":"), "null");
}

TEST(PrettyJson, EndsWhereADeepTextWouldGoOnForever) {
  const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
  const std::string printed = PrettyJson(deep, 10'000);
  EXPECT_GE(printed.size(), 10'000u);
  EXPECT_LT(printed.size(), 11'000u);
}

}  // namespace
}  // namespace corvane
