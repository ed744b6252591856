#include "foundation/invariant.h"

#include "foundation/log_lines.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

void OnBrokenInvariant(const char* text) noexcept {
  try {
    LOG_ERROR(u"Invariant: broken: %S", text);
  } catch (...) {
    // The report below is the other half.
  }
  Os().threads.ReportBroken(text);
}

}  // namespace corvane
