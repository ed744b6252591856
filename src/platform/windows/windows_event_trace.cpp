#include "platform/windows/windows_event_trace.h"

#include <algorithm>

#include "platform/windows/library_call.h"

namespace corvane::platform::windows {

namespace {

// On a thread of the system, or within EventRegister: nothing may leave it.
void NTAPI OnEnable(const ::GUID* source, ::ULONG isEnabled, ::UCHAR level, ::ULONGLONG matchAny,
                    ::ULONGLONG matchAll, ::EVENT_FILTER_DESCRIPTOR* filter,
                    void* context) noexcept {
  auto& registration = *static_cast<EventRegistration*>(context);
  const std::lock_guard lock(registration.running);
  if (!registration.callback) return;
  try {
    registration.callback(As<const GUID>(source), isEnabled, level, matchAny, matchAll, filter,
                          registration.context);
  } catch (...) {
  }
}

}  // namespace

ULONG WindowsEventTrace::EventRegister(const GUID* provider, EnableCallback callback, void* context,
                                       REGHANDLE* handle) {
  EventRegistration* own = nullptr;
  if (callback) {
    const std::lock_guard lock(m_Mutex);
    own = &m_Registrations.emplace_back();
    own->callback = callback;
    own->context = context;
  }
  const ULONG code = ForwardIfFound("EventRegister", CORVANE_FIND(m_Library, EventRegister),
                                    As<const ::GUID>(provider), own ? &OnEnable : nullptr, own,
                                    As<::REGHANDLE>(handle));
  if (!own) return code;
  const std::lock_guard lock(m_Mutex);
  if (code == ERROR_SUCCESS) {
    own->handle = *handle;
  } else {
    m_Registrations.remove_if([&](const EventRegistration& it) { return &it == own; });
  }
  return code;
}

// Copies the information.
ULONG WindowsEventTrace::EventSetInformation(REGHANDLE handle, DWORD informationClass,
                                             const void* information, ULONG length) {
  return ForwardIfFound("EventSetInformation", CORVANE_FIND(m_Library, EventSetInformation), handle,
                        static_cast<::EVENT_INFO_CLASS>(informationClass),
                        const_cast<void*>(information), length);
}

ULONG WindowsEventTrace::EventWriteTransfer(REGHANDLE handle, const EVENT_DESCRIPTOR* descriptor,
                                            const GUID* activity, const GUID* related, ULONG count,
                                            const EVENT_DATA_DESCRIPTOR* data) {
  auto* const parts = As<::EVENT_DATA_DESCRIPTOR>(const_cast<EVENT_DATA_DESCRIPTOR*>(data));
  return ForwardIfFound("EventWriteTransfer", CORVANE_FIND(m_Library, EventWriteTransfer), handle,
                        As<const ::EVENT_DESCRIPTOR>(descriptor), As<const ::GUID>(activity),
                        As<const ::GUID>(related), count, parts);
}

ULONG WindowsEventTrace::EventUnregister(REGHANDLE handle) {
  EventRegistration* own = nullptr;
  if (handle != 0) {
    const std::lock_guard lock(m_Mutex);
    const auto found = std::ranges::find(m_Registrations, handle, &EventRegistration::handle);
    if (found != m_Registrations.end()) {
      own = &*found;
      own->handle = 0;  // the system may give it out again
    }
  }
  const ULONG code =
      ForwardIfFound("EventUnregister", CORVANE_FIND(m_Library, EventUnregister), handle);
  if (own) {
    const std::lock_guard lock(own->running);  // recursive: a callback may end its own provider
    own->callback = nullptr;
  }
  return code;
}

}  // namespace corvane::platform::windows
