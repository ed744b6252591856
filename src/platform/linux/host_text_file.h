#pragma once
#include <string>

namespace corvane::platform::linux_host {

// Whole files of the host, for programs that stand outside the simulated PC. Both throw
// std::runtime_error with the path and the system's reason.
std::string ReadTextFile(const std::string& path);
// Replaces the file in one step: readers see the old text or the new one.
void WriteTextFile(const std::string& path, const std::string& text);

}  // namespace corvane::platform::linux_host
