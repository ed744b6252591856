#pragma once
#include <cstddef>
#include <string>

namespace corvane::platform {

// Overwrites memory with zeros, also where the compiler sees that nobody reads it any more.
void Wipe(void* memory, std::size_t bytes) noexcept;

// The same for a text, which is empty afterwards.
void Wipe(std::string* text) noexcept;

// Wipes memory, which stays where it is, at the end of the scope.
class WipeAtEnd {
 public:
  WipeAtEnd(void* memory, std::size_t bytes) : m_pMemory(memory), m_Bytes(bytes) {}
  ~WipeAtEnd() { Wipe(m_pMemory, m_Bytes); }
  WipeAtEnd(const WipeAtEnd&) = delete;
  WipeAtEnd& operator=(const WipeAtEnd&) = delete;

 private:
  void* const m_pMemory;
  const std::size_t m_Bytes;
};

}  // namespace corvane::platform
