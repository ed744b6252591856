#pragma once
#include "platform/types.h"

namespace corvane::platform {

// The console of the process.
class ConsoleApi {
 public:
  virtual ~ConsoleApi() = default;
  // True when a key waits; an asked-for orderly stop counts as a key. Stays true once it was.
  virtual bool _kbhit();
  // Standard output, as it stands: UTF-8.
  virtual void WriteOutput(std::string_view text);
  virtual void WriteError(std::string_view text);  // standard error stream
  virtual void FlushOutput();
};

}  // namespace corvane::platform
