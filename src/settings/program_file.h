#pragma once
// Files that an administrator lays beside the executable.

#include <string>
#include <string_view>

#include "foundation/text.h"

namespace corvane {

// <directory of the executable>\<stem>.json in UTF-8; empty when the executable's path is unknown.
std::string ProgramFilePath(std::string_view stem);
// The whole file, less a byte order mark at its head. Empty when it is missing, empty, or can't be
// read to its end, which is logged.
std::string ReadProgramFile(std::string_view stem);
// Renames, replacing the target in one step; 0 or the platform's error code.
std::uint32_t MoveProgramFile(const std::string& from, const std::string& to);

}  // namespace corvane
