#include "platform/windows/pipe_records.h"

#include "platform/windows/pipe_calls.h"
#include "platform/windows/system_call.h"

namespace corvane::platform::windows {

// A block that the system may still write to is not this object's to release.
PipeRecords::~PipeRecords() {
  for (const auto& [memory, block] : m_Blocks) {
    if (!PipeCalls::Instance().Uses(memory, block.size)) ::VirtualFree(memory, 0, MEM_RELEASE);
  }
}

void* PipeRecords::Allocate(std::size_t bytes) {
  void* const memory = ForwardOrFail("GlobalAlloc", [&] {
    return ::VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  });
  if (!memory) return nullptr;
  const std::lock_guard lock(m_Mutex);
  m_Blocks[memory] = {bytes};
  return memory;
}

void PipeRecords::Free(void* memory) {
  const std::lock_guard lock(m_Mutex);
  const auto block = m_Blocks.find(memory);
  if (block == m_Blocks.end()) return;
  block->second.freed = true;
  ReleaseFreedLocked();
}

void PipeRecords::ReleaseFreed() {
  const std::lock_guard lock(m_Mutex);
  ReleaseFreedLocked();
}

void PipeRecords::ReleaseFreedLocked() {
  std::erase_if(m_Blocks, [](const auto& entry) {
    const auto& [memory, block] = entry;
    if (!block.freed || PipeCalls::Instance().Uses(memory, block.size)) return false;
    ::VirtualFree(memory, 0, MEM_RELEASE);
    return true;
  });
}

std::size_t PipeRecords::Count() const {
  const std::lock_guard lock(m_Mutex);
  return m_Blocks.size();
}

}  // namespace corvane::platform::windows
