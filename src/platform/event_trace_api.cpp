#include "platform/event_trace_api.h"

namespace corvane::platform {

ULONG EventTraceApi::EventRegister(const GUID*, EnableCallback, void*, REGHANDLE*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}
ULONG EventTraceApi::EventSetInformation(REGHANDLE, DWORD, const void*, ULONG) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}
ULONG EventTraceApi::EventWriteTransfer(REGHANDLE, const EVENT_DESCRIPTOR*, const GUID*,
                                        const GUID*, ULONG, const EVENT_DATA_DESCRIPTOR*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}
ULONG EventTraceApi::EventUnregister(REGHANDLE) { return ERROR_CALL_NOT_IMPLEMENTED; }

}  // namespace corvane::platform
