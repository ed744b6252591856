#pragma once
#include <atomic>

namespace corvane {

// A lock that needs no platform, for state that outlives any one platform. It is held for a few
// instructions that call nothing of the platform, so nobody waits long.
class CSpinLock {
 public:
  constexpr CSpinLock() = default;
  CSpinLock(const CSpinLock&) = delete;
  CSpinLock& operator=(const CSpinLock&) = delete;

  void Lock() {
    while (m_Taken.test_and_set(std::memory_order_acquire)) {
      m_Taken.wait(true, std::memory_order_relaxed);
    }
  }
  void Unlock() {
    m_Taken.clear(std::memory_order_release);
    m_Taken.notify_one();
  }

 private:
  std::atomic_flag m_Taken;
};

class CSpinLockGuard {
 public:
  explicit CSpinLockGuard(CSpinLock& lock) : m_Lock(lock) { m_Lock.Lock(); }
  ~CSpinLockGuard() { m_Lock.Unlock(); }
  CSpinLockGuard(const CSpinLockGuard&) = delete;
  CSpinLockGuard& operator=(const CSpinLockGuard&) = delete;

 private:
  CSpinLock& m_Lock;
};

}  // namespace corvane
