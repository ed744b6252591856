#pragma once
#include <utility>

#include "platform/types.h"

namespace corvane {

// Tells of a fault of the platform inside the decoder; `line` is the format of its log line and
// takes the code.
void ReportElementFault(const char16_t* line, platform::DWORD code);

// Runs one operation of the decoder. A fault inside it is told of, and the operation counts as
// done.
template <typename Fn>
void GuardElement(const char16_t* line, Fn&& parse) {
  try {
    std::forward<Fn>(parse)();
  } catch (const platform::PlatformFault& fault) {
    ReportElementFault(line, fault.code);
  }
}

}  // namespace corvane
