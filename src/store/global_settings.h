#pragma once
#include <atomic>
#include <cstdint>

namespace corvane {

// Settings of the whole program, as the home key has them. value_table.h tells the start value, the
// range and the meaning of each. The main thread writes them; any thread may read, each is a single
// word.
struct GlobalSettings {
  GlobalSettings();  // the start values

  std::atomic<bool> m_bRoamingEnabled;
  std::atomic<bool> m_bAllowlistEnabled;
  std::atomic<bool> m_bGatewayRoaming;
  std::atomic<bool> m_bPalisadeOptimizer;
  std::atomic<bool> m_bServiceEnable;
  std::atomic<std::uint32_t> m_ScoreDiffPct;
  std::atomic<std::uint32_t> m_AllowFilterScoreBonus;
  std::atomic<bool> m_bEnablePilot;
  std::atomic<bool> m_bEnablePost;
  std::atomic<bool> m_bULScan;
  std::atomic<bool> m_bMonitorWhileDisabled;
  std::atomic<std::uint32_t> m_BatteryModeSleepSecs;
  std::atomic<std::uint32_t> m_BatteryScanIntervalSecs;
  std::atomic<std::uint32_t> m_InstallTime;  // seconds since 1970; starts with the current time
  std::atomic<bool> m_bBTPenaltyEnabled;
  std::atomic<std::uint32_t> m_BTPenaltyValue;
  std::atomic<std::uint32_t> m_PolicyProfile;  // PolicyProfileKind
  std::atomic<std::uint32_t> m_RecordAirMB;
};

}  // namespace corvane
