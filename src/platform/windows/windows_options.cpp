#include "platform/windows/windows_options.h"

#include <exception>

#include "platform/sim/kernel/sim_text.h"
#include "platform/sim/world/world_loader.h"
#include "platform/sim/world/world_policy.h"
#include "platform/text_file.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_error.h"

namespace corvane::platform::windows {

namespace {

constexpr std::size_t kLongestValue = 32'767;  // characters (GetEnvironmentVariableW)

// In UTF-8; a value that is set but empty counts as not set.
std::string ValueOf(const wchar_t* name) {
  std::u16string value(kLongestValue, u'\0');
  value.resize(
      ::GetEnvironmentVariableW(name, Wide(value.data()), static_cast<::DWORD>(value.size())));
  return sim::ToUtf8(value);
}

}  // namespace

WindowsOptions ReadWindowsOptions() {
  WindowsOptions options{.home = ValueOf(L"CORVANE_HOME"),
                         .worldFile = ValueOf(L"CORVANE_WORLD"),
                         .profile = ValueOf(L"CORVANE_PROFILE")};
  if (!ValueOf(L"CORVANE_SPEED").empty()) {
    throw WindowsError("CORVANE_SPEED is not known here: the clock of Windows runs as it does");
  }
  if (!options.profile.empty() && !sim::IsPolicyProfile(options.profile)) {
    throw WindowsError("CORVANE_PROFILE needs classic or balanced, not \"" + options.profile +
                       "\"");
  }
  if (!options.profile.empty() && options.worldFile.empty()) {
    throw WindowsError(
        "CORVANE_PROFILE is for the world that CORVANE_WORLD names; on this PC's adapters the "
        "rules are set by: corvane-client profile " +
        options.profile);
  }
  return options;
}

sim::World LoadWorld(const WindowsOptions& options) {
  try {
    sim::World world = sim::ParseWorld(ReadTextFile(options.worldFile), options.worldFile);
    if (!options.profile.empty()) sim::SetPolicyProfile(&world, options.profile);
    return world;
  } catch (const std::exception& error) {
    throw WindowsError(std::string("CORVANE_WORLD: ") + error.what());
  }
}

}  // namespace corvane::platform::windows
