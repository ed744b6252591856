#pragma once
#include <memory>

#include "platform/console_api.h"
#include "platform/windows/end_session_window.h"

namespace corvane::platform::windows {

// The console of the process, one at a time. A key, Ctrl-C, Ctrl-Break, the stop event and the
// end of the window, of the session or of the machine ask for the orderly stop. The last three end
// the process as soon as their handlers return: they wait until this object is gone, as long as the
// system lets them (about 5 s).
class WindowsConsole final : public ConsoleApi {
 public:
  explicit WindowsConsole(HANDLE stopEvent);  // manual reset; outlives the console
  ~WindowsConsole() override;
  WindowsConsole(const WindowsConsole&) = delete;
  WindowsConsole& operator=(const WindowsConsole&) = delete;

  void PressKey();  // asks for the stop

  // Whether a console's event ends a process of this session. The programs of session 0, where the
  // task of the system runs, are told of every user who signs out, and stay.
  static bool IsStop(DWORD event, DWORD session);

  bool _kbhit() override;
  void WriteOutput(std::string_view text) override;  // UTF-8, also on a console
  void WriteError(std::string_view text) override;
  void FlushOutput() override {}

 private:
  const HANDLE m_Stop;
  bool m_IsConsole = false;
  std::unique_ptr<EndSessionWindow> m_pEndOfSession;
};

}  // namespace corvane::platform::windows
