#include "probes/blast_meter.h"

#include <cmath>
#include <utility>

#include "foundation/format.h"
#include "foundation/guarded.h"
#include "monitors/counter_instance.h"
#include "platform/platform.h"

namespace corvane {

namespace {

constexpr char kClassName[] = "CICMPHelperSingleton";

}  // namespace

CBlastMeter::~CBlastMeter() {
  auto& pdh = Os().perfCounters;
  const platform::PDH_HCOUNTER counter = std::exchange(m_hCounter, nullptr);
  if (counter) GiveBack(kClassName, "PdhRemoveCounter", [&] { pdh.PdhRemoveCounter(counter); });
  const platform::PDH_HQUERY query = std::exchange(m_hQuery, nullptr);
  if (query) GiveBack(kClassName, "PdhCloseQuery", [&] { pdh.PdhCloseQuery(query); });
}

bool CBlastMeter::InitPdhCountersForIF(std::uint32_t ifIndex) {
  return Guarded(kClassName, "InitPdhCountersForIF", false, [&] { return Open(ifIndex); });
}

bool CBlastMeter::Open(std::uint32_t ifIndex) {
  WString instance;
  if (!CounterInstanceOf(ifIndex, &instance)) return false;
  auto& pdh = Os().perfCounters;
  if (pdh.PdhOpenQueryW(nullptr, 0, &m_hQuery) != 0) {
    m_hQuery = nullptr;
    return false;
  }
  const WString path = Format(u"\\Network Adapter(%s)\\Bytes Sent/sec", instance);
  if (pdh.PdhAddCounterW(m_hQuery, path.c_str(), 0, &m_hCounter) != 0) {
    m_hCounter = nullptr;
    return false;
  }
  return pdh.PdhCollectQueryData(m_hQuery) == 0;
}

double CBlastMeter::Sample() {
  return Guarded(kClassName, "PdhCollectQueryData", 0.0, [this] { return Read(); });
}

double CBlastMeter::Read() {
  auto& pdh = Os().perfCounters;
  platform::PDH_FMT_COUNTERVALUE value;
  if (pdh.PdhCollectQueryData(m_hQuery) != 0) return 0.0;
  if (pdh.PdhGetFormattedCounterValue(
          m_hCounter, platform::PDH_FMT_DOUBLE | platform::PDH_FMT_NOSCALE, nullptr, &value) != 0) {
    return 0.0;
  }
  return std::isfinite(value.doubleValue) ? value.doubleValue * 8.0 / 1000000.0 : 0.0;
}

}  // namespace corvane
