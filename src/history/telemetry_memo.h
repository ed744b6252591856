#pragma once
#include <cstdint>

#include "foundation/crit_sec.h"
#include "foundation/singleton.h"
#include "foundation/text.h"

namespace corvane {

// Two counters that outlive the process, in the registry value "TelemetryMemo" of the home key:
// moves between access points of one network, and moves between networks. Any thread.
class CTelemetryMemo {
 public:
  static CTelemetryMemo& GetInstance() { return Singleton<CTelemetryMemo>::GetInstance(); }

  void LoadFromRegistry();  // done once at construction
  bool SaveToRegistry();    // after each change; compare first
  void IncrementAp();
  void IncrementNet();
  std::uint32_t GetAp();
  std::uint32_t GetNet();

 private:
  friend class Singleton<CTelemetryMemo>;
  CTelemetryMemo();

  CCritSec m_Lock{"telemetry memo"};
  WString m_SavedText;  // of the last successful save
  WString m_FirstSeen;  // when the memo began (UTC)
  std::uint32_t m_Ap = 0;
  std::uint32_t m_Net = 0;
};

}  // namespace corvane
