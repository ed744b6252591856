#pragma once
// Texts that several decisions write.

#include "wlan/binding/wlan_interface.h"

namespace corvane {

// The six bytes of a BSSID as the values of "%02x-%02x-%02x-%02x-%02x-%02x".
#define MAC_ARGS(mac) (mac)[0], (mac)[1], (mac)[2], (mac)[3], (mac)[4], (mac)[5]

// "Score S, aa-bb-cc-dd-ee-ff, SQ Q, Channel C, Max datarate R mbps, SSID".
WString ShortSummary(CWlanBssEntry& entry);
// The same for the connection of this round; its rate is "unknown" when the model has no entry.
WString ShortSummaryOfConnection(CWlanInterface& adapter, const ConnectionFacts& facts,
                                 std::int32_t score);

// SSID and channel as `ConnectedNetwork` shows them.
WString NetworkDisplayName(WStringView ssid, std::uint32_t channel);

}  // namespace corvane
