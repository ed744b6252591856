#include "foundation/semaphore.h"

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

CSemaphore::CSemaphore() : _semaphore(Os().threads.CreateSemaphoreW(0, 1, "CSemaphore")) {}

CSemaphore::~CSemaphore() {
  if (!_semaphore) return;
  GiveBack("CSemaphore", "CloseHandle", [this] { Os().threads.CloseHandle(_semaphore); });
}

void CSemaphore::IncReleaseCount() {
  LOG_DEBUG(DBG(23), u"CSemaphore::IncReleaseCount:[this=0x%p][_semaphore=0x%p][name=%S]", this,
            _semaphore, m_DebugName);
  if (!_semaphore) {
    LOG_ERROR(
        u"CSemaphore::IncReleaseCount:[this=0x%p][_semaphore=NULL][name=%S] ERROR! _semaphore is "
        u"NULL",
        this, m_DebugName);
    throw Exception("IncReleaseCount() ERROR: _semaphore is NULL");
  }
  if (Os().threads.ReleaseSemaphore(_semaphore, 1, nullptr)) return;
  const platform::DWORD code = Os().threads.GetLastError();
  LOG_ERROR(
      u"CSemaphore::IncReleaseCount:[this=0x%p][_semaphore=0x%p][name=%S] ERROR! "
      u"ReleaseSemaphore() "
      u"failed: %i%S",
      this, _semaphore, m_DebugName, code,
      code == platform::ERROR_TOO_MANY_POSTS ? " [ERROR_TOO_MANY_POSTS]" : "");
  throw Exception("CSemaphore::IncReleaseCount(0x%p) failed: %i", _semaphore, code);
}

bool CSemaphore::WaitOnSemaphore(std::uint32_t milliseconds) {
  LOG_DEBUG(DBG(23), u"CSemaphore::WaitOnSemaphore:[this=0x%p][_semaphore=0x%p][name=%S] %u ms",
            this, _semaphore, m_DebugName, milliseconds);
  if (!_semaphore) throw Exception("WaitOnSemaphore() ERROR: _semaphore is NULL");
  switch (Os().threads.WaitForSingleObject(_semaphore, milliseconds)) {
    case platform::WAIT_OBJECT_0:
      return true;
    case platform::WAIT_TIMEOUT:
      return false;
    default:
      throw Exception("WaitForXObject(0x%p) failed: %i", _semaphore, Os().threads.GetLastError());
  }
}

void CSemaphore::SetDebugName(std::string name) { m_DebugName = std::move(name); }

}  // namespace corvane
