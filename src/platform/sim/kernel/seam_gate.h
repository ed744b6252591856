#pragma once
#include <string_view>

#include "platform/types.h"

namespace corvane::platform::sim {

// Whether destructors use the operation, so that it never throws in a thread that was given up.
// Waits see for themselves whether they may.
bool NeverUnwinds(std::string_view operation);

// What every operation of a simulated service calls first, with no lock held. Here a run may be
// interleaved and faults are injected. The name of an operation is that of its Windows function.
class SeamGate {
 public:
  virtual ~SeamGate() = default;
  // ERROR_SUCCESS: the operation goes on. Anything else is the operation's result: it answers that
  // at once and does nothing. `ordinary` is the code that a random fault uses. May throw
  // PlatformFault (the call itself faults) or ThreadAbandoned.
  virtual DWORD Enter(const char* operation, DWORD ordinary = ERROR_GEN_FAILURE) {
    (void)operation, (void)ordinary;
    return ERROR_SUCCESS;
  }
};

}  // namespace corvane::platform::sim
