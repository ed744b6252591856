// Rounds tell what they decided, and why each access point was passed over.

#include <algorithm>

#include "corvane_lab/round_record.h"
#include "scenario/service_fixture.h"

namespace corvane::test {

class ExplanationScenario : public ServiceTest {
 protected:
  void StartWatched(const WorldBuilder& world) {
    Start(world);
    m_Recorder.emplace(
        Pc(), world.Build(), true,
        [](const lab::RoundRecord& round, void* self) {
          static_cast<ExplanationScenario*>(self)->rounds.push_back(round);
        },
        this);
  }
  void TearDown() override {
    ServiceTest::TearDown();
    m_Recorder.reset();
  }
  // The first round from `fromMs` on in which this was decided; null when there is none.
  const lab::RoundRecord* Find(RoundStep step, std::uint64_t fromMs = 0) const {
    const auto found = std::ranges::find_if(rounds, [&](const lab::RoundRecord& round) {
      return round.beganMs >= fromMs &&
             std::ranges::any_of(round.steps,
                                 [&](const lab::StepRecord& one) { return one.step == step; });
    });
    return found == rounds.end() ? nullptr : &*found;
  }
  static std::optional<CandidateStanding> StandingOf(const lab::RoundRecord& round,
                                                     int accessPoint) {
    for (const auto* list : {&round.candidates, &round.others}) {
      const auto found = std::ranges::find(*list, ApText(accessPoint), &lab::EntryRecord::bssid);
      if (found != list->end()) return found->standing;
    }
    return std::nullopt;
  }

  std::vector<lab::RoundRecord> rounds;

 private:
  std::optional<lab::RoundRecorder> m_Recorder;
};

TEST_F(ExplanationScenario, FollowsACandidateFromItsFirstRoundToTheSwitch) {
  StartWatched(OfficeWorld(-80.0)
                   .Ap(OfficeBeacon(149), 2, -95.0)
                   .Signal({{0, -95.0}, {60'000, -95.0}, {60'001, -45.0}})
                   .Ap(Beacon(u8"Cafe").Channel(6).Ht20(1), 3, -50.0)
                   .Ap(Beacon(u8"Next door").Channel(11).Ht20(1).Rsn({AKM_PSK}), 4, -50.0)
                   .Ap(OfficeBeacon(52), 5, -90.0)
                   .Traffic(60'000, 90'000, 20.0)
                   .At(150'000, R"({"do": "radio", "adapter": 0, "on": false})"));
  RunUntil(170'000);
  ASSERT_TRUE(Find(RoundStep::kLinkBusy, 60'000));
  const lab::RoundRecord* ripening = Find(RoundStep::kRipening, 60'000);
  ASSERT_TRUE(ripening);
  EXPECT_EQ(StandingOf(*ripening, 1), CandidateStanding::kNotBetter);
  EXPECT_EQ(StandingOf(*ripening, 2), CandidateStanding::kRipening);
  EXPECT_EQ(StandingOf(*ripening, 3), CandidateStanding::kOpen);
  EXPECT_EQ(StandingOf(*ripening, 4), CandidateStanding::kUnprofiled);
  EXPECT_EQ(ripening->candidates.front().counter, 1);
  EXPECT_NE(ripening->candidates.front().terms.find("SUBTOTAL("), std::string::npos);

  const lab::RoundRecord* move = Find(RoundStep::kSwitch);
  ASSERT_TRUE(move);
  EXPECT_EQ(StandingOf(*move, 2), CandidateStanding::kReady);
  EXPECT_EQ(move->bssid, ApText(1));
  const std::string text = lab::OutcomeText(*move);
  EXPECT_TRUE(
      text.starts_with("Office " + ApText(2) + ": the adapter moves to it, the connect succeeded"))
      << text;
  EXPECT_NE(lab::RoundJson(*move, lab::RoundDetail::kJudged)
                .find(R"("bssid":"02-50-00-00-00-02","score":)"),
            std::string::npos);
  EXPECT_TRUE(Find(RoundStep::kOnBest, move->endedMs));
  EXPECT_TRUE(Find(RoundStep::kRadioOff, 150'000)) << "a round that never reached the policy";
}

}  // namespace corvane::test
