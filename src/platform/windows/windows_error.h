#pragma once
#include <stdexcept>
#include <string>

#include "platform/types.h"

namespace corvane::platform::windows {

// The host cannot start; the text says why and what to do.
class WindowsError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The system's words for an error code, in UTF-8, without a line end; "error N" when it has none.
std::string ErrorText(DWORD code);

}  // namespace corvane::platform::windows
