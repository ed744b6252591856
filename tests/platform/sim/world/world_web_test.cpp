// The web of a world, as its file tells it.

#include <gtest/gtest.h>

#include "platform/sim/world/world_loader.h"

namespace corvane::test {
namespace {

using namespace platform::sim;

TEST(WorldWeb, ReadsEachMember) {
  const World world = ParseWorld(
      R"({"web": {"hosts": [
            {"host": "a", "path": "/x?y", "status": 404, "reason": "No", "headers": ["A: b"],
             "body": "text", "delay": "2s", "reach": "proxy", "certificate": "unknown"},
            {"host": "b", "redirect": "https://a/"}],
          "proxies": {"known": false, "proxy": "p:1", "bypass": "b", "configUrl": "c",
                      "detectedUrl": "d", "detectedProxy": "e"}},
          "domainControllers": [{"domain": "corp", "name": "\\\\DC"}]})",
      "w.json");
  ASSERT_EQ(world.web.answers.size(), 2u);
  const WebAnswer& a = world.web.answers[0];
  EXPECT_EQ(a.path, "/x?y");
  EXPECT_EQ(a.status, 404u);
  EXPECT_EQ(a.headers, std::vector<std::string>{"A: b"});
  EXPECT_EQ(a.delayMs, 2000u);
  EXPECT_EQ(a.reach, WebReach::kProxy);
  EXPECT_EQ(a.certificate, WebCertificate::kUnknown);
  EXPECT_EQ(world.web.answers[1].status, 302u) << "a redirect is one";
  EXPECT_FALSE(world.web.proxies.known);
  EXPECT_EQ(world.web.proxies.detectedProxy, u"e");
  EXPECT_EQ(world.domainControllers.at(0).name, u"\\\\DC");
}

TEST(WorldWeb, RefusesWhatNoHostCanAnswer) {
  const struct {
    const char* host;
    const char* place;
  } kCases[] = {
      {R"({"path": "/x"})", "\"host\" is missing"},
      {R"({"host": ""})", "/web/hosts/0/host"},
      {R"({"host": "a", "path": "x"})", "/web/hosts/0/path"},
      {R"({"host": "a", "status": 99})", "/web/hosts/0/status"},
      {R"({"host": "a", "headers": ["A: b\r\nC: d"]})", "/web/hosts/0/headers/0"},
      {R"({"host": "a", "headers": ["no colon"]})", "/web/hosts/0/headers/0"},
      {R"({"host": "a", "redirect": "/there"})", "/web/hosts/0/redirect"},
      {R"({"host": "a", "reach": "sometimes"})", "/web/hosts/0/reach"},
      {R"({"host": "a", "certificate": "old"})", "/web/hosts/0/certificate"},
      {R"({"host": "a", "colour": 1})", "colour"},
  };
  for (const auto& one : kCases) {
    try {
      ParseWorld(std::string(R"({"web": {"hosts": [)") + one.host + "]}}", "w.json");
      ADD_FAILURE() << one.host;
    } catch (const WorldError& error) {
      EXPECT_NE(std::string(error.what()).find(one.place), std::string::npos) << error.what();
    }
  }
}

}  // namespace
}  // namespace corvane::test
