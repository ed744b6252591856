#pragma once
#include "platform/types.h"

namespace corvane::platform::windows {

// This machine's one running service, and the event by which others ask it to stop. Both are named
// in the machine's own namespace and belong to administrators and the system.
class WindowsInstance {
 public:
  // With `share` it runs beside another and keeps nobody out. Throws WindowsError when another
  // instance runs, or when the names cannot be had.
  explicit WindowsInstance(bool share);
  ~WindowsInstance();
  WindowsInstance(const WindowsInstance&) = delete;
  WindowsInstance& operator=(const WindowsInstance&) = delete;

  HANDLE StopEvent() const { return m_Stop; }  // manual reset; the system's

  // For the program's other modes: whether a service runs, and an asked-for stop. RequestStop waits
  // up to `milliseconds` for the end of the service; 0, or the error itself (WAIT_TIMEOUT).
  static bool IsRunning();
  static DWORD RequestStop(DWORD milliseconds);

 private:
  void Adopt() const;

  HANDLE m_Mutex = nullptr;
  HANDLE m_Stop = nullptr;
};

}  // namespace corvane::platform::windows
