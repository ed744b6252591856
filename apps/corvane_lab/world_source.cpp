#include "corvane_lab/world_source.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "corvane_lab/recorded_world.h"
#include "corvane_lab/recording_files.h"
#include "platform/sim/world/world_loader.h"
#include "platform/sim/world/world_policy.h"
#include "platform/text_file.h"
#include "store/address_text.h"
#include "store/value_names.h"

namespace corvane::lab {

using platform::sim::Action;
using platform::sim::ActionKind;
using platform::sim::World;

namespace {

// By then the first start has given every setting its default.
constexpr std::uint64_t kModeAtMs = 8000;

World LoadWorldFile(const std::string& file) {
  return platform::sim::ParseWorld(platform::ReadTextFile(file), file);
}

}  // namespace

AirReport::~AirReport() {
  const std::size_t odd = m_Count.wild + m_Count.noFrequency + m_Count.noBssid;
  if (odd == 0) return;
  std::fflush(stdout);
  std::fprintf(
      stderr,
      "%s: of %zu beacons, %zu with a reading out of range (counts as unknown), %zu without "
      "a frequency and %zu without a BSSID (left out)\n",
      m_File.c_str(), m_Count.lines, m_Count.wild, m_Count.noFrequency, m_Count.noBssid);
}

World AirReport::Load(const std::string& file) {
  m_File = file;
  return platform::sim::WorldFromAir(platform::ReadTextFile(file), file, &m_Count);
}

World WorldOf(const Arguments& arguments, AirReport* airReport) {
  const auto air = arguments.Value("--air"), recording = arguments.Value("--recording");
  const std::size_t named = arguments.Rest().size() + (air ? 1 : 0) + (recording ? 1 : 0);
  if (named != 1) throw UsageError("one world, or --air or --recording and a file");
  World world = air         ? airReport->Load(*air)
                : recording ? WorldOfRecording(LoadRecording(*recording))
                            : LoadWorldFile(arguments.Rest()[0]);
  if (const auto mode = arguments.Value("--mode")) SetMode(&world, *mode);
  if (const auto profile = arguments.Value("--profile")) SetProfile(&world, *profile);
  return world;
}

void SetProfile(World* world, const std::string& profile) {
  if (!platform::sim::IsPolicyProfile(profile))
    throw UsageError("a profile is classic or balanced, not \"" + profile + "\"");
  platform::sim::SetPolicyProfile(world, profile);
}

void SetMode(World* world, const std::string& mode) {
  constexpr std::array kModes{"autoswitch", "event", "popup"};  // by PassiveSuggestMode
  const auto found = std::ranges::find(kModes, mode);
  if (found == kModes.end())
    throw UsageError("a mode is autoswitch, event or popup, not \"" + mode + "\"");
  std::erase_if(world->timeline, [](const Action& action) {
    return action.kind == ActionKind::kRegistry &&
           action.registry.name == value::kPassiveSuggestMode;
  });
  const auto at = std::ranges::find_if(
      world->timeline, [](const Action& action) { return action.atMs > kModeAtMs; });
  std::vector<Action> actions;
  for (const auto& adapter : world->adapters) {
    Action action;
    action.atMs = kModeAtMs;
    action.kind = ActionKind::kRegistry;
    action.registry.key = std::u16string(platform::sim::kHomeKey) + u"\\" + GuidText(adapter.guid);
    action.registry.name = value::kPassiveSuggestMode;
    action.registry.number = static_cast<std::uint64_t>(found - kModes.begin());
    action.line = "mode " + mode;
    actions.push_back(std::move(action));
  }
  world->timeline.insert(at, actions.begin(), actions.end());
}

}  // namespace corvane::lab
