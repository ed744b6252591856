#include "platform/linux/host_heap.h"

#include <cstdlib>
#include <mutex>
#include <new>
#include <set>

namespace corvane::platform::linux_host {

namespace {

struct Heap {
  ~Heap() {
    for (void* block : blocks) std::free(block);
  }
  std::mutex mutex;
  std::set<void*> blocks;
};

Heap* HeapOf(HANDLE handle) { return static_cast<Heap*>(handle); }

}  // namespace

HANDLE HostHeap::HeapCreate(DWORD, std::size_t, std::size_t) { return new (std::nothrow) Heap; }

void* HostHeap::HeapAlloc(HANDLE heap, DWORD, std::size_t bytes) {
  void* const block = std::calloc(1, bytes);
  if (!block) return nullptr;
  const std::lock_guard guard(HeapOf(heap)->mutex);
  HeapOf(heap)->blocks.insert(block);
  return block;
}

BOOL HostHeap::HeapFree(HANDLE heap, DWORD, void* memory) {
  const std::lock_guard guard(HeapOf(heap)->mutex);
  if (HeapOf(heap)->blocks.erase(memory) == 0) return FALSE;
  std::free(memory);
  return TRUE;
}

BOOL HostHeap::HeapDestroy(HANDLE heap) {
  if (!heap) return FALSE;
  delete HeapOf(heap);
  return TRUE;
}

}  // namespace corvane::platform::linux_host
