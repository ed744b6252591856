#pragma once
// Rows of the connection history. Pure.

#include "notify/ap_summary.h"
#include "platform/types.h"

namespace corvane {

// TIME,MAC,REASON,SSID,BSSID,SCORE,RSSI,BAND,CHANNEL,CHANNELWIDTH,CLASS,QLOAD,STATIONCOUNT,MUMIMO,
// LINKTX,LINKRX,MAXDATARATE; the time is UTC, `mac` the adapter's. `ap` has its details; `load` is
// in percent, below 0 for unknown.
WString ConnectedHistoryRow(const platform::SYSTEMTIME& time, WStringView mac, const ApSummary& ap,
                            double load);
WString DisconnectedHistoryRow(const platform::SYSTEMTIME& time, WStringView mac);

}  // namespace corvane
