#pragma once
// The synchronous operations of an adapter: one at a time, each begun by a caller that waits and
// ended by a notification on the platform's thread.

#include <cstdint>

#include "foundation/crit_sec.h"
#include "platform/types.h"

namespace corvane {

// The synchronous operation in flight on an adapter.
enum class WlanOperation : std::int32_t { kNone = 0, kScan = 1, kConnect = 2, kDisconnect = 3 };

// m_op_reason until a completion arrived.
inline constexpr std::int32_t kNoCompletion = -2;

// Who caused a connection notification. Pure.
struct NotificationOwner {
  bool weInitiated = false;
  bool xSide =
      false;  // the old network's disconnect, which the service's own connect brings with it
  friend bool operator==(const NotificationOwner&, const NotificationOwner&) = default;
};
NotificationOwner OwnerOfNotification(bool busy, WlanOperation kind, platform::DWORD code);

// Holds which operation runs and how it ended. Each step is one under a lock of its own, so a
// completion, a time-out and the next caller in the queue never see half of one another.
class OperationGate {
 public:
  struct State {
    bool m_op_busy = false;  // a synchronous operation is in flight
    WlanOperation m_op_kind = WlanOperation::kNone;
  };
  struct Outcome {
    platform::DWORD m_op_code = 0;             // notification code of the completion
    std::int32_t m_op_reason = kNoCompletion;  // WLAN reason code
  };

  State Get() const;

  // For the caller of an operation. False while another one runs, or while its caller has yet to
  // take its outcome.
  bool TryBegin(WlanOperation kind);
  Outcome TakeOutcome();  // after the wait; the next operation may begin
  // After a time-out. False when the completion has come in the meantime: then its signal is on the
  // way and the caller waits for that.
  bool Withdraw();
  void Abort();      // ends the operation for good
  void LeaveBusy();  // the caller goes, the operation stays in flight

  // For the platform's thread. Ends the operation if it is of this kind; true when its caller waits
  // and is to be signalled.
  bool Complete(WlanOperation kind, platform::DWORD code, std::int32_t reason);

 private:
  mutable CCritSec m_Lock{"operation", LockRank::kLeaf};
  State m_State;
  Outcome m_Outcome;
  bool m_op_waiting = false;  // the caller still waits for the signal
  bool m_bCallerInside = false;
};

}  // namespace corvane
