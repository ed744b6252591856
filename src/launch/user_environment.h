#pragma once
// What the program knows of the logged-on user's environment.

#include <optional>
#include <string>

#include "foundation/text.h"

namespace corvane {

struct UserEnvironment {
  std::string tempPath;
  bool proxyPresent = false;
  WString proxyConfig;  // only with a proxy
};

// The child's one line of JSON; nothing when it can't be read. Pure.
std::optional<UserEnvironment> ParseUserEnvironment(const std::string& json);

// Whether a web proxy is there, and its configuration.
using ProxyProbe = bool (*)(WString* config);

// Asks anew: as a service by a child in the user's session, as an application by itself and the
// probe. Nothing when that fails, and earlier answers then stay in force.
std::optional<UserEnvironment> RefreshUserEnvironment(bool runningAsService, ProxyProbe probe);

}  // namespace corvane
