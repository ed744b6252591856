#pragma once
#include "rules/policy_profile.h"

namespace corvane {

// The rules of this folder, each as it stands. Remembers nothing: one for all adapters.
PolicyProfile& ClassicProfile();

}  // namespace corvane
