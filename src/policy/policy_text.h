#pragma once
// Texts that several decisions write.

#include "notify/ap_summary.h"
#include "wlan/wlan_interface.h"

namespace corvane {

struct Round;

// An access point as notifications and suggestions tell of it. Link rates are those of the
// adapter's last connection query, 0 in the form without them.
ApSummary SummaryOf(CWlanBssEntry& entry, const ScoreContext& scores);
ApSummary SummaryOf(CWlanBssEntry& entry, const ScoreContext& scores,
                    const CWlanInterface& adapter);
// The connection of this round: score, quality and channel are the connection's, the rest is the
// model's, if it has the entry.
ApSummary SummaryOfConnection(CWlanInterface& adapter, const ConnectionFacts& facts,
                              std::int32_t score);

// "SSID BSSID, SQ Q, Score S", for people who read the log.
WString BriefText(const ApSummary& ap);

// SSID and channel as `ConnectedNetwork` shows them.
WString NetworkDisplayName(WStringView ssid, std::uint32_t channel);

// What clients read of a connection: name, addresses, link rates of the adapter's last query.
void PublishConnection(const CWlanInterface& adapter, CQUAYInterfaceConfig& config,
                       const CWlanBssEntry& entry);

// Queues a "ConnectionChange" about this adapter.
void NotifyConnectionChange(const CWlanInterface& adapter, const CQUAYInterfaceConfig& config,
                            WStringView type, WStringView newAp, WStringView oldAp);

// One entry of a sorted list, with all that ranks it; `prefix` names the list.
WString SortLine(const Round& round, CWlanBssEntry& entry, const char* prefix);

}  // namespace corvane
