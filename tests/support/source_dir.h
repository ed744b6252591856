#pragma once
#include <string>

namespace corvane::test {

// The root of the source tree, without a slash at its end.
std::string SourceDir();

}  // namespace corvane::test
