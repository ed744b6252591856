#include "platform/windows/windows_heap.h"

#include "platform/windows/system_call.h"

namespace corvane::platform::windows {

HANDLE WindowsHeap::HeapCreate(DWORD options, std::size_t initialSize, std::size_t maximumSize) {
  return ForwardOrFail("HeapCreate",
                       [&] { return ::HeapCreate(options, initialSize, maximumSize); });
}

// Leaves no last error (heapapi.h).
void* WindowsHeap::HeapAlloc(HANDLE heap, DWORD flags, std::size_t bytes) {
  return Forward("HeapAlloc", [&] { return ::HeapAlloc(heap, flags, bytes); });
}

BOOL WindowsHeap::HeapFree(HANDLE heap, DWORD flags, void* memory) {
  return ForwardOrFail("HeapFree", [&] { return ::HeapFree(heap, flags, memory); });
}

BOOL WindowsHeap::HeapDestroy(HANDLE heap) {
  return ForwardOrFail("HeapDestroy", [&] { return ::HeapDestroy(heap); });
}

}  // namespace corvane::platform::windows
