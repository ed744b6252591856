#pragma once
#include "platform/thread_api.h"

namespace corvane {

// Ranks of locks, outermost first. A thread takes ranked locks in rising order only; taking the
// lock that it already holds is always allowed. The simulated PC fails a run that breaks the order.
enum class LockRank : int {
  kNone = 0,  // not checked
  kGlobalConfig = 10,
  kGlobalConfigSecond = 20,
  kAdapterConfig = 30,
  kInterface = 40,
  kNetwork = 42,
  kBssEntry = 44,
  kMaps = 50,          // wireless maps, gateway memo, AP set memos
  kNotifyQueue = 55,   // held during a delivery, under which providers take their own locks
  kEngineQueue = 56,   // commands for the engine, held during its calls
  kEngineSwitch = 58,  // from a start or stop of the engine to the note of it
  kObject = 60,        // the lock of any other counted object
  kEngineRun = 70,     // one start or stop of the load-balance engine at a time
  kEngine = 72,        // the engine's tables and words
  kEngineSlots = 74,   // its gateway slots
  kLeaf = 90,          // held for a few instructions, calls nothing
  kLogger = 100,
};

// A recursive critical section.
class CCritSec {
 public:
  explicit CCritSec(const char* name = "object", LockRank rank = LockRank::kObject);
  ~CCritSec();
  CCritSec(const CCritSec&) = delete;
  CCritSec& operator=(const CCritSec&) = delete;

  void Lock();
  void Unlock();

 private:
  platform::CRITICAL_SECTION m_Section;
};

// Scope guard over a lock, which may be null. Leaves at the end of the scope or earlier.
class CCritSecLock {
 public:
  explicit CCritSecLock(CCritSec* lock, bool enterNow = true) : m_pLock(lock) {
    if (enterNow) Enter();
  }
  explicit CCritSecLock(CCritSec& lock) : CCritSecLock(&lock) {}
  ~CCritSecLock() { Leave(); }
  CCritSecLock(const CCritSecLock&) = delete;
  CCritSecLock& operator=(const CCritSecLock&) = delete;

  void Enter() {
    if (m_pLock && !m_bEntered) m_pLock->Lock();
    m_bEntered = m_pLock != nullptr;
  }
  void Leave() {
    if (m_bEntered) m_pLock->Unlock();
    m_bEntered = false;
  }

 private:
  CCritSec* m_pLock;
  bool m_bEntered = false;
};

}  // namespace corvane
