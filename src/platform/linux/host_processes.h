#pragma once
#include <optional>
#include <string>

#include "platform/types.h"

namespace corvane::platform::linux_host {

// The file name of the program that a process runs, by the kernel's word and not by the name that
// the process gives itself. None when there is no such process or it cannot be seen.
std::optional<std::u16string> ExecutableOfProcess(DWORD processId);

// The file name in what the link /proc/N/exe says: without its folders, and without the mark of a
// file that has been deleted or replaced since.
std::string_view FileNameOfExecutable(std::string_view link);

}  // namespace corvane::platform::linux_host
