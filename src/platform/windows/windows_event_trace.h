#pragma once
#include <list>
#include <mutex>

#include "platform/event_trace_api.h"
#include "platform/windows/system_library.h"

namespace corvane::platform::windows {

// A provider's callback. The system does not say that it waits for one that runs when the provider
// goes, so the callback is taken out under a lock that it runs under, and the record stays.
struct EventRegistration {
  std::recursive_mutex running;
  EventTraceApi::EnableCallback callback = nullptr;  // null once the provider has gone
  void* context = nullptr;
  REGHANDLE handle = 0;
};

// Event tracing (evntprov.h, advapi32.dll).
class WindowsEventTrace final : public EventTraceApi {
 public:
  explicit WindowsEventTrace(const SystemLibrary& library = kLibrary) : m_Library(library) {}

  ULONG EventRegister(const GUID* provider, EnableCallback callback, void* context,
                      REGHANDLE* handle) override;
  ULONG EventSetInformation(REGHANDLE handle, DWORD informationClass, const void* information,
                            ULONG length) override;
  ULONG EventWriteTransfer(REGHANDLE handle, const EVENT_DESCRIPTOR* descriptor,
                           const GUID* activity, const GUID* related, ULONG count,
                           const EVENT_DATA_DESCRIPTOR* data) override;
  ULONG EventUnregister(REGHANDLE handle) override;

 private:
  static inline constinit const SystemLibrary kLibrary{L"advapi32.dll"};

  const SystemLibrary& m_Library;
  std::mutex m_Mutex;  // guards the list and the handles in it
  std::list<EventRegistration> m_Registrations;
};

}  // namespace corvane::platform::windows
