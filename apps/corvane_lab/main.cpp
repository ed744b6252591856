#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "platform/text_file.h"

namespace {

using namespace corvane::lab;

struct Command {
  const char* name;
  int (*run)(const std::vector<std::string>& words);
  const char* help;
};
constexpr Command kCommands[] = {{"run", &RunCommand, kRunHelp},
                                 {"elements", &ElementsCommand, kElementsHelp},
                                 {"scores", &ScoresCommand, kScoresHelp},
                                 {"explain", &ExplainCommand, kExplainHelp},
                                 {"engine", &EngineCommand, kEngineHelp},
                                 {"compare", &CompareCommand, kCompareHelp},
                                 {"report", &ReportCommand, kReportHelp},
                                 {"replay", &ReplayCommand, kReplayHelp},
                                 {"anonymise", &AnonymiseCommand, kAnonymiseHelp},
                                 {"make-world", &MakeWorldCommand, kMakeWorldHelp},
                                 {"registry", &RegistryCommand, kRegistryHelp}};

void PrintHelp(std::FILE* out) {
  std::fputs("corvane-lab: the workbench of the Wi-Fi selection service, in virtual time\n\n", out);
  for (const Command& command : kCommands) std::fprintf(out, "%s\n", command.help);
}

}  // namespace

int main(int argc, char** argv) {
  corvane::platform::WriteLinesAsTheyAre();
  std::vector<std::string> words(argv + 1, argv + argc);
  if (words.empty() || words[0] == "--help" || words[0] == "help") {
    PrintHelp(words.empty() ? stderr : stdout);
    return words.empty() ? 2 : 0;
  }
  for (const Command& command : kCommands) {
    if (words[0] != command.name) continue;
    words.erase(words.begin());
    if (!words.empty() && words[0] == "--help") {
      std::fputs(command.help, stdout);
      return 0;
    }
    try {
      return command.run(words);
    } catch (const UsageError& e) {
      std::fprintf(stderr, "corvane-lab %s: %s\n\n%s", command.name, e.what(), command.help);
      return 2;
    } catch (const std::exception& e) {
      std::fprintf(stderr, "corvane-lab %s: %s\n", command.name, e.what());
      return 1;
    }
  }
  std::fprintf(stderr, "corvane-lab: no command \"%s\"\n\n", words[0].c_str());
  PrintHelp(stderr);
  return 2;
}
