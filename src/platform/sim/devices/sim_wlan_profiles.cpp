#include "platform/sim/devices/sim_wlan_profiles.h"

#include <algorithm>

#include "platform/sim/kernel/sim_text.h"

namespace corvane::platform::sim {

SimWlanProfiles::SimWlanProfiles(const World& world, int adapter) {
  for (const Profile& profile : world.profiles) {
    if (profile.adapter == adapter || profile.adapter == kAllAdapters)
      m_Profiles.push_back(profile);
  }
}

const Profile* SimWlanProfiles::Find(std::u16string_view name) const {
  const std::u16string folded = FoldCase(name);
  const auto found = std::ranges::find_if(
      m_Profiles, [&](const Profile& profile) { return FoldCase(profile.name) == folded; });
  return found == m_Profiles.end() ? nullptr : &*found;
}

const Profile* SimWlanProfiles::FindForSsid(std::string_view ssid) const {
  const auto found = std::ranges::find(m_Profiles, ssid, &Profile::ssid);
  return found == m_Profiles.end() ? nullptr : &*found;
}

void SimWlanProfiles::Put(Profile profile) {
  if (const Profile* old = Find(profile.name)) {
    m_Profiles[static_cast<std::size_t>(old - m_Profiles.data())] = std::move(profile);
  } else {
    m_Profiles.insert(m_Profiles.begin(), std::move(profile));
  }
}

bool SimWlanProfiles::Delete(std::u16string_view name) {
  const Profile* found = Find(name);
  if (!found) return false;
  m_Profiles.erase(m_Profiles.begin() + (found - m_Profiles.data()));
  return true;
}

}  // namespace corvane::platform::sim
