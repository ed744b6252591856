#pragma once
#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform::windows {

// What each operation passes first: throws ThreadAbandoned in a thread that was given up, unless
// destructors use the operation. The name is that of the seam's operation.
void EnterGate(const char* operation);

// The gate for simulated services that run on real threads.
class WindowsGate final : public sim::SeamGate {
 public:
  DWORD Enter(const char* operation, DWORD = ERROR_GEN_FAILURE) override {
    EnterGate(operation);
    return ERROR_SUCCESS;
  }
};

}  // namespace corvane::platform::windows
