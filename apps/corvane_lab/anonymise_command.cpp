#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "corvane_lab/anonymise.h"
#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "corvane_lab/recording_files.h"
#include "corvane_lab/replay.h"
#include "platform/text_file.h"

namespace corvane::lab {

int AnonymiseCommand(const std::vector<std::string>& words) {
  const Arguments arguments(words, {"-o"}, {});
  const auto file = arguments.Value("-o");
  if (!file) throw UsageError("-o FILE says where the recording without names goes");
  if (arguments.Rest().size() != 1) throw UsageError("one recording");
  const std::vector<RecordingPart> parts = RecordingParts(arguments.Rest()[0]);
  const std::vector<RecordingPart> shown = {{*file, Anonymised(parts)}};
  const std::vector<Recording> original = ReadRecording(parts), other = ReadRecording(shown);
  if (const std::string left = FindLeftover(original, other); !left.empty())
    throw std::runtime_error("a name or an address is left over in " + left +
                             "; nothing was written");
  const SameRounds same = CompareReplays(LongestOf(original), LongestOf(other));
  if (!same.unlike.empty())
    throw std::runtime_error("it would not be decided upon as the original is: " + same.unlike +
                             "; nothing was written");
  platform::TextFileWriter out(*file);
  out.Write(shown[0].text);
  out.Commit();
  std::printf(
      "%s: no name or address of the original is in it; replayed, %llu rounds with %llu "
      "scores are the same\n",
      file->c_str(), static_cast<unsigned long long>(same.rounds),
      static_cast<unsigned long long>(same.scores));
  return 0;
}

}  // namespace corvane::lab
