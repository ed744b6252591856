#pragma once
#include <string>

#include "foundation/text.h"

namespace corvane::log_files {

// The overflow file of a log file: beside it, with "~" in front of its own name.
WString OverflowName(const std::string& name);

// Moves the files of the last runs on one place: base2 to base3, base1 to base2, and the overflow
// file with the live file behind it to base1. Failures are ignored.
void RotateAtStart(const std::string& baseName);

}  // namespace corvane::log_files
