#pragma once
#include <string>
#include <vector>

#include "record/recording.h"

namespace corvane::lab {

// The files of a recording, oldest first: of "air.jsonl" also what came before it, "air.1.jsonl"
// beside it. Throws std::runtime_error with the file and the reason.
std::vector<RecordingPart> RecordingParts(const std::string& file);
// The run that lasts longest.
const Recording& LongestOf(const std::vector<Recording>& runs);
// That run of the recording in a file. Throws std::runtime_error with file and line.
Recording LoadRecording(const std::string& file);

}  // namespace corvane::lab
