#pragma once
// Writes to memory that the driver reads without a lock. Only the engine's own threads write it,
// under the engine lock, so they read it plainly; the status word alone is written by both sides.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace corvane {

template <typename T>
void Put(T& field, std::type_identity_t<T> value) {
  if (field != value) std::atomic_ref<T>(field).store(value, std::memory_order_relaxed);
}

// Bytes of a field; nothing is written where nothing changes.
inline void PutBytes(void* field, const void* value, std::size_t bytes) {
  if (std::memcmp(field, value, bytes) == 0) return;
  auto* to = static_cast<std::uint8_t*>(field);
  const auto* from = static_cast<const std::uint8_t*>(value);
  for (std::size_t i = 0; i < bytes; ++i) {
    std::atomic_ref<std::uint8_t>(to[i]).store(from[i], std::memory_order_relaxed);
  }
}

inline void PutZero(void* field, std::size_t bytes) {
  auto* to = static_cast<std::uint8_t*>(field);
  for (std::size_t i = 0; i < bytes; ++i) Put(to[i], 0);
}

// Words that tell the driver that what was written before them is whole.
inline void Publish(std::uint32_t& word, std::uint32_t value) {
  std::atomic_ref<std::uint32_t>(word).exchange(value);
}
inline std::uint32_t ReadShared(std::uint32_t& word) {
  return std::atomic_ref<std::uint32_t>(word).load();
}

// A copy of words that the driver may write meanwhile, its own status words among them.
inline void CopyShared(void* from, void* to, std::size_t bytes) {
  auto* const words = static_cast<std::uint32_t*>(from);
  auto* const copy = static_cast<std::uint8_t*>(to);
  for (std::size_t i = 0; i < bytes / sizeof(std::uint32_t); ++i) {
    const std::uint32_t word = ReadShared(words[i]);
    std::memcpy(copy + i * sizeof(word), &word, sizeof(word));
  }
}

}  // namespace corvane
