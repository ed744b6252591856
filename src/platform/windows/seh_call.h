#pragma once
#include <cstdint>
#include <type_traits>

#include "platform/types.h"

namespace corvane::platform::windows {

// Runs function(argument); 0, or the code of the structured exception by which it ended: a fault of
// the processor, or what RPC raises. The system unwinds the frames in between, their __finally
// blocks included, but runs no destructor of this program: nothing may lie between but calls of the
// system. C++ exceptions pass. A stack overflow is not taken, as its guard page is gone afterwards.
// (`__C_specific_handler`, the language handler of the x64 exception tables.)
extern "C" std::uint32_t CorvaneSehCall(void (*function)(void*), void* argument);

// One call of the system. Should it fault, PlatformFault is thrown here, in an ordinary frame.
template <typename Fn>
auto OrFault(Fn&& fn) -> std::invoke_result_t<Fn> {
  using Result = std::invoke_result_t<Fn>;
  using Kept = std::conditional_t<std::is_void_v<Result>, char, Result>;
  struct Call {
    std::remove_reference_t<Fn>& fn;
    Kept result;
  } call{fn, Kept{}};
  const std::uint32_t code = CorvaneSehCall(
      [](void* argument) {
        auto& it = *static_cast<Call*>(argument);
        if constexpr (std::is_void_v<Result>) {
          it.fn();
        } else {
          it.result = it.fn();
        }
      },
      &call);
  if (code != 0) throw PlatformFault{code};
  if constexpr (!std::is_void_v<Result>) return call.result;
}

}  // namespace corvane::platform::windows
