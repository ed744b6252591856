#pragma once
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/heap_api.h"
#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform::sim {

// Private heaps. A driver that was handed an address reads and writes behind it only here, where it
// is known whether the memory still stands.
class SimHeap final : public HeapApi {
 public:
  explicit SimHeap(SeamGate& gate) : m_Gate(gate) {}

  HANDLE HeapCreate(DWORD options, std::size_t initialSize, std::size_t maximumSize) override;
  void* HeapAlloc(HANDLE heap, DWORD flags, std::size_t bytes) override;
  BOOL HeapFree(HANDLE heap, DWORD flags, void* memory) override;
  BOOL HeapDestroy(HANDLE heap) override;  // destroys, also where the call fails by injection

  // For the driver; without the gate. False, and nothing done, unless the words lie within one
  // block that stands. Each word is read or written at once.
  bool Read(std::uint64_t address, std::vector<std::uint32_t>* words) const;
  bool Write(std::uint64_t address, std::uint32_t word);
  std::size_t Count() const;  // heaps that stand

 private:
  // Zeroed, and as much larger than asked for as it takes to make whole words of it.
  using Block = std::vector<std::uint32_t>;
  struct Heap {
    std::vector<std::unique_ptr<Block>> blocks;
  };
  std::uint32_t* Find(std::uint64_t address, std::size_t words) const;

  SeamGate& m_Gate;
  mutable std::mutex m_Mutex;  // guards what follows
  std::map<HANDLE, Heap> m_Heaps;
  std::uintptr_t m_Next = 0;
};

}  // namespace corvane::platform::sim
