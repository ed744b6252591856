#pragma once
#include <string>
#include <string_view>

#include "platform/types.h"

namespace corvane::platform::windows {

// Small files of this host's own, read and written as wholes. Results are system error codes.

// ERROR_INVALID_DATA for a file that is empty or has `most` bytes or more.
DWORD ReadWholeFile(const std::u16string& path, std::size_t most, std::string* text);
// By a new file beside it, whose name ends in ".new", that takes its place: whoever reads, and a
// stop at any moment, finds the old text or the new one. On the disk when it returns.
DWORD WriteWholeFile(const std::u16string& path, std::string_view text);
// False also when the system does not tell, as while somebody holds the file.
bool IsFileMissing(const std::u16string& path);

}  // namespace corvane::platform::windows
