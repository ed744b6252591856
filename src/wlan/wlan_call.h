#pragma once
#include "foundation/guarded.h"
#include "platform/types.h"

namespace corvane {

// The code of one WLAN call; a fault inside it counts as a failure (ERROR_GEN_FAILURE).
template <typename Call>
platform::DWORD CodeOfCall(const char* className, const char* operation, Call&& call) {
  return Guarded(className, operation, platform::ERROR_GEN_FAILURE, std::forward<Call>(call));
}

}  // namespace corvane
