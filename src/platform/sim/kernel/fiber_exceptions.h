#pragma once
#include <cxxabi.h>

#include <cstring>

namespace corvane::platform::sim {

// The exceptions that a flow of control handles at the moment, which the C++ runtime keeps for each
// thread of the system (C++ ABI for Itanium, section 2.2.2).
class FiberExceptions {
 public:
  void Save() { std::memcpy(&m_Globals, abi::__cxa_get_globals(), sizeof m_Globals); }
  void Restore() const { std::memcpy(abi::__cxa_get_globals(), &m_Globals, sizeof m_Globals); }

 private:
  struct Globals {
    void* caught;
    unsigned uncaught;
  };
  Globals m_Globals{};
};

}  // namespace corvane::platform::sim
