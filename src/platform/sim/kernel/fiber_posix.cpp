// Fibers by contexts of POSIX, on stacks of our own.

#include <sys/mman.h>
#include <ucontext.h>

#include <cstdint>
#include <new>
#include <vector>

#include "platform/sim/kernel/fiber.h"
#include "platform/sim/kernel/fiber_exceptions.h"

#if defined(__SANITIZE_ADDRESS__)  // GCC's word for it
#define CORVANE_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define CORVANE_ADDRESS_SANITIZER 1
#endif
#endif

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

struct Fiber::Context {
  static void Enter(unsigned high, unsigned low) {
    auto& self = *reinterpret_cast<Context*>(std::uintptr_t{high} << 32 | low);
    self.Arrived();
    self.body(self.argument);
  }
  void Leaving(Context& next);
  void Arrived();

  ucontext_t machine{};
  FiberExceptions exceptions;
  Body body = nullptr;
  void* argument = nullptr;
  void* stack = nullptr;  // null: it runs on a stack that is not its own
#if defined(CORVANE_ADDRESS_SANITIZER)
  static thread_local Context* t_pLeft;  // whose stack's bounds are learnt on arrival
  void* sanitizer = nullptr;             // what the sanitizer keeps of it
#endif
};

#if defined(CORVANE_ADDRESS_SANITIZER)
thread_local Fiber::Context* Fiber::Context::t_pLeft = nullptr;
#endif

void Fiber::Context::Leaving([[maybe_unused]] Context& next) {
  exceptions.Save();
#if defined(CORVANE_ADDRESS_SANITIZER)
  t_pLeft = this;
  __sanitizer_start_switch_fiber(&sanitizer, next.machine.uc_stack.ss_sp,
                                 next.machine.uc_stack.ss_size);
#endif
}

void Fiber::Context::Arrived() {
#if defined(CORVANE_ADDRESS_SANITIZER)
  const void* bottom = nullptr;
  std::size_t size = 0;
  __sanitizer_finish_switch_fiber(sanitizer, &bottom, &size);
  t_pLeft->machine.uc_stack.ss_sp = const_cast<void*>(bottom);
  t_pLeft->machine.uc_stack.ss_size = size;
#endif
  exceptions.Restore();
}

Fiber::Fiber() : m_pContext(std::make_unique<Context>()) {}

Fiber::Fiber(Body body, void* argument) : m_pContext(std::make_unique<Context>()) {
  Context& context = *m_pContext;
  context.body = body;
  context.argument = argument;
  context.stack = TakeStack();
  getcontext(&context.machine);
  context.machine.uc_stack.ss_sp = static_cast<char*>(context.stack) + kGuardSize;
  context.machine.uc_stack.ss_size = kStackSize - kGuardSize;
  context.machine.uc_link = nullptr;
  // A context's function takes ints alone, so the pointer goes in two halves.
  const std::uint64_t self = reinterpret_cast<std::uintptr_t>(&context);
  makecontext(&context.machine, reinterpret_cast<void (*)()>(&Context::Enter), 2,
              static_cast<unsigned>(self >> 32), static_cast<unsigned>(self));
#if defined(CORVANE_ADDRESS_SANITIZER)
  __lsan_register_root_region(context.machine.uc_stack.ss_sp, context.machine.uc_stack.ss_size);
#endif
}

Fiber::~Fiber() {
  if (!m_pContext->stack) return;
#if defined(CORVANE_ADDRESS_SANITIZER)
  const auto& own = m_pContext->machine.uc_stack;
  __lsan_unregister_root_region(own.ss_sp, own.ss_size);
#endif
  GiveStack(m_pContext->stack);
}

void Fiber::SwitchTo(Fiber& next) {
  m_pContext->Leaving(*next.m_pContext);
  swapcontext(&m_pContext->machine, &next.m_pContext->machine);
  m_pContext->Arrived();
}

}  // namespace corvane::platform::sim
