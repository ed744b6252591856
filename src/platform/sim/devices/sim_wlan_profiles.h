#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "platform/sim/world/world.h"

namespace corvane::platform::sim {

// The WLAN service's profiles of one adapter, in order of preference. Names differ in more than the
// case of ASCII letters. Under the devices' lock.
class SimWlanProfiles {
 public:
  SimWlanProfiles(const World& world, int adapter);

  const std::vector<Profile>& All() const { return m_Profiles; }
  const Profile* Find(std::u16string_view name) const;
  const Profile* FindForSsid(std::string_view ssid) const;  // the first
  // Replaces the one of that name in its place, or becomes the most preferred.
  void Put(Profile profile);
  bool Delete(std::u16string_view name);

 private:
  std::vector<Profile> m_Profiles;
};

}  // namespace corvane::platform::sim
