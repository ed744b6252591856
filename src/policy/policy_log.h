#pragma once
// What the log lines of several decisions share.

#include "foundation/log_lines.h"
#include "settings/global_config_container.h"

namespace corvane {

inline constexpr std::uint64_t kPolicyLog = DBG(16) | DBG(17);
// A line for each entry of the list, in every round.
inline constexpr std::uint64_t kCandidateDetailLog = DBG(37);
inline constexpr std::uint64_t kNullInterfaceLog = DBG(18);

// The six bytes of a BSSID as the values of "%02x-%02x-%02x-%02x-%02x-%02x".
#define MAC_ARGS(mac) (mac)[0], (mac)[1], (mac)[2], (mac)[3], (mac)[4], (mac)[5]

// The switches that the lines of a round show: "[Pilot=%i]", "[ENABLED %i/%i]", "[ROAM-E %i/%i]".
struct RoundFlags {
  explicit RoundFlags(const CQUAYInterfaceConfig& config)
      : pilot(CGlobalConfigContainer::GetInstance().m_bEnablePilot),
        enabled(config.m_Enabled),
        serviceEnabled(CGlobalConfigContainer::GetInstance().m_bServiceEnable),
        roaming(config.IsRoamingEnabled()),
        gatewayRoaming(config.IsGatewayRoaming()) {}

  int pilot, enabled, serviceEnabled, roaming, gatewayRoaming;
};

}  // namespace corvane
