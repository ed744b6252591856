#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "corvane_lab/compare_table.h"
#include "corvane_lab/made_world.h"
#include "corvane_lab/recorded_world.h"
#include "corvane_lab/recording_files.h"
#include "corvane_lab/world_result.h"
#include "foundation/text.h"
#include "platform/parallel_parts.h"
#include "platform/sim/world/world_loader.h"
#include "platform/text_file.h"
#include "store/value_names.h"

namespace corvane::lab {

namespace {

using platform::sim::World;

// A world that is to be loaded: from a file, or made.
struct WorldPlan {
  std::string file;
  std::string kind;  // empty for a file
  std::uint64_t seed = 0;
};

struct CommandPlan {
  ComparePlan compare;
  MadeOptions options;       // of files, too, as far as they go
  std::uint64_t mostMs = 0;  // 0: each world's own duration
};

bool IsRecording(const std::string& file) { return file.ends_with(".jsonl"); }

World Load(const WorldPlan& plan, const MadeOptions& options) {
  const bool made = !plan.kind.empty();
  const std::string name = made ? plan.kind + "-" + std::to_string(plan.seed) : plan.file;
  World world = IsRecording(plan.file)
                    ? WorldOfRecording(LoadRecording(plan.file), RecordedOthers::kAsTheyWould)
                    : platform::sim::ParseWorld(made ? MadeWorldText(plan.kind, plan.seed, {})
                                                     : platform::ReadTextFile(plan.file),
                                                name);
  if (world.name.empty()) world.name = name;
  for (auto& adapter : world.adapters) {
    if (options.cold) adapter.connectedTo = {};
    if (options.roamingDriver) adapter.roaming.enabled = true;
  }
  return world;
}

class Comparison final : public platform::PartWork {
 public:
  Comparison(const std::vector<WorldPlan>& worlds, const CommandPlan& plan, bool json)
      : m_Worlds(worlds),
        m_Plan(plan),
        m_bJson(json),
        m_bProgress(platform::ErrorOutputIsTerminal()) {}

  std::string Do(std::size_t piece) override {
    constexpr std::uint64_t kDefaultMs = 30 * 60'000, kSecondMs = 1000;
    const World world = Load(m_Worlds[piece], m_Plan.options);
    std::uint64_t ms = world.durationMs > 0 ? world.durationMs : kDefaultMs;
    if (m_Plan.mostMs > 0) ms = std::min(ms, m_Plan.mostMs);
    if (world.adapters.empty()) throw std::runtime_error(world.name + ": has no adapter");
    return ToJson(CompareOn(world, ms / kSecondMs, m_Plan.compare));
  }

  void Take(std::size_t piece, const std::string& line) override {
    m_Results.push_back(WorldResultOf(line));
    if (m_bProgress) {
      std::fprintf(stderr, "\r\x1b[K%zu of %zu worlds%s", piece + 1, m_Worlds.size(),
                   piece + 1 == m_Worlds.size() ? "\r\x1b[K" : "");
    }
    if (m_bJson) std::printf("%s\n", line.c_str());
    std::fflush(stdout);
  }

  const std::vector<WorldResult>& Results() const { return m_Results; }

 private:
  const std::vector<WorldPlan>& m_Worlds;
  const CommandPlan& m_Plan;
  const bool m_bJson, m_bProgress;
  std::vector<WorldResult> m_Results;
};

std::vector<std::string> Split(const std::string& text, char mark) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(mark, at), text.size());
    parts.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return parts;
}

// "classic", "balanced", or one of them with settings: "classic:ScanInterval=60:LQCThreshold=40".
ServiceProfile ProfileOf(const std::string& text) {
  const std::vector<std::string> parts = Split(text, ':');
  ServiceProfile profile;
  profile.name = text;
  if (parts[0] == "balanced") {
    profile.settings.emplace_back(Narrow(value::kPolicyProfile), 1u);
  } else if (parts[0] != "classic") {
    throw UsageError("a profile is classic or balanced, not \"" + parts[0] + "\"");
  }
  for (std::size_t i = 1; i < parts.size(); ++i) {
    const std::vector<std::string> sides = Split(parts[i], '=');
    if (sides.size() != 2 || sides[0].empty())
      throw UsageError("a setting of a profile is NAME=NUMBER, not \"" + parts[i] + "\"");
    const auto number = Arguments({"--set", sides[1]}, {"--set"}, {}).Number("--set", 0);
    profile.settings.emplace_back(sides[0], static_cast<std::uint32_t>(number));
  }
  return profile;
}

