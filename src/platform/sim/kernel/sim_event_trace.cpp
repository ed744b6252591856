#include "platform/sim/kernel/sim_event_trace.h"

#include <iterator>
#include <utility>

#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform::sim {

ULONG SimEventTrace::EventRegister(const GUID* provider, EnableCallback callback, void* context,
                                   REGHANDLE* handle) {
  if (const DWORD code = m_Gate.Enter("EventRegister"); code != ERROR_SUCCESS) return code;
  if (!provider || !handle) return ERROR_INVALID_PARAMETER;
  BYTE level = 0;
  {
    const std::lock_guard guard(m_Mutex);
    *handle = ++m_LastHandle;
    m_Providers[*handle] = {*provider, callback, context, {}};
    level = m_Level;
  }
  if (callback && level != 0)
    callback(provider, EVENT_CONTROL_CODE_ENABLE_PROVIDER, level, 0, 0, nullptr, context);
  return ERROR_SUCCESS;
}

ULONG SimEventTrace::EventSetInformation(REGHANDLE handle, DWORD informationClass,
                                         const void* information, ULONG length) {
  if (const DWORD code = m_Gate.Enter("EventSetInformation"); code != ERROR_SUCCESS) return code;
  const std::lock_guard guard(m_Mutex);
  const auto found = m_Providers.find(handle);
  if (found == m_Providers.end()) return ERROR_INVALID_HANDLE;
  if (informationClass != EventProviderSetTraits || !information) return ERROR_INVALID_PARAMETER;
  const auto* bytes = static_cast<const std::uint8_t*>(information);
  found->second.traits.assign(bytes, bytes + length);
  return ERROR_SUCCESS;
}

ULONG SimEventTrace::EventWriteTransfer(REGHANDLE handle, const EVENT_DESCRIPTOR* descriptor,
                                        const GUID*, const GUID*, ULONG count,
                                        const EVENT_DATA_DESCRIPTOR* data) {
  if (const DWORD code = m_Gate.Enter("EventWriteTransfer"); code != ERROR_SUCCESS) return code;
  const auto event = ReadTraceEvent(*descriptor, {data, count});
  if (!event) return ERROR_INVALID_PARAMETER;
  void (*observe)(const TraceEvent&, void*) = nullptr;
  void* context = nullptr;
  {
    const std::lock_guard guard(m_Mutex);
    if (!m_Providers.contains(handle)) return ERROR_INVALID_HANDLE;
    if (m_Level < descriptor->Level) return ERROR_SUCCESS;
    m_Events.push_back(*event);
    if (m_Events.size() > m_Kept) m_Events.pop_front();
    observe = m_Observe;
    context = m_ObserveContext;
  }
  if (observe) observe(*event, context);
  return ERROR_SUCCESS;
}

ULONG SimEventTrace::EventUnregister(REGHANDLE handle) {
  if (const DWORD code = m_Gate.Enter("EventUnregister"); code != ERROR_SUCCESS) return code;
  const std::lock_guard guard(m_Mutex);
  return m_Providers.erase(handle) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

void SimEventTrace::Listen(BYTE level) {
  {
    const std::lock_guard guard(m_Mutex);
    m_Level = level;
  }
  Control(level != 0 ? EVENT_CONTROL_CODE_ENABLE_PROVIDER : EVENT_CONTROL_CODE_DISABLE_PROVIDER,
          level);
}

void SimEventTrace::Control(DWORD code, BYTE level) {
  std::vector<Provider> providers;
  {
    const std::lock_guard guard(m_Mutex);
    for (const auto& [handle, provider] : m_Providers) providers.push_back(provider);
  }
  for (const Provider& provider : providers) {
    if (provider.callback) {
      provider.callback(&provider.id, code, level, 0, 0, nullptr, provider.context);
    }
  }
}

std::vector<TraceEvent> SimEventTrace::TakeEvents() {
  const std::lock_guard guard(m_Mutex);
  std::vector<TraceEvent> events(std::make_move_iterator(m_Events.begin()),
                                 std::make_move_iterator(m_Events.end()));
  m_Events.clear();
  return events;
}

std::vector<std::uint8_t> SimEventTrace::Traits() const {
  const std::lock_guard guard(m_Mutex);
  return m_Providers.empty() ? std::vector<std::uint8_t>() : m_Providers.begin()->second.traits;
}

std::size_t SimEventTrace::OpenHandles() const {
  const std::lock_guard guard(m_Mutex);
  return m_Providers.size();
}

void SimEventTrace::SetObserver(void (*observe)(const TraceEvent& event, void* context),
                                void* context) {
  const std::lock_guard guard(m_Mutex);
  m_Observe = observe;
  m_ObserveContext = context;
}

}  // namespace corvane::platform::sim
