#include <cstdio>
#include <string>
#include <vector>

#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "corvane_lab/made_world.h"
#include "platform/text_file.h"

namespace corvane::lab {

int MakeWorldCommand(const std::vector<std::string>& words) {
  const Arguments arguments(
      words, {"--seed", "-o"},
      {"--kinds", "--cold", "--roaming-driver", "--background", "--two-adapters"});
  if (arguments.Has("--kinds")) {
    for (const MadeKind& kind : MadeKinds()) std::printf("%-12s %s\n", kind.name, kind.text);
    return 0;
  }
  if (arguments.Rest().size() != 1) throw UsageError("one kind of world; --kinds lists them");
  if (!arguments.Has("--seed")) throw UsageError("--seed and a number");
  const std::string text = MadeWorldText(arguments.Rest()[0], arguments.Number("--seed", 0),
                                         {.cold = arguments.Has("--cold"),
                                          .roamingDriver = arguments.Has("--roaming-driver"),
                                          .background = arguments.Has("--background"),
                                          .twoAdapters = arguments.Has("--two-adapters")});
  if (const auto file = arguments.Value("-o")) {
    platform::TextFileWriter writer(*file);
    writer.Write(text);
    writer.Commit();
  } else {
    std::fputs(text.c_str(), stdout);
  }
  return 0;
}

}  // namespace corvane::lab
