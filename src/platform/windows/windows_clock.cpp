#include "platform/windows/windows_clock.h"

#include "platform/windows/win32.h"

namespace corvane::platform::windows {

ULONGLONG WindowsClock::GetTickCount64() { return ::GetTickCount64(); }

void WindowsClock::GetSystemTimeAsFileTime(FILETIME* now) {
  ::GetSystemTimePreciseAsFileTime(As<::FILETIME>(now));
}

}  // namespace corvane::platform::windows
