#pragma once
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <vector>

#include "platform/event_trace_api.h"
#include "platform/trace_logging.h"

namespace corvane::platform::sim {

class SeamGate;

// Event tracing of the simulated PC: one session that listens to every provider and keeps the
// events, decoded, for tests and reports. An event that its metadata does not describe is refused
// with ERROR_INVALID_PARAMETER.
class SimEventTrace final : public EventTraceApi {
 public:
  static constexpr std::size_t kKeptEvents = 100'000;

  explicit SimEventTrace(SeamGate& gate, std::size_t kept = kKeptEvents)
      : m_Gate(gate), m_Kept(kept) {}

  ULONG EventRegister(const GUID* provider, EnableCallback callback, void* context,
                      REGHANDLE* handle) override;
  ULONG EventSetInformation(REGHANDLE handle, DWORD informationClass, const void* information,
                            ULONG length) override;
  ULONG EventWriteTransfer(REGHANDLE handle, const EVENT_DESCRIPTOR* descriptor,
                           const GUID* activity, const GUID* related, ULONG count,
                           const EVENT_DATA_DESCRIPTOR* data) override;
  ULONG EventUnregister(REGHANDLE handle) override;

  // The level of the listening session, 5 at start; 0 ends it.
  void Listen(BYTE level);
  // The session tells the providers so, EVENT_CONTROL_CODE_...
  void Control(DWORD code, BYTE level);
  // What was written since the last call, oldest first, at most as many as are kept.
  std::vector<TraceEvent> TakeEvents();
  // Traits that the provider gave with EventProviderSetTraits; empty without one.
  std::vector<std::uint8_t> Traits() const;
  std::size_t OpenHandles() const;
  // Called for each event as it is written, with no lock held; null for none. For reports.
  void SetObserver(void (*observe)(const TraceEvent& event, void* context), void* context);

 private:
  struct Provider {
    GUID id;
    EnableCallback callback = nullptr;
    void* context = nullptr;
    std::vector<std::uint8_t> traits;
  };

  SeamGate& m_Gate;
  const std::size_t m_Kept;
  mutable std::mutex m_Mutex;
  BYTE m_Level = 5;
  REGHANDLE m_LastHandle = 0;
  std::map<REGHANDLE, Provider> m_Providers;
  std::deque<TraceEvent> m_Events;
  void (*m_Observe)(const TraceEvent&, void*) = nullptr;
  void* m_ObserveContext = nullptr;
};

}  // namespace corvane::platform::sim
