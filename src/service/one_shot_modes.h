#pragma once
// The small jobs that the program does instead of being the service.

#include <optional>
#include <string>

#include "service/command_line.h"

namespace corvane {

// What the options ask for before the service starts: the process's result when that is all, else
// nothing, with the flags of the service set. There is no logger yet: what is logged goes to
// standard output.
std::optional<int> RunOneShotModes(const CommandLine& line);

// What they ask for once the logger is there.
std::optional<int> RunLoggedModes(const CommandLine& line);

// The environment of this process's user as one line of JSON, which the service reads.
std::string UserEnvironmentLine();

}  // namespace corvane
