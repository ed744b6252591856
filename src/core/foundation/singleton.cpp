#include "core/foundation/singleton.h"

#include <utility>
#include <vector>

#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane::singletons {
namespace {

// The thread that makes a singleton, told by the address of a variable of its own; null for none.
// Constructors may call the platform, where another thread may come in, so a waiting thread waits by
// the platform too.
std::atomic<const void*> s_Maker{nullptr};
int s_Depth = 0;  // of the making thread

const void* ThisThread() {
  thread_local char here;
  return &here;
}

std::vector<void (*)()>& Drops() {
  static auto& drops = *new std::vector<void (*)()>;
  return drops;
}

void (*TakeLast())() {
  const CreationGuard guard;
  if (Drops().empty()) return nullptr;
  const auto last = Drops().back();
  Drops().pop_back();
  return last;
}

}  // namespace

CreationGuard::CreationGuard() {
  const void* const self = ThisThread();
  if (s_Maker.load(std::memory_order_acquire) != self) {
    const void* nobody = nullptr;
    while (!s_Maker.compare_exchange_weak(nobody, self, std::memory_order_acquire)) {
      if (nobody) Os().threads.Sleep(1);
      nobody = nullptr;
    }
  }
  ++s_Depth;
}

CreationGuard::~CreationGuard() {
  if (--s_Depth == 0) s_Maker.store(nullptr, std::memory_order_release);
}

void Register(void (*drop)()) {
  const CreationGuard guard;
  Drops().push_back(drop);
}

void DropAll() {
  while (const auto drop = TakeLast()) drop();
}

}  // namespace corvane::singletons
