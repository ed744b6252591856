#include "platform/sim/kernel/seam_gate.h"

#include <algorithm>
#include <array>

namespace corvane::platform::sim {

bool NeverUnwinds(std::string_view operation) {
  static constexpr std::array<std::string_view, 17> kNames = {
      "closesocket",
      "freeaddrinfo",
      "DeleteIpForwardEntry",
      "DeleteIpForwardEntry2",
      "SetEvent",
      "TerminateThread",
      "WaitForSingleObject",
      "FlushFileBuffers",
      "PdhRemoveCounter",
      "WlanRegisterNotification",
      "FlushOutput",
      "EventUnregister",
      "HeapDestroy",
      "WSACleanup",
      "DestroyEnvironmentBlock",
      "BCryptDestroyKey",
      "UnregisterSuspendResumeNotification"};
  return operation.find("Close") != operation.npos || operation.find("Free") != operation.npos ||
         std::ranges::find(kNames, operation) != kNames.end();
}

}  // namespace corvane::platform::sim
