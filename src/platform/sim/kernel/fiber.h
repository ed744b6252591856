#pragma once
#include <ucontext.h>

#if defined(__SANITIZE_ADDRESS__)  // GCC's word for it
#define CORVANE_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define CORVANE_ADDRESS_SANITIZER 1
#endif
#endif

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
  // As the C++ ABI for Itanium lays it out, section 2.2.2.
  struct Exceptions {
    void* caught;
    unsigned uncaught;
  };

  static void Enter(unsigned high, unsigned low);
  void Leaving(Fiber& next);
  void Arrived();

  ucontext_t m_Context;
  Exceptions m_Exceptions{};
  Body m_pBody = nullptr;
  void* m_pArgument = nullptr;
  void* m_pStack = nullptr;  // null: it runs on a stack that is not its own
#if defined(CORVANE_ADDRESS_SANITIZER)
  static thread_local Fiber* t_pLeft;
  void* m_pSanitizer = nullptr;  // what the sanitizer keeps of it
#endif
};

}  // namespace corvane::platform::sim
