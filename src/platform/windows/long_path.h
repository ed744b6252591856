#pragma once
#include <string>
#include <string_view>

namespace corvane::platform::windows {

// The path as the system takes it in full length: normal, and with the prefix "\\?\" if it begins
// with a drive ("\\?\UNC\" if with a share). Relative paths and those that have a prefix stay as
// they are, but for the slashes.
std::wstring LongPath(std::u16string_view path);

}  // namespace corvane::platform::windows
