#pragma once
#include "platform/heap_api.h"

namespace corvane::platform::windows {

// Private heaps.
class WindowsHeap final : public HeapApi {
 public:
  HANDLE HeapCreate(DWORD options, std::size_t initialSize, std::size_t maximumSize) override;
  void* HeapAlloc(HANDLE heap, DWORD flags, std::size_t bytes) override;
  BOOL HeapFree(HANDLE heap, DWORD flags, void* memory) override;
  BOOL HeapDestroy(HANDLE heap) override;
};

}  // namespace corvane::platform::windows
