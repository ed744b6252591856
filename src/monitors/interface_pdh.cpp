#include "monitors/interface_pdh.h"

#include <algorithm>
#include <cmath>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "monitors/counter_instance.h"
#include "platform/clock_api.h"
#include "platform/platform.h"

namespace corvane {

namespace {

constexpr char kClassName[] = "CInterfacePDH";
constexpr std::uint64_t kPdhLog = DBG(13);
constexpr std::uint32_t kNoIndex = 0xFFFFFFFF;
constexpr std::int64_t kMinPollMs = 500;
constexpr double kTrickleMbps = 0.1;       // from here on it is real traffic
constexpr std::uint32_t kMeanSamples = 9;  // from here on a new sample weighs a tenth

std::uint64_t Now() { return Os().clock.GetTickCount64(); }

double Mbps(double bytesPerSec) { return bytesPerSec * 8.0 / 1000000.0; }

void Raise(std::atomic<double>* highest, double value) {
  if (value > *highest) *highest = value;
}

// An error counter's new value: its rate, and the value for the next time.
void TakeErrors(double value, std::int64_t elapsedMs, std::atomic<double>* errors,
                std::atomic<double>* errorsPerSec) {
  const double increase = std::max(value - *errors, 0.0);
  *errorsPerSec = elapsedMs > 0 ? increase / (static_cast<double>(elapsedMs) / 1000.0) : 0.0;
  *errors = value;
}

}  // namespace

CInterfacePDH::~CInterfacePDH() { CloseCounters(); }

bool CInterfacePDH::Initialize(std::uint32_t ifIndex, int configIdx, double rateGateHigh,
                               double rateGateLow) {
  m_IfIndex = ifIndex;
  m_ConfigIdx = configIdx;
  m_RateGateHigh = rateGateHigh;
  m_RateGateLow = rateGateLow;
  if (ifIndex == kNoIndex) return false;
  if (!CounterInstanceOf(ifIndex, &m_InstanceName)) return false;
  CloseCounters();
  return Guarded(kClassName, "Initialize", false, [this] { return OpenCounters(); });
}

bool CInterfacePDH::OpenCounters() {
  if (Os().perfCounters.PdhOpenQueryW(nullptr, 0, &m_hQuery) != 0) {
    m_hQuery = nullptr;
    LOG_ERROR(u"[%i]CInterfacePDH::Initialize: m_IfIndex = %i, 1st PdhOpenQuery() failed!",
              m_ConfigIdx, m_IfIndex);
    return false;
  }
  if (!AddRateCounter(u"Bytes Received/sec", &m_BytesReceivedPerSecCounter) ||
      !AddRateCounter(u"Bytes Sent/sec", &m_BytesSentPerSecCounter)) {
    return false;
  }
  AddErrorCounter(u"Packets Outbound Errors", &m_PacketsOutboundErrorsCounter);
  AddErrorCounter(u"Packets Received Errors", &m_PacketsReceivedErrorsCounter);
  // A rate takes two samples; this is the first.
  if (Os().perfCounters.PdhCollectQueryData(m_hQuery) != 0) {
    LOG_ADAPTER(m_ConfigIdx, kPdhLog,
                u"[%i]CInterfacePDH::Initialize: m_IfIndex = %i, 1st PdhCollectQueryData() failed!",
                m_ConfigIdx, m_IfIndex);
    CloseCounters();
    return false;
  }
  m_LastPollTick = Now();
  return true;
}

bool CInterfacePDH::AddCounter(const WString& path, platform::PDH_HCOUNTER* counter) {
  if (Os().perfCounters.PdhAddCounterW(m_hQuery, path.c_str(), 0, counter) == 0) return true;
  *counter = nullptr;
  return false;
}

bool CInterfacePDH::AddRateCounter(const char16_t* name, platform::PDH_HCOUNTER* counter) {
  const WString path = Format(u"\\Network Adapter(%s)\\%s", m_InstanceName, name);
  if (AddCounter(path, counter)) return true;
  LOG_ERROR(u"[%i]CInterfacePDH::Initialize: m_IfIndex = %i, 1stPdhAddCounter( ...%s...) failed!",
            m_ConfigIdx, m_IfIndex, path);
  return false;
}

void CInterfacePDH::AddErrorCounter(const char16_t* name, platform::PDH_HCOUNTER* counter) {
  const WString path = Format(u"\\Network Adapter(%s)\\%s", m_InstanceName, name);
  if (AddCounter(path, counter)) return;
  LOG_ERROR(u"[%i]CInterfacePDH::Initialize: m_IfIndex = %i, FAILED to Add Counter[%s]\n",
            m_ConfigIdx, m_IfIndex, path);
}

void CInterfacePDH::PollPDHCollection() {
  if (!m_hQuery) return;
  const std::uint64_t now = Now();
  const auto elapsedMs = static_cast<std::int64_t>(now - m_LastPollTick);
  if (elapsedMs >= 0 && elapsedMs <= kMinPollMs) return;
  Guarded(kClassName, "PollPDHCollection", false, [&] {
    if (Os().perfCounters.PdhCollectQueryData(m_hQuery) != 0) return false;
    ReadCounters(elapsedMs);
    return true;
  });
  TakeTrickleSample(m_TxMbps + m_RxMbps, now);
  m_LastPollTick = now;
}

void CInterfacePDH::ReadCounters(std::int64_t elapsedMs) {
  double value = 0.0;
  if (ReadCounter(m_BytesSentPerSecCounter, u"m_BytesSentPerSecCounter", &value)) {
    m_TxMbps = Mbps(value);
    Raise(&m_MaxTxMbps, m_TxMbps);
  }
  if (ReadCounter(m_BytesReceivedPerSecCounter, u"m_BytesReceivedPerSecCounter", &value)) {
    m_RxMbps = Mbps(value);
    Raise(&m_MaxRxMbps, m_RxMbps);
  }
  if (ReadCounter(m_PacketsOutboundErrorsCounter, u"m_PacketsOutboundErrorsCounter", &value)) {
    TakeErrors(value, elapsedMs, &m_TxErrors, &m_TxErrorsPerSec);
  }
  if (ReadCounter(m_PacketsReceivedErrorsCounter, u"m_PacketsReceivedErrorsCounter", &value)) {
    TakeErrors(value, elapsedMs, &m_RxErrors, &m_RxErrorsPerSec);
  }
}

// A value that is no number counts as one that can't be read.
bool CInterfacePDH::ReadCounter(platform::PDH_HCOUNTER counter, const char16_t* name,
                                double* value) const {
  if (!counter) return false;
  platform::PDH_FMT_COUNTERVALUE formatted;
  const platform::PDH_STATUS result = Os().perfCounters.PdhGetFormattedCounterValue(
      counter, platform::PDH_FMT_DOUBLE | platform::PDH_FMT_NOSCALE, nullptr, &formatted);
  if (result == 0 && std::isfinite(formatted.doubleValue)) {
    *value = formatted.doubleValue;
    return true;
  }
  LOG_ADAPTER(
      m_ConfigIdx, kPdhLog,
      u"[%i]CInterfacePDH::Initialize: m_IfIndex = %i, PdhGetFormattedCounterValue(%s...) failed!",
      m_ConfigIdx, m_IfIndex, name);
  return false;
}

// No traffic at all is no sample: it may mean that there is no data yet.
void CInterfacePDH::TakeTrickleSample(double mbps, std::uint64_t now) {
  if (!(mbps > 0.0 && mbps < kTrickleMbps)) return;
  if (m_FirstIdleTick == 0) m_FirstIdleTick = now;
  const double weight = std::min(m_IdleSamples.load(), kMeanSamples);
  m_IdleMean = (weight * m_IdleMean + mbps) / (weight + 1.0);
  if (mbps > m_RateGateLow) ++m_IdleSamplesAboveLow;
  ++m_IdleSamples;
}

void CInterfacePDH::CloseCounters() {
  auto& pdh = Os().perfCounters;
  for (platform::PDH_HCOUNTER* counter :
       {&m_BytesSentPerSecCounter, &m_BytesReceivedPerSecCounter, &m_PacketsOutboundErrorsCounter,
        &m_PacketsReceivedErrorsCounter}) {
    const platform::PDH_HCOUNTER gone = std::exchange(*counter, nullptr);
    if (gone) GiveBack(kClassName, "PdhRemoveCounter", [&] { pdh.PdhRemoveCounter(gone); });
  }
  const platform::PDH_HQUERY query = std::exchange(m_hQuery, nullptr);
  if (query) GiveBack(kClassName, "PdhCloseQuery", [&] { pdh.PdhCloseQuery(query); });
}

void CInterfacePDH::ResetIdleMeasure(double rateGateHigh, double rateGateLow) {
  m_MaxRxMbps = 0.0;
  m_MaxTxMbps = 0.0;
  m_IdleMean = 0.0;
  m_IdleSamples = 0;
  m_IdleSamplesAboveLow = 0;
  m_FirstIdleTick = 0;
  m_bIdleSettled = false;
  m_RateGateHigh = rateGateHigh;
  m_RateGateLow = rateGateLow;
}

double CInterfacePDH::GetIdleSecs() const {
  const std::uint64_t first = m_FirstIdleTick;
  return first == 0 ? 0.0 : static_cast<double>(Now() - first) / 1000.0;
}

double CInterfacePDH::GetPercentAboveLow() const {
  const std::uint32_t samples = m_IdleSamples;
  return samples == 0 ? 0.0 : 100.0 * m_IdleSamplesAboveLow / samples;
}

}  // namespace corvane
