#include "record/recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "record/recording_form.h"
#include "record/recording_writer.h"

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;

constexpr MacAddress kNear{2, 0, 0, 0, 0, 1}, kFar{2, 0, 0, 0, 0, 2};

struct Bss {
  MacAddress bssid{};
  std::int32_t rssi = -60;
  std::uint64_t stamp = 1;
  std::string elements;
};

// A list as the platform gives it: the records, then their bytes.
ListFacts ListOf(const std::vector<Bss>& entries, bool scanned = true) {
  ListFacts facts;
  facts.scanned = scanned;
  const std::size_t header = offsetof(platform::WLAN_BSS_LIST, wlanBssEntries);
  facts.entries.resize(header + entries.size() * sizeof(platform::WLAN_BSS_ENTRY));
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const std::size_t at = header + i * sizeof(platform::WLAN_BSS_ENTRY);
    platform::WLAN_BSS_ENTRY bss;
    std::copy(entries[i].bssid.begin(), entries[i].bssid.end(), bss.dot11Bssid);
    bss.dot11Ssid.uSSIDLength = 2;
    bss.dot11Ssid.ucSSID[0] = 0xC3;
    bss.dot11Ssid.ucSSID[1] = 'x';
    bss.lRssi = entries[i].rssi;
    bss.uLinkQuality = static_cast<platform::ULONG>(2 * (entries[i].rssi + 100));
    bss.ullTimestamp = entries[i].stamp;
    bss.ulChCenterFrequency = 5180000;
    bss.ulIeOffset = static_cast<platform::ULONG>(facts.entries.size() - at);
    bss.ulIeSize = static_cast<platform::ULONG>(entries[i].elements.size());
    std::memcpy(facts.entries.data() + at, &bss, sizeof bss);
    facts.entries.insert(facts.entries.end(), entries[i].elements.begin(),
                         entries[i].elements.end());
  }
  const auto total = static_cast<platform::DWORD>(facts.entries.size());
  const auto count = static_cast<platform::DWORD>(entries.size());
  std::memcpy(facts.entries.data(), &total, sizeof total);
  std::memcpy(facts.entries.data() + sizeof total, &count, sizeof count);
  return facts;
}

std::string Element(unsigned char id, const std::string& body) {
  return std::string{static_cast<char>(id), static_cast<char>(body.size())} + body;
}

std::vector<Recording> Read(const std::string& text) {
  const RecordingPart part{"air.jsonl", text};
  return ReadRecording({&part, 1});
}

class RecordingTest : public testing::Test {
 protected:
  void Begin(std::uint64_t tick, bool goesOn = false) {
    text += writer.Begin(tick, tick, "2026-01-05T08:00:00Z", goesOn);
  }
  void Tell(std::uint64_t tick, auto facts) { text += writer.Lines({tick, std::move(facts)}); }
  Recording Run() { return Read(text).back(); }

  RecordingWriter writer;
  std::string text;
};

TEST_F(RecordingTest, EachReadingComesBackWithItsElements) {
  const std::string load1 = Element(11, "12345"), load2 = Element(11, "54321");
  const std::string rates = Element(1, "abc"), cut = "\x2d\x09z";
  Begin(1000);
  Tell(1000, ListOf({{kNear, -50, 1, rates + load1}, {kFar, -80, 1, rates + load1 + cut}}));
  Tell(2000, ListOf({{kNear, -50, 1, rates + load1}, {kFar, -80, 1, rates + load1 + cut}}, false));
  Tell(3000, ListOf({{kNear, -52, 2, rates + load2}}));
  Tell(4000, ListOf({{kNear, -52, 3, load2}, {kFar, -81, 2, rates + load2}}));
  const Recording run = Run();
  ASSERT_EQ(run.accessPoints.size(), 2u);
  EXPECT_EQ(run.accessPoints[1].bssid, kFar);
  EXPECT_EQ(run.accessPoints[1].ssid, "\xC3x");
  EXPECT_EQ(run.accessPoints[1].frequencyKhz, 5180000u);
  ASSERT_EQ(run.readings.size(), 3u) << "the second one says nothing new";
  const auto bytes = [&](std::size_t reading, std::size_t row) {
    return run.elementBytes[run.readings[reading].heard[row].elements];
  };
  EXPECT_EQ(bytes(0, 0), rates + load1);
  EXPECT_EQ(bytes(0, 1), rates + load1 + cut);
  EXPECT_EQ(bytes(1, 0), rates + load2);
  EXPECT_THAT(run.readings[1].gone, ElementsAre(1u));
  EXPECT_EQ(run.readings[1].heard[0].rssi, -52);
  EXPECT_EQ(run.readings[1].heard[0].quality, 96u);
  EXPECT_EQ(bytes(2, 0), load2);
  EXPECT_EQ(bytes(2, 1), rates + load2);
  EXPECT_EQ(run.readings[2].ms, run.beginMs + 3000);
  // Each element is written once.
  std::size_t elements = 0;
  for (std::size_t at = 0; (at = text.find("\"element\"", at)) != text.npos; ++at) ++elements;
  EXPECT_EQ(elements, 4u);
}

