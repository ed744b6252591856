#pragma once
// The calls to the driver that follow the engine's words. None of them is made with the engine lock
// held.

#include "engine/driver_records.h"
#include "platform/types.h"

namespace corvane {

class CLBEngineState;

// Hands the tables over. The first one reads the settings. 0 when the driver is ready, is not yet,
// or did not take the call; ERROR_CANNOT_DETECT_DRIVER_FAILURE without a device;
// ERROR_REVISION_MISMATCH or ERROR_INVALID_PARAMETER when it refuses.
platform::DWORD LBDriverHandshake(CLBEngineState& state, bool first);

// Starts the steering, or notes that the start is owed while the driver is not ready. 0, or the
// error of the call; a device that cannot be opened is no failure.
platform::DWORD LBSendStart(CLBEngineState& state);

// 0, ERROR_CANNOT_DETECT_DRIVER_FAILURE without a device, or the error of the call.
platform::DWORD LBSendNotification(const LBDeviceNotification& notification);

// What an answer to a handshake means: bits to set in the state word, and the result.
struct LBHandshakeOutcome {
  std::uint32_t setBits;
  platform::DWORD result;
  friend bool operator==(const LBHandshakeOutcome&, const LBHandshakeOutcome&) = default;
};
LBHandshakeOutcome OutcomeOf(std::uint32_t answer);

}  // namespace corvane
