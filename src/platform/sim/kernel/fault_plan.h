#pragma once
#include <cstdint>
#include <memory>

#include "platform/types.h"

namespace corvane::platform::sim {

// Which seam operations fail, and how. An operation is named by its Windows function, as a string
// that is compared by content. Rules are tried in the order in which they were given.
class FaultPlan {
 public:
  FaultPlan();
  ~FaultPlan();

  // As codes: the call faults (PlatformFault); the memory that it needs is not there
  // (std::bad_alloc).
  static constexpr DWORD kFault = 0xC0000005;
  static constexpr DWORD kNoMemory = 0xC0000017;

  // The n-th call from now (1 is the next) gives `code`.
  void FailCall(const char* operation, std::uint64_t n, DWORD code);
  // Every call between two times of the PC (milliseconds since it was made; to is not included).
  void FailDuring(const char* operation, std::uint64_t fromMs, std::uint64_t toMs, DWORD code);
  // Every call from now on, until Clear.
  void FailAlways(const char* operation, DWORD code);
  // Share of all calls of every operation that fail with their ordinary code. What would end the
  // serving of a pipe for good fails a hundred times more seldom.
  void FailRandomly(double rate, std::uint64_t seed);
  void Clear();

  // For the kernel: the code for this call at this time, 0 for none. `atRandom`: it may be one that
  // fails by chance; a call that may not draws no random number.
  DWORD Decide(const char* operation, DWORD ordinary, std::uint64_t nowMs, bool atRandom);
  std::uint64_t Injected() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> m_pImpl;
};

}  // namespace corvane::platform::sim
