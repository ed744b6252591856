#pragma once
// The load-balance engine: a picture of the machine's adapters and gateways that its driver steers
// by. These are its only doors. They may be called by any thread; a start or a stop waits for the
// one that another thread has begun.
//
// With the setting SvcLib_TraceEnabled the log of whoever links the engine tells of the device
// being opened or missed, of each handshake's answer, of the start sent or owed, of slots taken and
// retired, of the counts when they change, and of each notification with the driver's code.

#include <cstddef>
#include <cstdint>

#include "platform/types.h"

namespace corvane {

struct LBEngineTable;

// What a start tells its caller. Only the table's address is filled.
struct LBEngineInfo {
  std::uint8_t unused1[16] = {};
  std::uint64_t table = 0;  // the memory that the driver reads; gone with LB_StopEngine
  std::uint8_t unused2[16] = {};
};
static_assert(sizeof(LBEngineInfo) == 40);
static_assert(offsetof(LBEngineInfo, table) == 16);

// Starts the engine. 0; 0 as well on a machine without the driver, where nothing is left running;
// ERROR_ALREADY_INITIALIZED when it runs; ERROR_REVISION_MISMATCH when the driver is of another
// revision; or another error, after which nothing is left running either.
platform::DWORD LB_InitializeEngine(LBEngineInfo* info);

// Pauses (command 1) or runs (command 2) the steering, with a weight mode of 1 or 2. 0,
// ERROR_DEVICE_UNREACHABLE without the driver, or the error of the control call. A fault in that
// call passes on to the caller.
platform::DWORD LoadBalanceConfig(std::uint32_t command, std::uint32_t mode);

// Stops the engine, where it runs, and gives everything back; takes three seconds, and as long as
// the driver takes to hear of it. A fault in the call to the driver passes on to the caller; the
// engine is stopped none the less.
void LB_StopEngine();

// What the end of the process does to an engine that still runs: its threads end, its memory and
// its handles go, and the driver learns of it by the device that is closed. Waits for a start or a
// stop.
void LB_ReleaseEngine();

}  // namespace corvane
