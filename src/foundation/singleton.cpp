#include "foundation/singleton.h"

#include <utility>
#include <vector>

#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane::singletons {
namespace {

// The id of the thread that makes a singleton; 0 for none.
// Constructors may call the platform, where another thread may come in, so a waiting thread waits
// by the platform too.
std::atomic<platform::DWORD> s_Maker{0};
int s_Depth = 0;  // of the making thread

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
  const platform::DWORD self = Os().threads.GetCurrentThreadId();
  if (s_Maker.load(std::memory_order_acquire) != self) {
    platform::DWORD nobody = 0;
    while (!s_Maker.compare_exchange_weak(nobody, self, std::memory_order_acquire)) {
      if (nobody != 0) Os().threads.Sleep(1);
      nobody = 0;
    }
  }
  ++s_Depth;
}

CreationGuard::~CreationGuard() {
  if (--s_Depth == 0) s_Maker.store(0, std::memory_order_release);
}

void Register(void (*drop)()) {
  const CreationGuard guard;
  Drops().push_back(drop);
}

void DropAll() {
  while (const auto drop = TakeLast()) drop();
}

}  // namespace corvane::singletons