TEST_F(RecordingTest, EachFileStandsOnItsOwnAndGoesOn) {
  const std::string rates = Element(1, "abc");
  Begin(5000);
  Tell(5000, ListOf({{kNear, -50, 1, rates}}));
  RoundFacts round;
  round.scores = {{kNear, 70}, {kFar, 40}};
  Tell(5100, round);
  const std::string first = std::exchange(text, {});
  Begin(6000, true);
  Tell(6000, ListOf({{kNear, -50, 1, rates}}));
  round.scores = {{kNear, 71}};
  Tell(6100, round);
  round.scores = {};  // the round did not come to its lists
  Tell(6200, round);

  const RecordingPart parts[] = {{"air.1.jsonl", first}, {"air.jsonl", text}};
  const auto both = ReadRecording(parts);
  ASSERT_EQ(both.size(), 1u);
  EXPECT_EQ(both[0].accessPoints.size(), 1u);
  EXPECT_EQ(both[0].elementBytes.size(), 1u);
  EXPECT_EQ(both[0].readings[1].ms, both[0].beginMs + 1000);
  ASSERT_EQ(both[0].rounds.size(), 3u);
  EXPECT_THAT(both[0].rounds[0].scores, ElementsAre(Pair(kNear, 70), Pair(kFar, 40)));
  EXPECT_THAT(both[0].rounds[1].scores, ElementsAre(Pair(kNear, 71)));
  EXPECT_TRUE(both[0].rounds[1].weighed);
  EXPECT_FALSE(both[0].rounds[2].weighed);
  EXPECT_THAT(both[0].rounds[2].scores, ElementsAre(Pair(kNear, 71)));

  const auto second = Read(text);
  ASSERT_EQ(second.size(), 1u);
  EXPECT_TRUE(second[0].goesOn);
  EXPECT_EQ(second[0].readings.at(0).ms, second[0].beginMs);
}

TEST_F(RecordingTest, NothingSecretIsWrittenOfAnOrder) {
  Begin(0);
  Tell(10,
       OrderFacts{R"({"cmd":"ConnectAP","art":"dG9r","profile":"a2V5","path":"L2g","ssid":"x"})"});
  Tell(20, OrderFacts{"no JSON, art"});
  EXPECT_THAT(text, Not(HasSubstr("dG9r")));
  EXPECT_THAT(text, Not(HasSubstr("a2V5")));
  EXPECT_THAT(text, Not(HasSubstr("L2g")));
  const Recording run = Run();
  ASSERT_EQ(run.orders.size(), 1u);
  EXPECT_EQ(run.orders[0].json, R"({"cmd":"ConnectAP","ssid":"x"})");
}

TEST_F(RecordingTest, ValuesAreToldWhenTheyChange) {
  Begin(0);
  text += writer.Values(10, kHomeValues, {{"A", "1"}, {"B", "\"x\""}});
  text += writer.Values(20, kHomeValues, {{"A", "1"}, {"B", "\"x\""}});
  text += writer.Values(30, kHomeValues, {{"A", "2"}});
  text += writer.Values(30, 0, {{"A", "2"}});
  const Recording run = Run();
  ASSERT_EQ(run.values.size(), 4u);
  EXPECT_EQ(std::get<std::string>(run.values[1].what), "x");
  EXPECT_EQ(std::get<std::uint32_t>(run.values[2].what), 2u);
  EXPECT_EQ(run.values[3].key, 0);
}

TEST(RecordingReader, PassesOverWhatWasCutOffAndNothingElse) {
  const std::string begin =
      "{\"t\":0,\"begin\":{\"form\":1,\"utc\":\"u\",\"up\":0,\"goes_on\":false}}\n";
  EXPECT_EQ(Read(begin + "{\"t\":5,\"mains\":tr")[0].unfinished, 1u);
  const auto runs = Read(begin + "{\"t\":5,\"mains\":true}\n{\"t\":7,\"m\n\n" + begin);
  ASSERT_EQ(runs.size(), 2u);
  EXPECT_EQ(runs[0].unfinished, 1u);
  EXPECT_EQ(runs[0].mains.size(), 1u);

  const struct {
    std::string text, error;
  } cases[] = {
      {"", "there is no recording in it"},
      {"{\"t\":0,\"mains\":true}\n", ":1: a recording starts with \"begin\""},
      {begin + "{\"t\":5,\"mains\":tr\n{\"t\":6,\"mains\":true}\n", ":2: the line is no JSON"},
      {begin + "[]\n", ":2: the line is no object"},
      {begin + "{\"mains\":true}\n", ":2: \"t\" is missing, or no time in ms"},
      {begin + "{\"t\":1,\"weather\":true}\n", ":2: \"weather\" is nothing that is known"},
      {begin + "{\"t\":1,\"element\":[1,\"AQE=\"]}\n", ":2: an element has not the next number"},
      {begin + "{\"t\":1,\"element\":[0,\"AQE*\"]}\n", ":2: an element is not in base64"},
      {begin + "{\"t\":1,\"heard\":[0,true,[[0,-50,90]],[]]}\n",
       ":2: an access point has not been told"},
      {begin + "{\"t\":1,\"ap\":[0,0,\"02-00\",\"\",1,1,1,1,1,[]]}\n", ":2: a text is no BSSID"},
      {begin + "{\"t\":1,\"ap\":[0,0,\"02-00-00-00-00-01\",\"\",1,1,1,1,1,[4]]}\n",
       ":2: an element has not been told"},
      {begin + "{\"t\":1,\"mbps\":[0]}\n", ":2: an array has too few items"},
      {begin + "{\"t\":1,\"link\":[300]}\n", ":2: a number is none, or out of range"},
      {"{\"t\":0,\"begin\":{\"form\":2,\"utc\":\"u\",\"up\":0,\"goes_on\":false}}\n",
       ":1: the recording is of another form than 1"},
  };
  for (const auto& one : cases) {
    try {
      Read(one.text);
      ADD_FAILURE() << one.error;
    } catch (const std::runtime_error& e) {
      EXPECT_THAT(e.what(),
                  HasSubstr("air.jsonl" + (one.error[0] == ':' ? one.error : ": " + one.error)));
    }
  }
}

}  // namespace
}  // namespace corvane
