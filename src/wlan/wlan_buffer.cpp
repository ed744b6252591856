#include "wlan/wlan_buffer.h"

#include "foundation/guarded.h"
#include "platform/platform.h"
#include "platform/wlan_api.h"

namespace corvane {

void FreeWlanMemory(void* memory) noexcept {
  if (!memory) return;
  try {
    Os().wlan.WlanFreeMemory(memory);
  } catch (const platform::PlatformFault& fault) {
    ReportFault("WlanBuffer", "WlanFreeMemory", fault.code);
  } catch (const platform::ThreadAbandoned&) {
    // An owner is often destroyed while its thread unwinds; the thread's next call ends it.
  }
}

}  // namespace corvane
