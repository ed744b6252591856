#include <gmock/gmock.h>

#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "corvane_lab/compare_table.h"
#include "corvane_lab/world_result.h"
#include "support/source_dir.h"

namespace corvane::lab {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string Compare(std::vector<std::string> words) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(CompareCommand(words), 0);
  return testing::internal::GetCapturedStdout();
}

std::string WorldFile(const std::string& name) {
  return test::SourceDir() + "/worlds/" + name + ".json";
}

// Each world is run by itself, so their number at once is no part of the result.
TEST(CompareCommandTest, GivesTheSameInOneProcessAndInSeveral) {
  const std::vector<std::string> words{"--made", "0-2", "--kinds", "flat,pair",
                                       "--for",  "4m",  "--json",  "--why"};
  std::vector<std::string> one = words, three = words;
  one.insert(one.end(), {"-j", "1"});
  three.insert(three.end(), {"-j", "3"});
  const std::string text = Compare(one);
  EXPECT_EQ(Compare(three), text);
  EXPECT_EQ(std::ranges::count(text, '\n'), 5) << "four worlds and their sum";
  EXPECT_THAT(text, HasSubstr(R"("world":"flat-0")"));
  EXPECT_THAT(text, Not(HasSubstr(R"("trouble")")));
}

// What the story of the walk is about: the service goes along, and the system alone does not.
TEST(CompareCommandTest, TheServiceIsBetterThanNoneWhereSomebodyWalks) {
  const std::string text = Compare({WorldFile("office-walk"), "--json", "-j", "1"});
  const WorldResult all = WorldResultOf(text.substr(text.find('\n') + 1));
  const auto find = [&](const std::string& name) {
    return *std::ranges::find(all.policies, name, &PolicyResult::name);
  };
  EXPECT_NEAR(find("oracle").share[0], 100.0, 0.001);
  EXPECT_GT(find("classic").share[0], find("service off").share[0] + 20.0);
  EXPECT_EQ(find("classic").movesInPhases, 0);
  EXPECT_EQ(find("service off").moves, 0);
  EXPECT_GT(find("strongest").scansInPhases, 0);
}

TEST(CompareCommandTest, ASettingOfAProfileReachesTheService) {
  const std::string text =
      Compare({WorldFile("office-walk"), "--profiles", "classic,classic:ScanInterval=300",
               "--no-peers", "--why", "--worst", "1", "--by-kind"});
  EXPECT_THAT(text, HasSubstr("classic:ScanInterval=300"));
  EXPECT_THAT(text, HasSubstr("worst worlds of classic\n  office-walk"));
  EXPECT_THAT(text, HasSubstr("what classic misses: "));
  EXPECT_THAT(text, Not(HasSubstr("wpa_supplicant")));
  const WorldResult result = WorldResultOf([] {
    const std::string json = Compare({WorldFile("office-walk"), "--profiles",
                                      "classic,classic:ScanInterval=300", "--no-peers", "--json"});
    return json.substr(json.find('\n') + 1);
  }());
  ASSERT_EQ(result.policies.size(), 3u);
  EXPECT_GT(result.policies[1].scans, result.policies[2].scans);
}

TEST(CompareCommandTest, TellsWhatIsWrong) {
  EXPECT_THROW(CompareCommand({}), UsageError);
  EXPECT_THROW(CompareCommand({"--made", "0-2", "--kinds", "castle"}), UsageError);
  EXPECT_THROW(CompareCommand({WorldFile("home"), "--profiles", "eager"}), UsageError);
  EXPECT_THROW(CompareCommand({WorldFile("home"), "--profiles", "classic:ScanInterval"}),
               UsageError);
  EXPECT_THROW(CompareCommand({WorldFile("none")}), std::runtime_error);
}

WorldResult Result(const std::string& world, double share, std::map<std::string, Loss> why) {
  WorldResult result;
  result.world = world;
  result.kind = "flat";
  result.seconds = 3600;
  result.phases = 3;
  result.policies.resize(2);
  result.policies[0].name = "oracle";
  result.policies[0].share = {100, 100, 100};
  PolicyResult& own = result.policies[1];
  own.name = "classic";
  own.share = {share, 99.5, 98.25};
  own.moves = 3;
  own.scans = 7;
  own.disconnectedSeconds = 4.75;
  own.why = std::move(why);
  own.trouble = world == "flat-2" ? "goes to an open access point" : "";
  return result;
}

TEST(CompareTableTest, SumsUpAndFindsTheWorst) {
  const std::vector<WorldResult> results{
      Result("flat-0", 90, {{"stale", {8, 80}}, {"stale, unheard", {2, 5}}}),
      Result("flat-2", 70, {{"stale", {30, 300}}})};
  const auto sums = SumUp(results);
  ASSERT_EQ(sums.size(), 2u);
  EXPECT_NEAR(sums[1].sum.share[0], 80.0, 1e-9);
  EXPECT_EQ(sums[1].worstWorld, "flat-2");
  EXPECT_NEAR(sums[1].worstRate, 70.0, 1e-9);
  EXPECT_EQ(sums[1].sum.moves, 6);
  EXPECT_NEAR(sums[1].movesPerHour, 3.0, 1e-9);
  EXPECT_THAT(WhyTable(results, "classic"),
              HasSubstr("  19.0      380       2  stale (most in flat-2: 30.0)"));
  EXPECT_THAT(WhyTable(results, "classic"), HasSubstr("\nby decision: stale 20.0\n"));
  EXPECT_THAT(WorstTable(results, "classic", 1), HasSubstr("30.0 by \"stale\""));
  EXPECT_THAT(WorstTable(results, "classic", 1), Not(HasSubstr("flat-0")));
  EXPECT_EQ(TroubleText(results), "flat-2, classic: goes to an open access point\n");
  const WorldResult back = WorldResultOf(ToJson(results[1]));
  EXPECT_EQ(ToJson(back), ToJson(results[1]));
  EXPECT_EQ(back.policies[1].disconnectedSeconds, 4.75);
  EXPECT_THROW(WorldResultOf("{\"world\":"), std::runtime_error);
}

}  // namespace
}  // namespace corvane::lab
