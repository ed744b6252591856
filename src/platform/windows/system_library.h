#pragma once
#include <atomic>

namespace corvane::platform::windows {

// The functions of one library of the system, loaded when it is first asked for and from the
// system's own folder only. A library or a function that this Windows lacks is null; the operations
// that need it answer so. Safe for use from every thread. Libraries stay loaded until the process
// ends, as threads of the system may still be inside.
class SystemLibrary {
 public:
  // Gives a function by its name, null for none. What a test puts in the library's place.
  using Resolver = void* (*)(const char* function);

  explicit constexpr SystemLibrary(const wchar_t* file) : m_File(file) {}
  explicit constexpr SystemLibrary(Resolver resolver) : m_Resolver(resolver) {}

  template <typename Function>
  Function* Find(const char* function) const {
    return reinterpret_cast<Function*>(FindAddress(function));
  }

 private:
  void* FindAddress(const char* function) const;

  const wchar_t* m_File = nullptr;
  mutable std::atomic<void*> m_pModule{nullptr};
  Resolver m_Resolver = nullptr;
};

}  // namespace corvane::platform::windows

// The function of `library` with the type that the system's header declares; null when it is
// missing.
#define CORVANE_FIND(library, function) (library).Find<decltype(::function)>(#function)
