#include "platform/sim/devices/sim_traffic.h"

#include <algorithm>

namespace corvane::platform::sim {

void SimTraffic::SetConnected(int adapter, bool connected) { Count(adapter).connected = connected; }

const TrafficTotals& SimTraffic::Totals(int adapter) { return Count(adapter).totals; }

SimTraffic::Meter& SimTraffic::Count(int adapter) {
  constexpr double kBytesPerMbitMs = 125.0;  // 1 Mbit/s for 1 ms
  Meter& meter = m_Meters[static_cast<std::size_t>(adapter)];
  const std::uint64_t now = m_Machine.loop.NowMs();
  if (meter.connected) {
    for (const Traffic& traffic : m_Machine.world.traffic) {
      const std::uint64_t from = std::max(traffic.span.fromMs, meter.countedToMs);
      const std::uint64_t to = std::min(traffic.span.toMs, now);
      if ((traffic.adapter != adapter && traffic.adapter != kAllAdapters) || from >= to) continue;
      const auto ms = static_cast<double>(to - from);
      meter.totals.inBytes += traffic.inMbps * kBytesPerMbitMs * ms;
      meter.totals.outBytes += traffic.outMbps * kBytesPerMbitMs * ms;
      meter.totals.inErrors += traffic.inErrorsPerSec * ms / 1000.0;
      meter.totals.outErrors += traffic.outErrorsPerSec * ms / 1000.0;
    }
  }
  meter.countedToMs = now;
  return meter;
}

}  // namespace corvane::platform::sim
