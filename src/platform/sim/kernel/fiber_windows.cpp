// Fibers of Win32.

#include <windows.h>

#include <new>

#include "platform/sim/kernel/fiber.h"
#include "platform/sim/kernel/fiber_exceptions.h"

namespace corvane::platform::sim {

namespace {

constexpr SIZE_T kStackSize = 512 * 1024;  // with a guard page of the system's below it
constexpr SIZE_T kCommitted = 64 * 1024;

}  // namespace

struct Fiber::Context {
  static void __stdcall Enter(void* context) {
    auto& self = *static_cast<Context*>(context);
    self.exceptions.Restore();
    self.body(self.argument);
  }

  Body body = nullptr;
  void* argument = nullptr;
  void* fiber = nullptr;
  bool isOwn = false;      // made here, not the thread's
  bool converted = false;  // the thread was no fiber before
  FiberExceptions exceptions;
};

Fiber::Fiber() : m_pContext(std::make_unique<Context>()) {
  m_pContext->converted = !IsThreadAFiber();
  m_pContext->fiber = m_pContext->converted
                          ? ConvertThreadToFiberEx(nullptr, FIBER_FLAG_FLOAT_SWITCH)
                          : GetCurrentFiber();
  if (!m_pContext->fiber) throw std::bad_alloc();
}

Fiber::Fiber(Body body, void* argument) : m_pContext(std::make_unique<Context>()) {
  m_pContext->body = body;
  m_pContext->argument = argument;
  m_pContext->isOwn = true;
  m_pContext->fiber = CreateFiberEx(kCommitted, kStackSize, FIBER_FLAG_FLOAT_SWITCH,
                                    &Context::Enter, m_pContext.get());
  if (!m_pContext->fiber) throw std::bad_alloc();
}

Fiber::~Fiber() {
  if (m_pContext->isOwn) DeleteFiber(m_pContext->fiber);
  if (m_pContext->converted) ConvertFiberToThread();
}

void Fiber::SwitchTo(Fiber& next) {
  m_pContext->exceptions.Save();
  SwitchToFiber(next.m_pContext->fiber);
  m_pContext->exceptions.Restore();
}

}  // namespace corvane::platform::sim
