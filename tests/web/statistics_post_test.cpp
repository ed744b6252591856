#include "web/statistics_post.h"

#include "foundation/singleton.h"
#include "platform/sim/kernel/sim_files.h"
#include "platform/sim/kernel/sim_registry.h"
#include "settings/global_config_container.h"
#include "web/web_fixture.h"

namespace corvane::test {
namespace {

using namespace platform;

class StatisticsPostTest : public WebTest {
 protected:
  std::uint32_t EnablePost() {
    return Pc().Registry().GetDword(kHomeKeyPath, u"EnablePost").value_or(9);
  }
};

TEST_F(StatisticsPostTest, SendsTheBytesAsTheyAreBehindTheFixedHeaders) {
  BootWeb(R"({"hosts": [{"host": "stats.corvane.example", "path": "/trellis.php"}]})");
  const std::string body("--x\0y", 5);
  EXPECT_TRUE(ProxySend(body, false));
  EXPECT_TRUE(ProxySend("", false)) << "an empty body is a post, too";
  const auto requests = Requests();
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_EQ(requests[0].verb, "POST");
  EXPECT_EQ(requests[0].url, "https://stats.corvane.example/trellis.php");
  EXPECT_EQ(requests[0].body, body);
  EXPECT_EQ(requests[0].headers,
            "Content-Type: multipart/form-data; boundary=" + std::string(27, '-') +
                "251332668624907\r\nContent-Length: 5\r\nProxy-Connection: Keep-Alive\r\n"
                "Pragma: no-cache\r\nConnection: close\r\n");
  EXPECT_NE(requests[1].headers.find("Content-Length: 0\r\n"), std::string::npos);
}

TEST_F(StatisticsPostTest, OnlyTheWordsCountAndOnlyA401StopsPosting) {
  const struct {
    const char* answer;
    bool good;
    std::uint32_t enabled;
  } kCases[] = {
      {R"("body": "")", true, 1},
      {R"("reason": "Fine")", false, 1},
      {R"("reason": "Fine", "headers": ["X-Was: 200 OK"])", true, 1},
      {R"("status": 403, "reason": "Forbidden")", false, 1},
      {R"("status": 500, "reason": "Error")", false, 1},
      {R"("redirect": "https://stats.corvane.example/other")", false, 1},
      {R"("reach": "none")", false, 1},
      {R"("delay": "1m")", false, 1},
      {R"("status": 401, "reason": "Unauthorized")", false, 0},
  };
  BootWeb("{}");
  auto& config = CGlobalConfigContainer::GetInstance();
  config.Initialize(false);
  for (const auto& one : kCases) {
    SCOPED_TRACE(one.answer);
    Do(std::string(R"({"do": "web", "host": "stats.corvane.example", )") + one.answer + "}");
    EXPECT_EQ(ProxySend("x", false), one.good);
    EXPECT_EQ(EnablePost(), one.enabled);
    EXPECT_EQ(config.m_bEnablePost, one.enabled != 0);
  }
  config.Shutdown(false);
}

// The mode of the command line has not opened the configuration.
TEST_F(StatisticsPostTest, TheStopSignalReachesTheStoreOfAServiceThatRunsBeside) {
  BootWeb(R"({"hosts": [{"host": "stats.corvane.example", "status": 401, "reason": "No"}]})");
  Pc().Registry().SetDword(kHomeKeyPath, u"EnablePost", 1);
  EXPECT_FALSE(ProxySend("x", false));
  EXPECT_EQ(EnablePost(), 0u);
  EXPECT_TRUE(Printed("PROXY RECEIVED ERROR: GOT STOP POST SIGNAL"));
  Pc().Registry().SetDword(kHomeKeyPath, u"EnablePost", 1);
  Pc().Faults().FailAlways("RegSetValueExW", 5);
  EXPECT_FALSE(ProxySend("x", false)) << "a write that fails changes nothing else";
}

TEST_F(StatisticsPostTest, WithAProxyItIsLookedForFirstAndRedirectsAreFollowed) {
  BootWeb(R"({"hosts": [{"host": "stats.corvane.example",
                         "redirect": "https://new.corvane.example/"},
                        {"host": "new.corvane.example"}],
              "proxies": {"proxy": "p:8"}})");
  EXPECT_TRUE(ProxySend("x", true));
  const auto requests = Requests();
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_EQ(requests[0].proxy, "p:8");
  EXPECT_EQ(requests[1].url, "https://new.corvane.example/");
}

TEST_F(StatisticsPostTest, AFileIsReadWholeOrNotAtAll) {
  BootWeb("{}");
  const std::string content = std::string(200'000, 'a') + std::string("\0\r\n\xFF", 4);
  Pc().Files().Write(u"/data/post.txt", content);
  Pc().Files().Write(u"/data/empty.txt", "");
  std::string text = "old";
  EXPECT_TRUE(ReadFileToString(u"/data/post.txt", &text));
  EXPECT_EQ(text, content);
  EXPECT_TRUE(ReadFileToString(u"/data/empty.txt", &text));
  EXPECT_EQ(text, "");
  EXPECT_FALSE(ReadFileToString(u"/data/none.txt", &text));
  Pc().Faults().FailCall("ReadFile", 1, 5);
  EXPECT_FALSE(ReadFileToString(u"/data/post.txt", &text));
}

}  // namespace
}  // namespace corvane::test
