#pragma once
// What the sources of the web room share.

#include "foundation/hosts.h"
#include "foundation/log_lines.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

inline constexpr std::uint64_t kWebLog = DBG(32);
inline constexpr std::size_t kMaxProxyText = 260;

// The reason of what has just failed; ERROR_GEN_FAILURE where the platform names none.
inline platform::DWORD LastErrorOf() {
  const platform::DWORD code = Os().threads.GetLastError();
  return code != platform::ERROR_SUCCESS ? code : platform::ERROR_GEN_FAILURE;
}

}  // namespace corvane
