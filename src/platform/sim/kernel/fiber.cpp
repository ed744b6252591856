#include "platform/sim/kernel/fiber.h"

#include <cxxabi.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#if defined(CORVANE_ADDRESS_SANITIZER)
#include <sanitizer/common_interface_defs.h>
#include <sanitizer/lsan_interface.h>
#endif

namespace corvane::platform::sim {

namespace {

constexpr std::size_t kStackSize = 512 * 1024;  // of which only what is touched takes memory
constexpr std::size_t kGuardSize = 4096;        // below it: an overflow ends the process
constexpr std::size_t kKeptStacks = 16;

thread_local std::vector<void*> t_KeptStacks;  // of fibers that are no more, for the next ones

void* TakeStack() {
  if (!t_KeptStacks.empty()) {
    void* stack = t_KeptStacks.back();
    t_KeptStacks.pop_back();
    return stack;
  }
  void* stack = mmap(nullptr, kStackSize, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
  if (stack == MAP_FAILED) throw std::bad_alloc();
  if (mprotect(stack, kGuardSize, PROT_NONE) != 0) {
    munmap(stack, kStackSize);
    throw std::bad_alloc();
  }
  return stack;
}

void GiveStack(void* stack) {
  if (t_KeptStacks.size() < kKeptStacks) {
    t_KeptStacks.push_back(stack);
  } else {
    munmap(stack, kStackSize);
  }
}

}  // namespace

#if defined(CORVANE_ADDRESS_SANITIZER)
thread_local Fiber* Fiber::t_pLeft = nullptr;  // whose stack's bounds are learnt on arrival
#endif

Fiber::Fiber() = default;

Fiber::Fiber(Body body, void* argument)
    : m_pBody(body), m_pArgument(argument), m_pStack(TakeStack()) {
  getcontext(&m_Context);
  m_Context.uc_stack.ss_sp = static_cast<char*>(m_pStack) + kGuardSize;
  m_Context.uc_stack.ss_size = kStackSize - kGuardSize;
  m_Context.uc_link = nullptr;
  // A context's function takes ints alone, so the pointer goes in two halves.
  const std::uint64_t self = reinterpret_cast<std::uintptr_t>(this);
  makecontext(&m_Context, reinterpret_cast<void (*)()>(&Fiber::Enter), 2,
              static_cast<unsigned>(self >> 32), static_cast<unsigned>(self));
#if defined(CORVANE_ADDRESS_SANITIZER)
  __lsan_register_root_region(m_Context.uc_stack.ss_sp, m_Context.uc_stack.ss_size);
#endif
}

Fiber::~Fiber() {
  if (!m_pStack) return;
#if defined(CORVANE_ADDRESS_SANITIZER)
  __lsan_unregister_root_region(m_Context.uc_stack.ss_sp, m_Context.uc_stack.ss_size);
#endif
  GiveStack(m_pStack);
}

void Fiber::Enter(unsigned high, unsigned low) {
  auto& self = *reinterpret_cast<Fiber*>(std::uintptr_t{high} << 32 | low);
  self.Arrived();
  self.m_pBody(self.m_pArgument);
}

void Fiber::SwitchTo(Fiber& next) {
  Leaving(next);
  swapcontext(&m_Context, &next.m_Context);
  Arrived();
}

void Fiber::Leaving([[maybe_unused]] Fiber& next) {
  std::memcpy(&m_Exceptions, abi::__cxa_get_globals(), sizeof m_Exceptions);
#if defined(CORVANE_ADDRESS_SANITIZER)
  t_pLeft = this;
  __sanitizer_start_switch_fiber(&m_pSanitizer, next.m_Context.uc_stack.ss_sp,
                                 next.m_Context.uc_stack.ss_size);
#endif
}

void Fiber::Arrived() {
#if defined(CORVANE_ADDRESS_SANITIZER)
  const void* bottom = nullptr;
  std::size_t size = 0;
  __sanitizer_finish_switch_fiber(m_pSanitizer, &bottom, &size);
  t_pLeft->m_Context.uc_stack.ss_sp = const_cast<void*>(bottom);
  t_pLeft->m_Context.uc_stack.ss_size = size;
#endif
  std::memcpy(abi::__cxa_get_globals(), &m_Exceptions, sizeof m_Exceptions);
}

}  // namespace corvane::platform::sim
