#pragma once
// The synchronous operations of an adapter: one at a time, each begun by a caller that waits and
// ended by a notification on the platform's thread.

#include <cstdint>

#include "foundation/crit_sec.h"
#include "foundation/win_event.h"
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

// An operation, how it ended, and the wake-up of its caller in one: a wait ends by the state alone,
// so a signal that comes late or not at all is never taken for the end of another operation. Each
// step is one under a lock of its own, so a completion, a time-out and the next caller in the queue
// never see half of one another.
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
  enum class End {
    kDone,     // the completion has come
    kTimeout,  // the operation is withdrawn
    kExit,     // the exit signal: a disconnect stays in flight, another operation is over
  };
  struct Result {
    End end = End::kDone;
    Outcome outcome;
  };

  void Initialize();  // before the first operation; throws Exception when it gets no events

  State Get() const;

  // For the caller of an operation. False while another one runs, or while its caller has yet to
  // see how it ended.
  [[nodiscard]] bool TryBegin(WlanOperation kind);
  // Waits for the end of the operation that was begun; the next one may begin afterwards. Throws
  // Exception when the wait itself fails; then the operation is over.
  Result Await(WlanOperation kind, std::uint32_t timeoutMs);
  void Abort();  // ends the operation for good

  // For the platform's thread. Ends the operation if it is of this kind and wakes its caller; true
  // when one waits. Throws Exception when the signal fails; the caller then sees it at its
  // time-out.
  [[nodiscard]] bool Complete(WlanOperation kind, platform::DWORD code, std::int32_t reason);
  // Ends all waits, of connects and of scans. A signal that fails is logged.
  void SignalExit();

 private:
  CWinEvent& EventOf(WlanOperation kind);

  mutable CCritSec m_Lock{"operation", LockRank::kLeaf};
  State m_State;
  Outcome m_Outcome;
  bool m_op_waiting = false;  // the completion is still to come, and its caller waits for it
  bool m_bCallerInside = false;
  CSmartPointer<CWinEvent> m_pConnectSyncEvent;
  CSmartPointer<CWinEvent> m_pScanSyncEvent;
};

}  // namespace corvane
