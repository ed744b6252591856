// A round that moves nothing ends the minute of switches that is over, whatever it decides: a quiet
// minute counts, and parts the active ones.

#include "policy/policy_fixture.h"

namespace corvane::test {
namespace {

class SwitchPeriod;
struct QuietRound {
  const char* name;
  void (*runs)(SwitchPeriod&);
};

class SwitchPeriod : public PolicyTest, public testing::WithParamInterface<QuietRound> {
 public:
  using PolicyTest::Add, PolicyTest::adapter, PolicyTest::Connect, PolicyTest::Facts,
      PolicyTest::Global, PolicyTest::Round, PolicyTest::wlan;
};

TEST_P(SwitchPeriod, CountsAQuietMinuteThatEndsIn) {
  adapter->IncSwitchAttempt();
  RunFor(1min);
  GetParam().runs(*this);
  EXPECT_TRUE(wlan->calls.empty());
  for (int minute = 0; minute < 3; ++minute) {
    RunFor(1min);
    adapter->IncSwitchAttempt();
  }
  EXPECT_EQ(config->m_APScoreThreshold, 3u) << "taken for three active minutes in a row";
  RunFor(1min);
  adapter->IncSwitchAttempt();
  EXPECT_EQ(config->m_APScoreThreshold, 5u) << "these are";
}

void OnTheBest(SwitchPeriod& test) {
  test.Connect("Office", 1);
  test.Add("Office", 1, 50);
  test.Round();
}
void WithABusyLink(SwitchPeriod& test) {
  test.Connect("Office", 1);
  test.Add("Office", 1, 50);
  test.Add("Office", 2, 90);
  test.Global().m_rt_audio = true;
  test.Round();
}
void WithNothingReady(SwitchPeriod& test) {
  test.Connect("Office", 1);
  test.Add("Office", 1, 50);
  test.Add("Office", 2, 90);
  test.Round();
}
void WithAWalkThatFindsNoTarget(SwitchPeriod& test) {
  test.Connect("Office", 1);
  test.Add("Office", 1, 50);
  const auto better = test.Add("Office", 2, 90);
  CGlobalQUAYPolicy::SwitchConnectionToBest(test.adapter.get(), {better}, 50, test.Facts());
}
void WhileDisconnected(SwitchPeriod& test) {
  test.Add("Office", 1, 50);
  test.Round();
}
// The connection goes before the last time that the state is asked for.
void InAnUnclearState(SwitchPeriod& test) {
  test.Connect("Office", 1);
  test.Add("Office", 1, 50);
  test.wlan->stateQueriesBeforeLoss = 7;
  test.Round();
}
INSTANTIATE_TEST_SUITE_P(
    Rounds, SwitchPeriod,
    testing::Values(QuietRound{"OnTheBest", OnTheBest}, QuietRound{"WithABusyLink", WithABusyLink},
                    QuietRound{"WithNothingReady", WithNothingReady},
                    QuietRound{"WithAWalkThatFindsNoTarget", WithAWalkThatFindsNoTarget},
                    QuietRound{"WhileDisconnected", WhileDisconnected},
                    QuietRound{"InAnUnclearState", InAnUnclearState}),
    [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace corvane::test
