#pragma once
#include <cstddef>

#include "platform/types.h"

namespace corvane::platform {

inline constexpr DWORD HEAP_ZERO_MEMORY = 8;

// Private heaps. Null or FALSE on failure; the reason is not told. A heap belongs to who created it
// and goes by HeapDestroy, which frees its blocks; a block stays at its address until then or until
// HeapFree. Blocks are aligned for any type; their bytes are 0 with HEAP_ZERO_MEMORY, else any.
// Sizes are in bytes; `maximumSize` 0 lets the heap grow, and a backend may take both sizes as
// wishes. Safe for use from every thread, but for HeapDestroy, which nobody else may race.
class HeapApi {
 public:
  virtual ~HeapApi() = default;
  virtual HANDLE HeapCreate(DWORD options, std::size_t initialSize, std::size_t maximumSize);
  virtual void* HeapAlloc(HANDLE heap, DWORD flags, std::size_t bytes);
  virtual BOOL HeapFree(HANDLE heap, DWORD flags, void* memory);
  virtual BOOL HeapDestroy(HANDLE heap);
};

}  // namespace corvane::platform
