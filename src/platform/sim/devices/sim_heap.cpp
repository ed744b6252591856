#include "platform/sim/devices/sim_heap.h"

#include <algorithm>
#include <atomic>

namespace corvane::platform::sim {

namespace {

constexpr std::uintptr_t kFirstHandle = 0x48000000;
constexpr std::size_t kWord = sizeof(std::uint32_t);

}  // namespace

HANDLE SimHeap::HeapCreate(DWORD, std::size_t, std::size_t) {
  if (m_Gate.Enter("HeapCreate") != ERROR_SUCCESS) return nullptr;
  const std::lock_guard guard(m_Mutex);
  auto* const handle = reinterpret_cast<HANDLE>(kFirstHandle + ++m_Next);
  m_Heaps.try_emplace(handle);
  return handle;
}

void* SimHeap::HeapAlloc(HANDLE heap, DWORD, std::size_t bytes) {
  if (m_Gate.Enter("HeapAlloc") != ERROR_SUCCESS) return nullptr;
  const std::lock_guard guard(m_Mutex);
  const auto found = m_Heaps.find(heap);
  if (found == m_Heaps.end()) return nullptr;
  found->second.blocks.push_back(std::make_unique<Block>((bytes + kWord - 1) / kWord + 1));
  return found->second.blocks.back()->data();
}

BOOL SimHeap::HeapFree(HANDLE heap, DWORD, void* memory) {
  bool freed = false;
  {
    const std::lock_guard guard(m_Mutex);
    if (const auto found = m_Heaps.find(heap); found != m_Heaps.end()) {
      freed = std::erase_if(found->second.blocks,
                            [memory](const auto& block) { return block->data() == memory; }) != 0;
    }
  }
  return m_Gate.Enter("HeapFree") == ERROR_SUCCESS && freed ? TRUE : FALSE;
}

BOOL SimHeap::HeapDestroy(HANDLE heap) {
  bool destroyed = false;
  {
    const std::lock_guard guard(m_Mutex);
    destroyed = m_Heaps.erase(heap) != 0;
  }
  return m_Gate.Enter("HeapDestroy") == ERROR_SUCCESS && destroyed ? TRUE : FALSE;
}

// Under the lock. Null unless all the words lie in one block.
std::uint32_t* SimHeap::Find(std::uint64_t address, std::size_t words) const {
  for (const auto& [handle, heap] : m_Heaps) {
    for (const auto& block : heap.blocks) {
      const auto begin = reinterpret_cast<std::uintptr_t>(block->data());
      if (address < begin || (address - begin) % kWord != 0) continue;
      const std::size_t at = (address - begin) / kWord;
      if (at <= block->size() && words <= block->size() - at) return block->data() + at;
    }
  }
  return nullptr;
}

bool SimHeap::Read(std::uint64_t address, std::vector<std::uint32_t>* words) const {
  const std::lock_guard guard(m_Mutex);
  std::uint32_t* const from = Find(address, words->size());
  if (!from) return false;
  for (std::size_t i = 0; i < words->size(); ++i) {
    (*words)[i] = std::atomic_ref<std::uint32_t>(from[i]).load(std::memory_order_acquire);
  }
  return true;
}

bool SimHeap::Write(std::uint64_t address, std::uint32_t word) {
  const std::lock_guard guard(m_Mutex);
  std::uint32_t* const to = Find(address, 1);
  if (!to) return false;
  std::atomic_ref<std::uint32_t>(*to).store(word);
  return true;
}

std::size_t SimHeap::Count() const {
  const std::lock_guard guard(m_Mutex);
  return m_Heaps.size();
}

}  // namespace corvane::platform::sim
