#pragma once
#include <cstddef>
#include <map>
#include <mutex>

namespace corvane::platform::windows {

// The records of clients: blocks of zeroed pages of their own, which cost memory once they are
// touched. A block that is freed while an operation in it is pending stays until that has ended.
class PipeRecords {
 public:
  PipeRecords() = default;
  ~PipeRecords();
  PipeRecords(const PipeRecords&) = delete;
  PipeRecords& operator=(const PipeRecords&) = delete;

  void* Allocate(std::size_t bytes);  // null with the system's last error kept as the thread's
  void Free(void* memory);            // what is no record is left alone
  void ReleaseFreed();
  std::size_t Count() const;  // those that are not released

 private:
  struct Block {
    std::size_t size = 0;
    bool freed = false;
  };
  void ReleaseFreedLocked();

  mutable std::mutex m_Mutex;
  std::map<void*, Block> m_Blocks;
};

}  // namespace corvane::platform::windows
