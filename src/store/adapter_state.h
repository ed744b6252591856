#pragma once
#include <atomic>
#include <cstdint>

namespace corvane {

inline constexpr double kRateGateHighStart = 0.06;  // Mbps
inline constexpr double kRateGateLowStart = 0.04;

// What the threads of an adapter tell each other: worker, notifications, pipes. Each is a single
// word, read and written without a lock. Ticks are milliseconds.
struct AdapterState {
  std::atomic<bool> m_bHECapable{false};  // does 802.11ax
  std::atomic<bool> m_VPNInhibited{false};
  std::atomic<bool> m_AirplaneInhibited{false};
  std::atomic<bool> m_RadioInhibited{false};
  std::atomic<bool> m_network_switching{true};  // other SSIDs may be chosen
  std::atomic<bool> m_network_switching_default{true};
  std::atomic<double> m_rate_gate_high{kRateGateHighStart};
  std::atomic<double> m_rate_gate_low{kRateGateLowStart};
  std::atomic<bool> m_accept_suggestion{false};
  std::atomic<std::uint32_t> m_MainLoopSleepMs{10000};
  std::atomic<bool> m_no_delay{false};
  std::atomic<std::uint64_t> m_NoDelayExpiry{0};
  std::atomic<std::uint64_t> m_deny_defer_until{0};
  std::atomic<std::int32_t> m_force_scan_counter{0};
  std::atomic<std::int32_t> m_AvgQBSSScore5{-1};
  std::atomic<std::int32_t> m_AvgQBSSScore2{-1};
  std::atomic<double> m_AvgLoad5{-1.0};
  std::atomic<double> m_AvgLoad2{-1.0};
  std::atomic<bool> m_bForceLQEtw{false};
  std::atomic<bool> m_allowlist_active{false};
  std::atomic<bool> m_bForcePopupOverride{false};
  std::atomic<bool> m_bReportStatusPending{false};
  std::atomic<bool> m_bCsvRowPending{false};
  std::atomic<bool> m_bConnectedReported{false};
};

}  // namespace corvane
