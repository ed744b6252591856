// The clients of a world, as its file tells them.

#include <gtest/gtest.h>

#include "platform/sim/world/world_loader.h"

namespace corvane::test {
namespace {

using namespace platform::sim;

std::string WithTimeline(const std::string& action) {
  return R"({"timeline": [{"at": 0, "do": "client", )" + action + R"(}], )" +
         R"("clients": [{"name": "tray"}]})";
}

TEST(WorldClients, ReadsWhoTheyAreAndWhatTheyDo) {
  const World world = ParseWorld(
      R"({"timeline": [
            {"at": "1s", "do": "client", "client": "suite", "act": "send", "every": "2m",
             "request": {"cmd": "AppLog", "n": [1, 2.5]}},
            {"at": "2s", "do": "client", "client": "tray", "act": "send", "request": {"art": ""}},
            {"at": "3s", "do": "client", "client": "tray", "act": "send", "text": "{\u00fc"},
            {"at": "4s", "do": "client", "client": "tray", "act": "stall"}],
          "clients": [{"name": "suite", "program": "PalisadeOptimizer.exe"}, {"name": "tray"}]})",
      "w.json");
  ASSERT_EQ(world.clients.size(), 2u);
  EXPECT_EQ(world.clients[0].program, u"PalisadeOptimizer.exe");
  EXPECT_EQ(world.clients[1].program, u"Corvane_ConfigApp.exe");
  ASSERT_EQ(world.timeline.size(), 4u);
  const ClientAction& asks = world.timeline[0].client;
  EXPECT_EQ(asks.client, "suite");
  EXPECT_EQ(asks.act, ClientAct::kSend);
  EXPECT_EQ(asks.message, R"({"cmd":"AppLog","n":[1,2.5]})");
  EXPECT_TRUE(asks.withToken);
  EXPECT_EQ(asks.everyMs, 120'000u);
  EXPECT_FALSE(world.timeline[1].client.withToken) << "it has one, good or bad";
  EXPECT_FALSE(world.timeline[2].client.withToken);
  EXPECT_EQ(world.timeline[2].client.message, "{\xC3\xBC");
  EXPECT_EQ(world.timeline[3].client.act, ClientAct::kStall);
  EXPECT_EQ(world.timeline[3].client.everyMs, 0u);
}

TEST(WorldClients, NamesThePlaceOfWhatItRefuses) {
  const struct {
    std::string world;
    const char* error;
  } kCases[] = {
      {R"({"clients": [{}]})", "w: /clients/0: \"name\" is missing"},
      {R"({"clients": [{"name": "a"}, {"name": "a"}]})",
       "w: /clients/1/name: another client has it"},
      {R"({"clients": [{"name": "a,b"}]})",
       "w: /clients/0/name: wants 1 to 64 bytes without a comma"},
      {R"({"clients": [{"name": ")" + std::string(65, 'a') + R"("}]})",
       "w: /clients/0/name: wants 1 to 64 bytes without a comma"},
      {R"({"clients": [{"name": "a", "program": ""}]})", "w: /clients/0/program: names no program"},
      {R"({"clients": [{"name": "a", "pid": 4}]})",
       "w: /clients/0/pid: is not a member that belongs here"},
      {WithTimeline(R"("client": "suite", "act": "connect")"),
       "w: /timeline/0/client: no client has this name"},
      {WithTimeline(R"("client": "tray")"), "w: /timeline/0: \"act\" is missing"},
      {WithTimeline(R"("client": "tray", "act": "wave")"),
       "w: /timeline/0/act: \"wave\" is not one of connect, send, subscribe, stall, read, vanish"},
      {WithTimeline(R"("client": "tray", "act": "send")"),
       "w: /timeline/0: wants either \"request\" or \"text\""},
      {WithTimeline(R"("client": "tray", "act": "send", "request": {}, "text": "")"),
       "w: /timeline/0: wants either \"request\" or \"text\""},
      {WithTimeline(R"("client": "tray", "act": "send", "request": "{}")"),
       "w: /timeline/0/request: wants an object"},
      {WithTimeline(R"("client": "tray", "act": "vanish", "text": "bye")"),
       "w: /timeline/0/text: is not a member that belongs here"},
      {WithTimeline(R"("client": "tray", "act": "connect", "every": "99ms")"),
       "w: /timeline/0/every: is shorter than 100 ms"},
  };
  for (const auto& one : kCases) {
    try {
      ParseWorld(one.world, "w");
      ADD_FAILURE() << "accepted: " << one.world;
    } catch (const WorldError& error) {
      EXPECT_STREQ(error.what(), one.error);
    }
  }
}

}  // namespace
}  // namespace corvane::test
