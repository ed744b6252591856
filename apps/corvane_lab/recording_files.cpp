#include "corvane_lab/recording_files.h"

#include <algorithm>
#include <string_view>

#include "platform/text_file.h"

namespace corvane::lab {

using namespace platform;

std::vector<RecordingPart> RecordingParts(const std::string& file) {
  constexpr std::string_view kNow = "air.jsonl";
  std::vector<RecordingPart> parts;
  if (file.ends_with(kNow)) {
    const std::string before = file.substr(0, file.size() - kNow.size()) + "air.1.jsonl";
    if (FileExists(before)) parts.push_back({before, ReadTextFile(before)});
  }
  parts.push_back({file, ReadTextFile(file)});
  return parts;
}

const Recording& LongestOf(const std::vector<Recording>& runs) {
  return *std::ranges::max_element(runs, {}, &Recording::lengthMs);
}

Recording LoadRecording(const std::string& file) {
  return LongestOf(ReadRecording(RecordingParts(file)));
}

}  // namespace corvane::lab
