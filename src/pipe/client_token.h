#pragma once
#include <cstdint>

#include "pipe/client_request.h"
#include "pipe/pipe_instance.h"

namespace corvane {

// Codes of a refused token.
enum TokenCode : std::uint32_t {
  kTokenGood = 0,
  kTokenMissing = 1000,
  kTokenEmpty = 1001,
  kTokenUnreadable = 1002,
  kTokenFieldCount = 1003,
  kTokenNoMemory = 1004,
  kTokenBadPid = 1005,
  kTokenBadExecutable = 1006,
  kTokenOtherProcess = 1007,
  kTokenNonceBack = 1009,
  kTokenException = 1010,
};

// Whether programs of this file name may command the service (compared exactly). Pure.
bool IsClientExecutable(WStringView name);

// Checks the member "art" of a request, the proof that one of the system's own programs sent it,
// and logs a refusal. A good token counts for its session whatever becomes of the request.
std::uint32_t CheckClientToken(const CClientRequest& request, PipeInstanceCtx& client);

}  // namespace corvane
