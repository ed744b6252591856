#include "foundation/win_event.h"

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

CWinEvent::CWinEvent() {
  auto& threads = Os().threads;
  _event = threads.CreateEventW(platform::TRUE, platform::FALSE, "CWinEvent::_event");
  _eventExit = threads.CreateEventW(platform::TRUE, platform::FALSE, "CWinEvent::_eventExit");
  if (_event && _eventExit) return;
  if (_event) threads.CloseHandle(_event);
  if (_eventExit) threads.CloseHandle(_eventExit);
  throw Exception("CreateEvent(): failed");
}

CWinEvent::~CWinEvent() {
  for (const platform::HANDLE handle : {_event, _eventExit})
    GiveBack("CWinEvent", "CloseHandle", [handle] { Os().threads.CloseHandle(handle); });
}

void CWinEvent::SetEvent() { Signal(_event, "SetEvent", "_event"); }

void CWinEvent::SetExitEvent() { Signal(_eventExit, "SetExitEvent", "_eventExit"); }

void CWinEvent::Signal(platform::HANDLE handle, const char* operation, const char* member) {
  LOG_DEBUG(DBG(12), u"CWinEvent::%S:[this=0x%p][%S=0x%p][name=%S]", operation, this, member,
            handle, m_DebugName);
  if (!handle) {
    LOG_ERROR(u"CWinEvent::%S() ERROR: %S is NULL", operation, member);
    throw Exception(FormatA("%s() ERROR: %s is NULL", operation, member));
  }
  if (Os().threads.SetEvent(handle)) return;
  const platform::DWORD code = Os().threads.GetLastError();
  const Exception failure(FormatA("%s(0x%%p) failed: %%i", operation), handle, code);
  LOG_ERROR(u"%S", failure.what());
  throw failure;
}

bool CWinEvent::WaitOnEvent(std::uint32_t milliseconds, bool* timedOut) {
  auto& threads = Os().threads;
  if (timedOut) *timedOut = false;
  LOG_DEBUG(DBG(12), u"CWinEvent::WaitOnEvent:[this=0x%p][_event=0x%p][name=%S] %u ms", this,
            _event, m_DebugName, milliseconds);

  // The first signalled handle in order decides, so the event comes before the exit signal.
  const platform::HANDLE handles[] = {_event, _eventExit};
  const platform::DWORD result = Guarded(
      "CWinEvent", "WaitForMultipleObjects", platform::WAIT_FAILED,
      [&] { return threads.WaitForMultipleObjects(2, handles, platform::FALSE, milliseconds); });
  switch (result) {
    case platform::WAIT_OBJECT_0:
      threads.ResetEvent(_event);
      return true;
    case platform::WAIT_OBJECT_0 + 1:
      threads.ResetEvent(_eventExit);
      return false;
    case platform::WAIT_TIMEOUT:
      if (timedOut) *timedOut = true;
      return false;
    default:
      throw Exception("WaitForXObject(0x%p) failed: %i", _event, threads.GetLastError());
  }
}

bool CWinEvent::ResetEvent() { return Os().threads.ResetEvent(_event) != platform::FALSE; }

void CWinEvent::SetDebugName(std::string name) { m_DebugName = std::move(name); }

}  // namespace corvane
