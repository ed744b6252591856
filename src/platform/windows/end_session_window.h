#pragma once
#include <thread>

#include "platform/types.h"

namespace corvane::platform::windows {

// Hears of the end of the session. A console program that has user32.dll loaded is none to the
// system, which tells its windows and not its console's handler that the user signs out or the
// machine shuts down (SetConsoleCtrlHandler); the process ends once they have answered. A hidden
// window on a thread of its own: others may be in the way of the stop that they wait for.
class EndSessionWindow {
 public:
  static constexpr wchar_t kClass[] = L"CorvaneEndSession";

  // At the end of the session `stop` is set, and the system held up until `stopped` is, as long as
  // it lets itself. Both are events that outlive this. Where no window can be made, nothing is
  // heard.
  EndSessionWindow(HANDLE stop, HANDLE stopped);
  ~EndSessionWindow();  // behind `stopped`
  EndSessionWindow(const EndSessionWindow&) = delete;
  EndSessionWindow& operator=(const EndSessionWindow&) = delete;

 private:
  struct Events {
    HANDLE stop;
    HANDLE stopped;
  };
  void Run();

  Events m_Events;
  HANDLE m_Leave = nullptr;  // ends the thread
  std::thread m_Thread;
};

}  // namespace corvane::platform::windows
