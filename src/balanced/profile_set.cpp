#include "balanced/profile_set.h"

#include "balanced/balanced_profile.h"
#include "balanced/worth.h"
#include "rules/classic_profile.h"

namespace corvane {

SubtotalRule SubtotalRuleOf(PolicyProfileKind kind) {
  return kind == PolicyProfileKind::kBalanced ? balanced::Subtotal : ClassicSubtotal;
}

ProfileSet::ProfileSet() : m_Balanced(std::make_unique<balanced::BalancedProfile>()) {}
ProfileSet::~ProfileSet() = default;

PolicyProfile& ProfileSet::Of(PolicyProfileKind kind) {
  return kind == PolicyProfileKind::kBalanced ? *m_Balanced : ClassicProfile();
}

}  // namespace corvane
