#include "wlan/wlan_buffer.h"

#include "foundation/guarded.h"
#include "platform/platform.h"
#include "platform/wlan_api.h"

namespace corvane {

void FreeWlanMemory(void* memory) noexcept {
  if (!memory) return;
  GiveBack("WlanBuffer", "WlanFreeMemory", [memory] { Os().wlan.WlanFreeMemory(memory); });
}

}  // namespace corvane
