#pragma once
#include <map>
#include <string>
#include <string_view>

namespace corvane::platform::windows {

// The values of a key below HKEY_LOCAL_MACHINE (its 64-bit view) by name: texts in UTF-8, numbers
// in decimal, values of other types and numbers that are cut short left out. Empty when the key is
// not there. Only reads. Throws WindowsError when the system lets it not.
std::map<std::string, std::string> ReadRegistryValues(std::string_view key);

}  // namespace corvane::platform::windows
