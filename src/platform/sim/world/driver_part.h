#pragma once
#include <optional>
#include <vector>

#include "platform/types.h"

namespace corvane::platform::sim {

// What the load-balance driver answers to a handshake.
enum class DriverAnswer : DWORD { kReady = 1, kOtherRevision = 3, kBadRecord = 4, kNotYet = 5 };

// The load-balance driver as a world has it, or what an entry of the timeline changes about it:
// what is not given stays as it was.
struct DriverPart {
  std::optional<bool> present;  // the device is there and its service runs
  std::optional<bool> starts;   // starting the service brings the device
  std::optional<DriverAnswer> answer;
  std::optional<DWORD> delayMs;             // what each control call takes
  std::optional<std::vector<DWORD>> fails;  // the control codes that fail
};

}  // namespace corvane::platform::sim
