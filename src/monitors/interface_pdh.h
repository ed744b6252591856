#pragma once
#include <atomic>
#include <cstdint>

#include "foundation/smart_obj.h"
#include "foundation/text.h"
#include "platform/perf_counter_api.h"

namespace corvane {

// Traffic of one adapter by the performance counters. Polled on the adapter's worker; the values
// may be read by any thread.
class CInterfacePDH : public SmartObjEx<CInterfacePDH, SmartObj<>> {
 public:
  ~CInterfacePDH() override;
  const char* GetClassName() const override { return "CInterfacePDH"; }

  // Opens the counters of the interface with this index of the operating system; the gates are in
  // Mbps. False without that interface or without counters; then polls read what there is.
  bool Initialize(std::uint32_t ifIndex, int configIdx, double rateGateHigh, double rateGateLow);
  void PollPDHCollection();  // at most once in 500 ms
  void CloseCounters();
  // Starts the learning of a connection anew; the present rates stay. On any thread.
  void ResetIdleMeasure(double rateGateHigh, double rateGateLow);

  double GetRxMbps() const { return m_RxMbps; }
  double GetTxMbps() const { return m_TxMbps; }
  double GetTxErrors() const { return m_TxErrors; }  // packets
  double GetTxErrorsPerSec() const { return m_TxErrorsPerSec; }
  double GetRxErrors() const { return m_RxErrors; }
  double GetRxErrorsPerSec() const { return m_RxErrorsPerSec; }
  double GetMaxRxMbps() const { return m_MaxRxMbps; }
  double GetMaxTxMbps() const { return m_MaxTxMbps; }
  double GetIdleMean() const { return m_IdleMean; }  // Mbps
  std::uint64_t GetFirstIdleTick() const { return m_FirstIdleTick; }
  double GetIdleSecs() const;         // since the first trickle sample, 0 without one
  double GetPercentAboveLow() const;  // 0 without samples
  bool IsIdleSettled() const { return m_bIdleSettled; }
  void SetIdleSettled(bool settled) { m_bIdleSettled = settled; }

 private:
  bool OpenCounters();
  bool AddCounter(const WString& path, platform::PDH_HCOUNTER* counter);
  bool AddRateCounter(const char16_t* name, platform::PDH_HCOUNTER* counter);
  void AddErrorCounter(const char16_t* name, platform::PDH_HCOUNTER* counter);
  void ReadCounters(std::int64_t elapsedMs);
  bool ReadCounter(platform::PDH_HCOUNTER counter, const char16_t* name, double* value) const;
  void TakeTrickleSample(double mbps, std::uint64_t now);

  std::uint32_t m_IfIndex = 0xFFFFFFFF;
  WString m_InstanceName;
  int m_ConfigIdx = -1;
  platform::PDH_HQUERY m_hQuery = nullptr;
  platform::PDH_HCOUNTER m_BytesSentPerSecCounter = nullptr;
  platform::PDH_HCOUNTER m_BytesReceivedPerSecCounter = nullptr;
  platform::PDH_HCOUNTER m_PacketsOutboundErrorsCounter = nullptr;
  platform::PDH_HCOUNTER m_PacketsReceivedErrorsCounter = nullptr;
  std::uint64_t m_LastPollTick = 0;
  std::atomic<double> m_RxMbps{0.0}, m_TxMbps{0.0};
  std::atomic<double> m_MaxRxMbps{0.0}, m_MaxTxMbps{0.0};
  std::atomic<double> m_TxErrors{0.0}, m_TxErrorsPerSec{0.0};
  std::atomic<double> m_RxErrors{0.0}, m_RxErrorsPerSec{0.0};
  std::atomic<double> m_RateGateHigh{0.06}, m_RateGateLow{0.04};
  std::atomic<double> m_IdleMean{0.0};
  std::atomic<std::uint32_t> m_IdleSamples{0}, m_IdleSamplesAboveLow{0};
  std::atomic<std::uint64_t> m_FirstIdleTick{0};
  std::atomic<bool> m_bIdleSettled{false};
};

}  // namespace corvane
