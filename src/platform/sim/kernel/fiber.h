#pragma once
#include <memory>

namespace corvane::platform::sim {

// A flow of control with a stack of its own, which runs from when it is switched to until it
// switches to another. All fibers that switch to each other belong to one thread of the system, so
// a hand-over costs no trip through its scheduler. What C++ keeps for each thread, the exceptions
// being handled, is kept for each fiber.
class Fiber {
 public:
  using Body = void (*)(void* argument);  // may not return: a fiber's last act is a switch

  Fiber();                           // the flow of control that calls
  Fiber(Body body, void* argument);  // begins with the first switch to it; throws std::bad_alloc
  ~Fiber();                          // while it does not run; its stack is not unwound
  Fiber(const Fiber&) = delete;
  Fiber& operator=(const Fiber&) = delete;

  // On this fiber. Returns when somebody switches back.
  void SwitchTo(Fiber& next);

 private:
  struct Context;  // by the system: fiber_posix.cpp, fiber_windows.cpp
  std::unique_ptr<Context> m_pContext;
};

}  // namespace corvane::platform::sim
