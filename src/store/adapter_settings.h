#pragma once
#include <atomic>
#include <cstdint>

namespace corvane {

// Values of PassiveSuggestMode: how an adapter acts on a better access point.
enum SuggestMode : std::uint32_t { kAutoswitchMode = 0, kEventMode = 1, kPopupMode = 2 };

// Settings of one adapter, as its registry key has them. value_table.h tells the start value, the
// range and the meaning of each. The adapter's worker writes them at the beginning of a round; any
// thread may read, each is a single word.
struct AdapterSettings {
  AdapterSettings();  // the start values

  bool IsAutoswitch() const { return !m_bPassive; }
  bool SuggestsByEvent() const { return m_bPassive && !m_bPopupMode; }

  std::atomic<bool> m_Enabled;
  std::atomic<std::uint32_t> m_ScanInterval;  // seconds
  std::atomic<std::uint32_t> m_LQCThreshold;
  std::atomic<std::uint32_t> m_APScoreThreshold;
  std::atomic<bool> m_PreferPrivateNetwork;
  std::atomic<bool> m_ForceAutoConnect;
  std::atomic<bool> m_LatchToPrivate;
  std::atomic<bool> m_bPassive;    // PassiveSuggestMode is not 0,
  std::atomic<bool> m_bPopupMode;  // and is 2
  std::atomic<bool> m_GatewayRoaming;
};

}  // namespace corvane
