#pragma once
#include <string>

namespace corvane::lab {

// docs/registry.md, as the table of values gives it.
std::string RegistryPage();

}  // namespace corvane::lab
