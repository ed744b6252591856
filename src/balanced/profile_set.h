#pragma once
// The profiles by their kind.

#include <memory>

#include "rules/policy_profile.h"
#include "score/subtotal_rule.h"

namespace corvane {

SubtotalRule SubtotalRuleOf(PolicyProfileKind kind);

// What an adapter asks, with what is remembered of it. Both stay while the kind changes.
class ProfileSet {
 public:
  ProfileSet();
  ~ProfileSet();
  PolicyProfile& Of(PolicyProfileKind kind);

 private:
  const std::unique_ptr<PolicyProfile> m_Balanced;
};

}  // namespace corvane
