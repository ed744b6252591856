#pragma once
#include <cstddef>

#include "platform/types.h"

namespace corvane::platform {

inline constexpr DWORD HEAP_ZERO_MEMORY = 8;

// Private heaps. Null or FALSE on failure. Blocks stay at their address; destroying the heap frees
// all of them. Safe for use from every thread.
class HeapApi {
 public:
  virtual ~HeapApi() = default;
  virtual HANDLE HeapCreate(DWORD options, std::size_t initialSize, std::size_t maximumSize);
  virtual void* HeapAlloc(HANDLE heap, DWORD flags, std::size_t bytes);
  virtual BOOL HeapFree(HANDLE heap, DWORD flags, void* memory);
  virtual BOOL HeapDestroy(HANDLE heap);
};

}  // namespace corvane::platform
