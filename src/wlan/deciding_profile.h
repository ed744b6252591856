#pragma once
#include "balanced/profile_set.h"
#include "settings/global_config_container.h"

namespace corvane {

// The rules by which an adapter decides: those of the profile that is set at this moment.
class DecidingProfile {
 public:
  PolicyProfile& Now() {
    return m_Profiles.Of(PolicyProfileOf(CGlobalConfigContainer::GetInstance().m_PolicyProfile));
  }

 private:
  ProfileSet m_Profiles;
};

}  // namespace corvane
