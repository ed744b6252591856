#pragma once
// Told what an adapter reads of the air, and what others do with it, for the recording.

#include "foundation/text.h"
#include "wlan/air_inputs.h"
#include "wlan/operation_gate.h"

namespace corvane {

// What somebody else than the service did.
enum class OutsideEvent {
  kScan,  // ended
  kConnecting,
  kConnected,
  kDisconnecting,
  kDisconnected,
  kRadioOn,
  kRadioOff,
  kSuspend,  // the machine slept,
  kResume,   // and woke; both are told in the first round behind it
};

class IAirWatch {
 public:
  // On the adapter's worker, in each round, before what was read is merged; under the global and
  // the interface lock. `scanned`: a scan has just run.
  virtual void OnLists(int adapter, bool scanned, const AirInputs& now) = 0;
  // One of the service itself. On the thread that waits for it.
  virtual void OnOperation(int adapter, WlanOperation kind, bool ended) = 0;
  // On the platform's thread, or the adapter's worker. `ssid` is empty where it has none.
  virtual void OnOutside(int adapter, OutsideEvent event, WStringView ssid) = 0;

 protected:
  ~IAirWatch() = default;
};

// Who watches, all adapters; null for nobody. Set before the service starts, taken back after it
// has ended.
inline IAirWatch* g_pAirWatch = nullptr;

inline void TellOperation(int adapter, WlanOperation kind, bool ended) {
  if (g_pAirWatch) g_pAirWatch->OnOperation(adapter, kind, ended);
}

inline void TellOutside(int adapter, OutsideEvent event, WStringView ssid = {}) {
  if (g_pAirWatch) g_pAirWatch->OnOutside(adapter, event, ssid);
}

}  // namespace corvane
