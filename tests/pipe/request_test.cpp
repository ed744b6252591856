// The envelope of a request: what any bytes at all are answered.

#include "pipe/command_fixture.h"

namespace corvane::test {
namespace {

class RequestTest : public CommandTest {};

TEST_F(RequestTest, WhatIsNoJsonIsCodeOneAndNeedsNoToken) {
  EXPECT_EQ(Send("{\"a\":\"b"),
            "{ \"status\":\"error\", \"code\":1, \"request\":\"{\\\"a\\\":\\\"b\" }");
  EXPECT_TRUE(HasLog("\nGot json with parse error, in pipe:\nnull"));
  for (const char* text : {"", " ", "{", "{}{}", "{\"a\":1e999}", "{\"a\":\"\\ud800\"}", "nul",
                           "{\"a\":1,}", "[1,2", "\x01", "{'a':1}"}) {
    EXPECT_EQ(CodeOf(Send(text)), 1u) << text;
  }
}

TEST_F(RequestTest, WithoutATokenNoOtherCodeIsSeen) {
  for (const char* text :
       {"{}", "[]", "null", "7", "\"cmd\"", "{\"cmd\":\"AppLog\"}", "{\"cmd\":\"Nonsense\"}",
        "{\"art\":7}", "{\"art\":null,\"cmd\":\"AppLog\"}", "[{\"art\":\"QQ==\"}]"}) {
    EXPECT_EQ(Send(text), "{ \"status\":\"error\", \"code\":1000 }") << text;
  }
}

TEST_F(RequestTest, CommandWordIsComparedExactly) {
  EXPECT_EQ(Code("\"x\":1"), 5u);
  EXPECT_EQ(Code("\"cmd\":7"), 5u);
  for (const char* word : {"", "applog", "AppLog ", "AppLog\\u0000", "Subscribe", "Diag1"}) {
    EXPECT_EQ(Code("\"cmd\":\"" + std::string(word) + "\""), 6u) << word;
  }
  EXPECT_EQ(Ask("\"cmd\":\"a\\\\b\""),
            "{ \"status\":\"error\", \"code\":6, \"request\":\"{\\\"art\\\":\\\"" + Token() +
                "\\\",\\\"cmd\\\":\\\"a\\\\b\\\"}\" }")
      << "backslashes are not doubled";
}

TEST_F(RequestTest, NestingCostsNoStack) {
  const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
  g_DebugMask = ~std::uint64_t{0};  // printed, too
  EXPECT_EQ(CodeOf(Send(deep)), 1000u);
  EXPECT_EQ(Code("\"deep\":" + deep + ",\"cmd\":\"NoDelay\""), 6u);
  EXPECT_EQ(CodeOf(Send(std::string(400'000, '['))), 1u);
  EXPECT_EQ(CodeOf(Send(std::string(400'000, '{'))), 1u);
  std::string objects;
  for (int i = 0; i < 60'000; ++i) objects += "{\"a\":";
  EXPECT_EQ(CodeOf(Send(objects)), 1u);
}

TEST_F(RequestTest, LoneSurrogatesAndStrangersAreText) {
  WString text = Utf8ToWide("{\"art\":\"" + Token() + "\",\"cmd\":\"x");
  text += char16_t{0xD800};
  text += u"\"}";
  EXPECT_EQ(CodeOf(WideToUtf8(pipe->RespondToPipeMessage(text, *client))), 6u);
}

TEST_F(RequestTest, RequestsArePrintedByTheirGate) {
  g_DebugMask = DBG(5);
  Ask("\"cmd\":\"one\"");
  EXPECT_TRUE(HasLog("\nGot json in pipe:\n{\n    \"art\": \""));
  g_DebugMask = DBG(6);
  Ask("\"cmd\":\"two\"");
  EXPECT_FALSE(HasLog("\"cmd\": \"two\"")) << "closed gate";
  g_DebugMask = 127 & ~DBG(12);
  Ask("\"cmd\":\"NoDelay 127\"");
  EXPECT_FALSE(HasLog("\"NoDelay 127\"")) << "its own gate, not bit 5";
  g_DebugMask = 128;
  Ask("\"cmd\":\"NoDelay 128\"");
  EXPECT_TRUE(HasLog("\nGot NoDelay json in pipe:\n"));
}

// A seam that throws where nothing was to be thrown.
class BadWlan : public PolicyWlan {
 public:
  explicit BadWlan(int kind) : PolicyWlan(2), m_Kind(kind) {}
  platform::DWORD WlanDeleteProfile(platform::HANDLE, const platform::GUID*, platform::LPCWSTR,
                                    void*) override {
    if (m_Kind == 0) throw Exception("bad");
    throw std::runtime_error("worse");
  }

 private:
  int m_Kind;
};

TEST_F(RequestTest, AThrowIsAnsweredByItsCode) {
  const std::string request = "\"cmd\":\"DeleteProfile\",\"ssid\":\"x\"";
  Install<BadWlan>(0);
  EXPECT_EQ(AdapterCode(request), 2u);
  EXPECT_TRUE(HasLog("CNamedPipeListenerJson::HandleJsonCommand: Exception: bad"));
  Install<BadWlan>(1);
  EXPECT_EQ(AdapterCode(request), 3u);
  EXPECT_TRUE(HasLog("CNamedPipeListenerJson::HandleJsonCommand: std:exception: worse"));
}

// Every request looks at the age of the audio, whatever becomes of it.
TEST_F(RequestTest, AudioThatNobodyEndedEndsAfterAnHour) {
  Global().SetRTAudioDetected(true);
  RunFor(3'600'000ms);
  Send("{}");
  EXPECT_TRUE(Global().m_rt_audio) << "an hour is not more than an hour";
  RunFor(1ms);
  Send("{");
  EXPECT_TRUE(Global().m_rt_audio) << "no request";
  Send("{}");
  EXPECT_FALSE(Global().m_rt_audio);
  EXPECT_TRUE(HasLog("MORE THAN 1HR ELAPSE FOR RTAUDIO, FORCE SetRTAudioDetected(false)"));
  Global().m_rt_audio = true;
  Global().m_rt_audio_tick = 0;
  Send("{}");
  EXPECT_FALSE(Global().m_rt_audio) << "no stamp";
}

}  // namespace
}  // namespace corvane::test
