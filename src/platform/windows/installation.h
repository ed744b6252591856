#pragma once
#include <string>
#include <vector>

namespace corvane::platform::windows {

// What the program does to itself on this PC: --install, --uninstall [--purge], --status, --stop.
// `words` are the program's own name and its arguments.
bool IsInstallationCommand(const std::vector<std::u16string>& words);
// Prints what it does, errors to standard error. The process's exit code: 0 done (for --status: it
// runs), 1 failed (it does not run), 2 a bad call. Throws std::exception for what it cannot know.
int RunInstallationCommand(const std::vector<std::u16string>& words);

}  // namespace corvane::platform::windows
