// The page of a day: what it is made of, and that it stands alone.

#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <map>

#include "corvane_lab/commands.h"
#include "corvane_lab/day_record.h"
#include "corvane_lab/report_page.h"
#include "corvane_lab/service_run.h"
#include "platform/sim/world/world_loader.h"
#include "platform/text_file.h"
#include "support/source_dir.h"

namespace corvane::lab {
namespace {

using testing::HasSubstr;
using testing::Not;

DaySeries SeriesOf(std::uint64_t rounds, std::uint64_t stepMs, auto&& point) {
  DaySeries series;
  for (std::uint64_t i = 0; i < rounds; ++i) {
    DaySeries::Point one = point(i);
    one.ms = i * stepMs;
    series.Add(one);
  }
  return series;
}

TEST(DaySeries, LeavesOutWhatHardlyChanges) {
  const auto flat = SeriesOf(1000, 5000, [](std::uint64_t i) {
    return DaySeries::Point{.score = 40, .quality = 60 + static_cast<int>(i % 3)};
  });
  EXPECT_EQ(flat.Points().size(), 1u);
  const auto counted = SeriesOf(6, 5000, [](std::uint64_t i) {
    return DaySeries::Point{.score = 40, .quality = 60, .counter = static_cast<int>(i)};
  });
  EXPECT_EQ(counted.Points().size(), 6u);
  // A gap where it was not heard, and the same again behind it.
  const auto gap = SeriesOf(9, 5000, [](std::uint64_t i) {
    return i / 3 == 1 ? DaySeries::Point{} : DaySeries::Point{.score = 40, .quality = 60};
  });
  ASSERT_EQ(gap.Points().size(), 3u);
  EXPECT_EQ(gap.Points()[1].ms, 15'000u);
  EXPECT_EQ(gap.Points()[1].quality, DaySeries::kNone);
}

TEST(DaySeries, StaysShortHoweverLongTheDay) {
  constexpr std::uint64_t kRounds = 500'000;  // of five seconds: a month
  const auto restless = SeriesOf(kRounds, 5000, [](std::uint64_t i) {
    return DaySeries::Point{.score = static_cast<int>(i * 37 % 90),
                            .quality = static_cast<int>(i * 53 % 100)};
  });
  EXPECT_LE(restless.Points().size(), DaySeries::kMostPoints);
  EXPECT_GE(restless.Points().size(), DaySeries::kMostPoints / 8);
  EXPECT_GT(restless.Points().back().ms, kRounds * 5000 * 9 / 10) << "the end is there, too";
  EXPECT_TRUE(std::ranges::is_sorted(restless.Points(), {}, &DaySeries::Point::ms));
  const auto flickers = SeriesOf(kRounds, 5000, [](std::uint64_t i) {
    return i % 2 ? DaySeries::Point{} : DaySeries::Point{.score = 40, .quality = 60};
  });
  EXPECT_LE(flickers.Points().size(), DaySeries::kMostPoints);
}

// The service over a world for 15 minutes, recorded; and its rounds as `explain` has them.
class DayRecordTest : public testing::Test {
 protected:
  DayRecordTest()
      : m_World(platform::sim::ParseWorld(
            platform::ReadTextFile(test::SourceDir() + "/worlds/office-walk.json"), "walk")),
        m_Day(m_World) {
    platform::sim::PcOptions options;
    options.observer = &m_Day;
    platform::sim::SimulatedPc pc(m_World, options);
    m_Day.Attach(pc);
    {
      RoundRecorder recorder(
          pc, m_World, false,
          [](const RoundRecord& round, void* self) {
            static_cast<DayRecordTest*>(self)->m_Rounds.push_back(round);
          },
          this);
      ServiceRun service(pc);
      service.Start();
      for (int second = 0; second < 900; ++second) {
        pc.RunFor(std::chrono::seconds(1));
        m_Day.Sample();
      }
      EXPECT_TRUE(service.Stop());
      m_Day.PrintSummary();
    }
    m_Day.Detach();
  }

  const DayRecord::Decision& DecisionAt(std::uint64_t ms) const {
    const auto& all = m_Day.Day(0).decisions;
    const auto next = std::ranges::upper_bound(all, ms, {}, &DayRecord::Decision::fromMs);
    return *std::prev(next);
  }

  platform::sim::World m_World;
  DayRecord m_Day;
  std::vector<RoundRecord> m_Rounds;
};

TEST_F(DayRecordTest, HasTheDecisionsAndWorthsOfTheRounds) {
  ASSERT_GT(m_Rounds.size(), 50u);
  std::uint64_t told = 0;
  for (const RoundRecord& round : m_Rounds) {
    if (round.steps.empty()) continue;
    ++told;
    EXPECT_EQ(m_Day.Text(DecisionAt(round.beganMs).text), OutcomeText(round)) << round.beganMs;
  }
  std::uint64_t counted = 0;
  for (const auto& decision : m_Day.Day(0).decisions) counted += decision.rounds;
  EXPECT_EQ(counted, told);

  std::map<std::string, const DaySeries*> series;
  for (const auto& [number, one] : m_Day.Day(0).series) series[m_Day.BssidOf(number)] = &one;
  std::size_t looked = 0;
  for (const RoundRecord& round : m_Rounds) {
    for (const auto* list : {&round.candidates, &round.others}) {
      for (const EntryRecord& entry : *list) {
        if (round.connected && entry.bssid == round.bssid) continue;
        const auto& points = series.at(entry.bssid)->Points();
        const auto point =
            *std::prev(std::ranges::upper_bound(points, round.beganMs, {}, &DaySeries::Point::ms));
        EXPECT_EQ(point.score, entry.score) << entry.bssid << " at " << round.beganMs;
        EXPECT_EQ(point.counter, entry.counter);
        EXPECT_NEAR(point.quality, static_cast<int>(entry.quality), 2);
        EXPECT_EQ(m_Day.Text(point.reason), ReasonText(round, entry));
        ++looked;
      }
    }
  }
  EXPECT_GT(looked, 100u);
}

TEST_F(DayRecordTest, FollowsTheLinkToTheMillisecond) {
  const auto& links = m_Day.Day(0).links;
  ASSERT_GE(links.size(), 5u);  // at the start, and twice none and the next one
  EXPECT_EQ(links[0].ms, 0u);
  EXPECT_EQ(m_Day.BssidOf(links[0].accessPoint), "02-50-00-01-01-05");
  EXPECT_EQ(links[1].accessPoint, DayRecord::kNowhere);
  EXPECT_EQ(m_Day.BssidOf(links[2].accessPoint), "02-50-00-01-02-05");
  EXPECT_EQ(m_Day.BssidOf(links[4].accessPoint), "02-50-00-01-03-05");
  EXPECT_EQ(m_Day.Summary().switches, 2u);

  rapidjson::Document json;
  json.Parse(m_Day.Json(1, R"({"policies":[]})").c_str());
  ASSERT_FALSE(json.HasParseError());
  EXPECT_EQ(json["end"].GetInt(), 9000);
  EXPECT_EQ(json["summary"]["switches"].GetInt(), 2);
  EXPECT_TRUE(json["compare"]["policies"].IsArray());
  const auto& steps = json["adapters"][0]["links"]["t"];  // each from the one before
  std::uint64_t at = 0;
  for (rapidjson::SizeType i = 0; i < steps.Size(); ++i) {
    at += steps[i].GetUint64();
    EXPECT_EQ(at, links[i].ms / 100);
  }
}

TEST(ReportPage, TakesNoWordOfTheAirForItsOwn) {
  const std::string evil = R"({"ssid":"</script><!--<b>"})";
  const std::string page = ReportPage("<i>&amp;", evil);
  EXPECT_THAT(page, Not(HasSubstr("</script><!--<b>")));
  EXPECT_THAT(page, HasSubstr(R"(\u003c/script>\u003c!--\u003cb>)"));
  EXPECT_THAT(page, HasSubstr("<title>&lt;i>&amp;amp;</title>"));
}

TEST(ReportPage, AsksForNothingAndCarriesTheLicence) {
  const std::string page = ReportPage("a day", "{}");
  for (const char* const from :
       {"src=", "@import", "url(", "fetch(", "XMLHttpRequest", "href=\"http"})
    EXPECT_THAT(page, Not(HasSubstr(from)));
  EXPECT_THAT(page, HasSubstr("default-src 'none'"));
  EXPECT_THAT(page, HasSubstr("Permission is hereby granted, free of charge"));
  EXPECT_THAT(page, Not(HasSubstr("@SCRIPT@")));
}

TEST(ReportCommand, WantsAFileForThePage) {
  EXPECT_THROW(ReportCommand({"worlds/home.json"}), std::runtime_error);
  EXPECT_THROW(ReportCommand({test::SourceDir() + "/worlds/home.json", "--for", "5s", "-o",
                              test::SourceDir() + "/no/such/folder/page.html"}),
               std::runtime_error);
}

}  // namespace
}  // namespace corvane::lab