void AddMade(const Arguments& arguments, std::vector<WorldPlan>* worlds) {
  const auto seeds = arguments.Value("--made");
  if (!seeds) return;
  std::uint64_t first = 0, last = 0;
  ParseSeeds(*seeds, &first, &last);
  std::vector<std::string> kinds;
  if (const auto some = arguments.Value("--kinds")) {
    kinds = Split(*some, ',');
    for (const std::string& kind : kinds) CheckKind(kind);
  } else {
    for (const MadeKind& kind : MadeKinds()) kinds.push_back(kind.name);
  }
  // Every second seed: those for tuning and those for proof do not meet.
  for (const std::string& kind : kinds) {
    for (std::uint64_t seed = first; seed <= last; seed += 2) worlds->push_back({"", kind, seed});
  }
}

std::vector<WorldPlan> WorldsOf(const Arguments& arguments) {
  std::vector<WorldPlan> worlds;
  for (const std::string& path : arguments.Rest()) {
    if (!platform::IsFolder(path)) {
      worlds.push_back({path, "", 0});
      continue;
    }
    for (const std::string& file : platform::FilesOf(path, ".json"))
      worlds.push_back({file, "", 0});
  }
  AddMade(arguments, &worlds);
  if (worlds.empty()) throw UsageError("a world, a folder of worlds, or --made and seeds");
  return worlds;
}

void PrintTables(const Arguments& arguments, const CommandPlan& plan,
                 const std::vector<WorldResult>& results) {
  std::printf("%s", PolicyTable(results).c_str());
  if (arguments.Has("--by-kind")) std::printf("\n%s", KindTable(results).c_str());
  const std::size_t worst = arguments.Number("--worst", 0);
  for (const ServiceProfile& profile : plan.compare.profiles) {
    if (worst > 0) std::printf("\n%s", WorstTable(results, profile.name, worst).c_str());
    if (plan.compare.why) std::printf("\n%s", WhyTable(results, profile.name).c_str());
  }
}

}  // namespace

int CompareCommand(const std::vector<std::string>& words) {
  const Arguments arguments(
      words, {"--profiles", "--made", "--kinds", "--seed", "--for", "--worst", "-j"},
      {"--json", "--why", "--by-kind", "--no-peers", "--cold", "--roaming-driver"});
  CommandPlan plan;
  for (const std::string& profile :
       Split(arguments.Value("--profiles").value_or("classic,balanced"), ','))
    plan.compare.profiles.push_back(ProfileOf(profile));
  plan.compare.peers = !arguments.Has("--no-peers");
  plan.compare.why = arguments.Has("--why");
  plan.compare.seed = arguments.Number("--seed", 1);
  plan.options.cold = arguments.Has("--cold");
  plan.options.roamingDriver = arguments.Has("--roaming-driver");
  if (const auto most = arguments.Value("--for")) plan.mostMs = ParseDuration(*most);
  const std::vector<WorldPlan> worlds = WorldsOf(arguments);
  const bool json = arguments.Has("--json");
  Comparison comparison(worlds, plan, json);
  platform::DoInParts(worlds.size(),
                      std::max<std::size_t>(arguments.Number("-j", platform::ProcessorCount()), 1),
                      comparison);
  const std::vector<WorldResult>& results = comparison.Results();
  if (json) {
    std::printf("%s\n", SumJson(results).c_str());
  } else {
    PrintTables(arguments, plan, results);
  }
  const std::string trouble = TroubleText(results);
  std::fflush(stdout);
  std::fprintf(stderr, "%s", trouble.c_str());
  return trouble.empty() ? 0 : 1;
}

}  // namespace corvane::lab
