#include "platform/linux/host_options.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "platform/linux/host_error.h"
#include "platform/sim/world/world_loader.h"
#include "platform/sim/world/world_policy.h"
#include "platform/text_file.h"

namespace corvane::platform::linux_host {

namespace {

// Values that are set but empty count as not set.
std::string ValueOf(Environment environment, const char* name) {
  const char* value = environment(name);
  return value ? value : "";
}

std::string DefaultHome(Environment environment) {
  // A relative path counts as none (XDG Base Directory rules).
  const std::string state = ValueOf(environment, "XDG_STATE_HOME");
  if (state.starts_with('/')) return state + "/corvane";
  const std::string user = ValueOf(environment, "HOME");
  if (user.starts_with('/')) return user + "/.local/state/corvane";
  throw HostError("there is no home directory: set CORVANE_HOME to one");
}

std::vector<std::string> Words(const std::string& text) {
  std::vector<std::string> words;
  for (std::size_t at = 0; (at = text.find_first_not_of(' ', at)) != text.npos;) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    words.push_back(text.substr(at, end - at));
    at = end;
  }
  return words;
}

double ParseSpeed(std::string_view text) {
  double speed = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), speed);
  const bool valid = error == std::errc() && end == text.data() + text.size() &&
                     speed >= kSlowest && speed <= kFastest;
  if (!valid) {
    throw HostError("CORVANE_SPEED needs a number from 0.01 to 1000, not \"" + std::string(text) +
                    "\"");
  }
  return speed;
}

}  // namespace

const char* ProcessEnvironment(const char* name) { return std::getenv(name); }

std::string OwnProgram() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

HostOptions ReadHostOptions(Environment environment) {
  HostOptions options{.home = ValueOf(environment, "CORVANE_HOME"),
                      .worldFile = ValueOf(environment, "CORVANE_WORLD")};
  if (options.home.empty()) options.home = DefaultHome(environment);
  const std::string speed = ValueOf(environment, "CORVANE_SPEED");
  if (!speed.empty()) options.speed = ParseSpeed(speed);
  options.profile = ValueOf(environment, "CORVANE_PROFILE");
  if (!options.profile.empty() && !sim::IsPolicyProfile(options.profile)) {
    throw HostError("CORVANE_PROFILE needs classic or balanced, not \"" + options.profile + "\"");
  }
  options.connectTo = Words(ValueOf(environment, "CORVANE_CONNECT_TO"));
  return options;
}

sim::World LoadWorld(const HostOptions& options) {
  try {
    sim::World world = options.worldFile.empty()
                           ? sim::BuiltInWorld()
                           : sim::ParseWorld(ReadTextFile(options.worldFile), options.worldFile);
    if (!options.profile.empty()) sim::SetPolicyProfile(&world, options.profile);
    return world;
  } catch (const std::exception& error) {
    throw HostError(std::string("CORVANE_WORLD: ") + error.what());
  }
}

}  // namespace corvane::platform::linux_host
