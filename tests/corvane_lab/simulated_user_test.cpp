#include "corvane_lab/simulated_user.h"

#include "policy/policy_fixture.h"

namespace corvane::lab {
namespace {

using SimulatedUserTest = test::PolicyTest;

// The dialog stays on the screen when what it asks about is withdrawn, and so may the answer.
TEST_F(SimulatedUserTest, AnswersADialogWhoseSuggestionIsGone) {
  int answered = 0;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    SimulatedUser user(seed);
    config->m_accept_suggestion = false;
    config->SetString(value::kSuggestedNetworkBSSID, u"02-00-00-00-00-02");
    user.Look(1000);
    config->SetString(value::kSuggestedNetworkBSSID, u"");
    for (std::uint64_t ms = 2000; ms < 70'000; ms += 1000) user.Look(ms);
    if (config->m_accept_suggestion) ++answered;
  }
  EXPECT_GT(answered, 0);
  EXPECT_LT(answered, 20) << "half of the dialogs are closed with a no";
}

}  // namespace
}  // namespace corvane::lab
