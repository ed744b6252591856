#include "foundation/crit_sec.h"

#include "platform/platform.h"

namespace corvane {

CCritSec::CCritSec(const char* name, LockRank rank) {
  Os().threads.InitializeCriticalSection(&m_Section, name, static_cast<int>(rank));
}

CCritSec::~CCritSec() { Os().threads.DeleteCriticalSection(&m_Section); }

void CCritSec::Lock() { Os().threads.EnterCriticalSection(&m_Section); }

void CCritSec::Unlock() { Os().threads.LeaveCriticalSection(&m_Section); }

}  // namespace corvane
