#include "corvane_lab/decision_audit.h"

#include <gmock/gmock.h>

#include "policy/policy_fixture.h"
#include "policy/round.h"

namespace corvane::lab {
namespace {

using platform::sim::Cause;
using test::ApMac;
using testing::HasSubstr;

class DecisionAuditTest : public test::PolicyTest {
 protected:
  DecisionAuditTest() : PolicyTest(2) {
    platform::sim::World world;
    platform::sim::AccessPoint open, secured;
    open.bssid = ApMac(5);
    secured.bssid = ApMac(2);
    secured.security.auth = platform::DOT11_AUTH_ALGO_RSNA_PSK;
    world.accessPoints = {open, secured};
    world.adapters.resize(2);
    for (std::size_t i = 0; i < 2; ++i) world.adapters[i].guid = test::PolicyWlan::GuidOf(i);
    m_Audit.emplace(
        world,
        [](int, const std::string& fault, void* self) {
          static_cast<DecisionAuditTest*>(self)->m_Fault = fault;
        },
        this);
  }

  // What the audit says of a round of adapter 0 that goes there; empty when it finds nothing.
  std::string Judge(RoundStep step, CWlanBssEntry& target, int landsOn = 0) {
    m_Fault.clear();
    RoundWatches::RoundBegins(0, *adapter);
    const corvane::Round round(*adapter);
    RoundWatches::Candidates(round);
    Global().m_PolicyProfile = m_ProfileMeanwhile;
    RoundWatches::Step(0, step, &target);
    RoundWatches::RoundEnds(0);
    if (landsOn) m_Audit->OnConnected(0, Cause::kProgram, MacTextA(ApMac(landsOn)));
    return m_Fault;
  }

  std::optional<DecisionAudit> m_Audit;
  std::string m_Fault;
  std::uint32_t m_ProfileMeanwhile = 0;  // set while the round runs
};

TEST_F(DecisionAuditTest, AsksByTheRulesOfTheRoundThatMoves) {
  const auto target = Add("Office", 2, 60);
  target->m_candidate_counter = 1;
  EXPECT_THAT(Judge(RoundStep::kSwitch, *target), HasSubstr("unripe"));
  m_ProfileMeanwhile = 1;
  EXPECT_THAT(Judge(RoundStep::kSwitch, *target), HasSubstr("unripe"));
  m_ProfileMeanwhile = 0;
  Global().m_PolicyProfile = 1;
  EXPECT_EQ(Judge(RoundStep::kSwitch, *target), "");
  RoundWatches::Step(0, RoundStep::kSwitch, &*target);
  EXPECT_THAT(m_Fault, HasSubstr("outside of a round"));
}

TEST_F(DecisionAuditTest, FindsEveryMoveThatMustNotBe) {
  const auto good = Add("Office", 2, 60), open = Add("Cafe", 5, 60);
  good->m_candidate_counter = open->m_candidate_counter = 3;
  EXPECT_EQ(Judge(RoundStep::kSwitch, *good, 2), "");
  EXPECT_THAT(Judge(RoundStep::kSwitch, *good, 5), HasSubstr("did not decide"));
  EXPECT_THAT(Judge(RoundStep::kFirstConnect, *open), HasSubstr("open"));
  EXPECT_EQ(Judge(RoundStep::kRequestedConnect, *open, 5), "") << "somebody asked for it";

  good->m_candidate_counter = 2;
  EXPECT_THAT(Judge(RoundStep::kSwitch, *good), HasSubstr("unripe"));
  EXPECT_EQ(Judge(RoundStep::kFirstConnect, *good), "");
  good->m_candidate_counter = 3;
  Global().m_rt_audio = true;
  EXPECT_THAT(Judge(RoundStep::kSwitch, *good), HasSubstr("busy"));
  Global().m_rt_audio = false;

  Connect("Office", 2, 80, 1);
  adapters[1]->ClearConnectedBssid();  // until its next round
  m_Audit->OnConnected(1, Cause::kOutside, MacTextA(ApMac(2)));
  EXPECT_EQ(Judge(RoundStep::kSwitch, *good), "") << "nobody can know of it yet";
  RoundWatches::RoundBegins(1, *adapters[1]);
  RoundWatches::Step(1, RoundStep::kConnected, good.get());
  EXPECT_THAT(Judge(RoundStep::kSwitch, *good), HasSubstr("another adapter"));
  m_Audit->OnGone(1);

  config->SetString(value::kDenylistJson, u"[[\"Office\", \"any\"]]");
  config->m_Denylist.ReloadFromRegistry(*config);
  EXPECT_THAT(Judge(RoundStep::kFirstConnect, *good), HasSubstr("denied"));
}

}  // namespace
}  // namespace corvane::lab
