#include "platform/platform.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "platform/not_implemented.h"
#include "platform/thread_api.h"

namespace corvane::platform {

namespace {
std::atomic<const Platform*> g_Platform{nullptr};
}

const Platform& Os() {
  const Platform* platform = g_Platform.load(std::memory_order_acquire);
  if (!platform) {
    std::fputs("Os(): no platform is in force\n", stderr);
    std::abort();
  }
  return *platform;
}

void SetPlatform(const Platform* platform) {
  g_Platform.store(platform, std::memory_order_release);
}

void SetNotImplemented() {
  if (const Platform* platform = g_Platform.load(std::memory_order_acquire)) {
    platform->threads.SetLastError(ERROR_CALL_NOT_IMPLEMENTED);
  }
}

}  // namespace corvane::platform
