#pragma once
#include <string>

#include "platform/sim/world/world.h"

namespace corvane::platform::sim {

// The profile's XML in the form of the WLAN service (WLAN_profile v1), from its other members.
std::u16string ProfileXml(const Profile& profile);

// Fills name, SSID, connection mode, nonBroadcast and security from a profile's XML. False when it
// is not one: no name, no SSID, or a tag without its end.
bool ReadProfileXml(const std::u16string& xml, Profile* profile);

// Whether a connect with this profile passes the access point's security: same SSID, both secured
// or both open, and the same key.
bool Admits(const AccessPoint& accessPoint, const Profile& profile);

}  // namespace corvane::platform::sim
