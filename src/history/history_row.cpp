#include "history/history_row.h"

#include "foundation/format.h"

namespace corvane {

namespace {

constexpr std::uint32_t kKHzInGHz = 1'000'000;
constexpr std::uint32_t kMaxStations = 65534;

WString Head(const platform::SYSTEMTIME& time, WStringView mac, const char16_t* reason) {
  return Format(u"%02d-%02d-%02dT%02d:%02d:%02dZ,%s,%s", time.wYear, time.wMonth, time.wDay,
                time.wHour, time.wMinute, time.wSecond, mac, reason);
}

}  // namespace

WString ConnectedHistoryRow(const platform::SYSTEMTIME& time, WStringView mac, const ApSummary& ap,
                            double load) {
  const ApSummaryDetails details = ap.details.value_or(ApSummaryDetails());
  const std::int64_t stations =
      details.stationCount > kMaxStations ? std::int64_t{-1} : std::int64_t{details.stationCount};
  return Head(time, mac, u"connected") +
         Format(u",%s,%s,%i,%i,%luGhz,%lu,%s,%s,%f,%I64i,%s,%f,%f,%lu", ap.ssid, ap.bssid, ap.score,
                details.rssi, details.frequencyKHz / kKHzInGHz, ap.channel, details.channelWidth,
                details.standard, load, stations, details.muMimo ? u"yes" : u"no",
                ap.txKbps / 1000.0, ap.rxKbps / 1000.0, details.maxRateMbps);
}

WString DisconnectedHistoryRow(const platform::SYSTEMTIME& time, WStringView mac) {
  WString row = Head(time, mac, u"disconnected");
  for (int column = 4; column <= 17; ++column) row += u",na";
  return row;
}

}  // namespace corvane
