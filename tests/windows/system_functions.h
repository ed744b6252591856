#pragma once
// Functions with the types of the system's headers that stand in the place of a library's: each
// calls an operation of the seam's, of the simulated PC's services. So an operation of the Windows
// platform runs through all that it does with its arguments, and ends where its answer is known.
#include <cstring>
#include <span>
#include <type_traits>

// The program's headers come before the system's.
// clang-format off
#include "windows/system_pc.h"
#include "windows/faulty_library.h"
// clang-format on

namespace corvane::test {

// A service's value by the type of the other side: of the same size and meaning.
template <typename To, typename From>
To Pass(From from) {
  static_assert(sizeof(To) == sizeof(From));
  if constexpr (std::is_pointer_v<To> && std::is_pointer_v<From>) {
    return reinterpret_cast<To>(reinterpret_cast<std::uintptr_t>(from));
  } else {
    return static_cast<To>(from);
  }
}

// A function of this type whose calls are an operation of the service behind it.
template <auto Operation, typename Function>
class Behind;

template <typename Api, typename Result, typename... Seam, Result (Api::*Operation)(Seam...),
          typename SystemResult, typename... System>
class Behind<Operation, SystemResult(System...)> {
 public:
  static SystemResult Call(System... arguments) {
    ++calls;
    return static_cast<SystemResult>((g_pBehind<Api>->*Operation)(Pass<Seam>(arguments)...));
  }
  static inline int calls = 0;
};

// A function of a library by its name.
struct SystemFunction {
  const char* name;
  void* address;
  int* calls;  // made since the program began; null when nobody counts
};

template <auto Operation, typename Function>
SystemFunction FunctionOf(const char* name) {
  using It = Behind<Operation, Function>;
  return {name, reinterpret_cast<void*>(&It::Call), &It::calls};
}

inline int CallsOf(std::span<const SystemFunction> functions, const char* name) {
  for (const SystemFunction& function : functions) {
    if (std::strcmp(function.name, name) == 0) return *function.calls;
  }
  return -1;
}

inline void* FindIn(std::span<const SystemFunction> functions, const char* name) {
  for (const SystemFunction& function : functions) {
    if (std::strcmp(function.name, name) == 0) return function.address;
  }
  return nullptr;
}

}  // namespace corvane::test
