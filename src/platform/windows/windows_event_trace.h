#pragma once
#include "platform/event_trace_api.h"

namespace corvane::platform::windows {

// Event tracing (evntprov.h).
class WindowsEventTrace final : public EventTraceApi {
 public:
  ULONG EventRegister(const GUID* provider, EnableCallback callback, void* context,
                      REGHANDLE* handle) override;
  ULONG EventSetInformation(REGHANDLE handle, DWORD informationClass, const void* information,
                            ULONG length) override;
  ULONG EventWriteTransfer(REGHANDLE handle, const EVENT_DESCRIPTOR* descriptor,
                           const GUID* activity, const GUID* related, ULONG count,
                           const EVENT_DATA_DESCRIPTOR* data) override;
  ULONG EventUnregister(REGHANDLE handle) override;
};

}  // namespace corvane::platform::windows
