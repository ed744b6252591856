#pragma once
// What the log lines of several decisions share.

#include "foundation/log_lines.h"

namespace corvane {

inline constexpr std::uint64_t kPolicyLog = DBG(16) | DBG(17);
// A line for each entry of the list, in every round.
inline constexpr std::uint64_t kCandidateDetailLog = DBG(37);
inline constexpr std::uint64_t kNullInterfaceLog = DBG(18);

// The six bytes of a BSSID as the values of "%02x-%02x-%02x-%02x-%02x-%02x".
#define MAC_ARGS(mac) (mac)[0], (mac)[1], (mac)[2], (mac)[3], (mac)[4], (mac)[5]

}  // namespace corvane
