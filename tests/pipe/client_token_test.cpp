// Who may command the service: the token of a request and the table of sessions.

#include "pipe/client_token.h"

#include "pipe/api_session_security_singleton.h"
#include "pipe/command_fixture.h"

namespace corvane::test {
namespace {

class TokenTest : public CommandTest {
 protected:
  TokenTest() : CommandTest(1) {}

  // The code of a request whose token has this plain text; 5 when it passes, as there is no
  // command.
  std::uint32_t Check(const std::string& plain) { return CheckArt(Token(plain)); }
  std::uint32_t CheckArt(const std::string& art) {
    return CodeOf(Send("{\"art\":\"" + art + "\"}"));
  }
  std::string Fields(const std::string& session, std::uint64_t nonce, platform::DWORD id = 0) {
    return session + "," + std::to_string(id == 0 ? pid : id) + "," + std::to_string(nonce) + ",x";
  }
  static CAPISessionSecuritySingleton& Security() {
    return CAPISessionSecuritySingleton::Instance();
  }
  static constexpr std::uint32_t kPasses = 5;
};

TEST_F(TokenTest, EachTestHasItsCodeAndItsWord) {
  const auto tray = kernel.Session().StartProcess(u"Corvane_TrayApp.exe");
  const auto lower = kernel.Session().StartProcess(u"corvane_configapp.exe");
  struct Case {
    std::string art;
    std::uint32_t code;
    const char* word;
  };
  const Case cases[] = {
      {"", 1001, "***** B64 Length is 0 *****"},
      {"=*=", 1001, "***** Encrypted Length is 0 *****"},
      {Token("s,1,2"), 1003, "***** Field count not correct *****"},
      {Token("s," + std::to_string(pid) + ",2,x,y"), 1003, "***** Field count not correct *****"},
      {Token(Fields("s", 1, 77)), 1005, "***** BAD PID GIVEN *****"},
      {Token("s,0,1,x"), 1005, "***** BAD PID GIVEN *****"},
      {Token(Fields("s", 1, tray)), 1006, "***** UNSUPPORTED EXE NAME ***** [Corvane_TrayApp.exe]"},
      {Token(Fields("s", 1, lower)), 1006, "UNSUPPORTED EXE NAME ***** [corvane_configapp.exe]"},
      {Token("s,abc,1,x"), 1010, "Exception: invalid stoull argument"},
      {Token("s,1,99999999999999999999,x"), 1010, "Exception: stoull argument out of range"}};
  for (const Case& one : cases) {
    ForgetLog();
    EXPECT_EQ(CheckArt(one.art), one.code) << one.word;
    EXPECT_TRUE(HasLog("CNamedPipeListenerJson::HandleJsonCommand:[___ART___] ")) << one.word;
    EXPECT_TRUE(HasLog(one.word)) << kernel.Console().Text();
  }
  EXPECT_EQ(Security().GetSessionCount(), 0u) << "a refused token leaves no session";
  EXPECT_EQ(Check(Fields("s", 1)), kPasses);
}

TEST_F(TokenTest, AProcessThatHasEndedCommandsNothing) {
  EXPECT_EQ(Check(Fields("s", 1)), kPasses);
  kernel.Session().EndProcesses(u"Corvane_ConfigApp.exe");
  EXPECT_EQ(Check(Fields("s", 1)), 1005u) << "the remembered text skips no check";
}

TEST_F(TokenTest, AProcessListThatFailsKnowsNobody) {
  for (const char* operation : {"CreateToolhelp32Snapshot", "Process32FirstW", "Process32NextW"}) {
    for (const platform::DWORD code :
         {platform::ERROR_GEN_FAILURE, platform::sim::FaultPlan::kFault}) {
      kernel.Faults().FailCall(operation, 1, code);
      EXPECT_EQ(Check(Fields("s", 1)), 1005u) << operation << code;
    }
  }
  EXPECT_EQ(Check(Fields("s", 1)), kPasses);
}

TEST_F(TokenTest, ANonceMayStayButNotGoBack) {
  for (const auto& [nonce, code] :
       {std::pair{5, kPasses}, {5, kPasses}, {6, kPasses}, {4, 1009u}, {6, kPasses}}) {
    EXPECT_EQ(Check(Fields("s", static_cast<std::uint64_t>(nonce))), code) << nonce;
  }
  EXPECT_TRUE(HasLog("***** NONCE NEGATIVE! ***** PREVIOUS:[6]"));
  EXPECT_EQ(Check(Fields("other", 1)), kPasses) << "a session of its own";
}

TEST_F(TokenTest, ASessionStaysWithItsProcess) {
  EXPECT_EQ(Check(Fields("s", 1)), kPasses);
  const auto second = kernel.Session().StartProcess(u"NudgeDialog.exe");
  EXPECT_EQ(Check(Fields("s", 9, second)), 1007u);
  EXPECT_TRUE(HasLog("***** PID/EXE CHANGED! ***** PREVIOUS:[" + std::to_string(pid) +
                     "][Corvane_ConfigApp.exe]"));
  EXPECT_EQ(Security().CheckSession(u"s", pid, 9, u"", u"NudgeDialog.exe"), -4);
  EXPECT_EQ(Security().CheckSession(u"s", pid + 1, 9, u"", u"NudgeDialog.exe"), -3);
  EXPECT_EQ(Check(Fields("s", 1)), kPasses) << "the session is as it was";
}

TEST_F(TokenTest, TheTableShrinksAtTheNextHigherNonce) {
  const auto add = [&](int n) {
    return Security().CheckSession(Format(u"s%i", n), pid, 1, u"", u"a");
  };
  for (int n = 0; n < 101; ++n) EXPECT_EQ(add(n), 0);
  EXPECT_EQ(Security().GetSessionCount(), 101u) << "the 101st is kept";
  EXPECT_EQ(add(100), -1);
  EXPECT_EQ(Security().GetSessionCount(), 101u) << "nothing was updated";
  EXPECT_EQ(Security().CheckSession(u"s100", pid, 2, u"", u"a"), 0);
  EXPECT_EQ(Security().GetSessionCount(), 100u);
  std::uint64_t nonce = 0;
  EXPECT_FALSE(Security().GetSessionNonce(u"s0", &nonce)) << "the oldest went";
  EXPECT_TRUE(Security().GetSessionNonce(u"s1", &nonce));
  EXPECT_EQ(Security().CheckSession(u"s0", pid + 1, 1, u"", u"b"), 0) << "it may start over";
}

TEST_F(TokenTest, TheTableHoldsAThousandWhateverClientsDo) {
  for (int n = 0; n < 1500; ++n) Security().CheckSession(Format(u"s%i", n), pid, 1, u"", u"a");
  EXPECT_EQ(Security().GetSessionCount(), 1000u);
  std::uint64_t nonce = 0;
  EXPECT_FALSE(Security().GetSessionNonce(u"s499", &nonce));
  EXPECT_TRUE(Security().GetSessionNonce(u"s500", &nonce));
}

TEST_F(TokenTest, TheSameTokenIsDecryptedOnce) {
  Check(Fields("s", 1));
  const int once = crypto->decryptions;
  EXPECT_EQ(Check(Fields("s", 1)), kPasses);
  EXPECT_EQ(crypto->decryptions, once);
  Check(Fields("s", 2));
  EXPECT_EQ(crypto->decryptions, 2 * once);
  EXPECT_EQ(Check(Fields("s", 1)), 1009u) << "an old one again";
  auto other = std::make_unique<PipeInstanceCtx>();
  client.swap(other);
  Check(Fields("s", 2));
  EXPECT_EQ(crypto->decryptions, 4 * once) << "each connection for itself";
}

}  // namespace
}  // namespace corvane::test
