#pragma once
#include "platform/linux/host_threads.h"
#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform::linux_host {

// The gate of the services that run on real threads: a thread that was given up unwinds here.
class HostGate final : public sim::SeamGate {
 public:
  DWORD Enter(const char* operation, DWORD = ERROR_GEN_FAILURE) override {
    if (HostThreads::IsAbandoned() && !sim::NeverUnwinds(operation))
      HostThreads::ThrowIfAbandoned();
    return ERROR_SUCCESS;
  }
};

}  // namespace corvane::platform::linux_host
