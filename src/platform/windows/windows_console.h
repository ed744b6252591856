#pragma once
#include "platform/console_api.h"

namespace corvane::platform::windows {

// The console of the process, one at a time. A key, Ctrl-C, Ctrl-Break, the stop event and the
// closing of the window, of the session or of the machine ask for the orderly stop. The last three
// end the process as soon as their handler returns: it waits until this object is gone, as long as
// the system lets it (about 5 s).
class WindowsConsole final : public ConsoleApi {
 public:
  explicit WindowsConsole(HANDLE stopEvent);  // manual reset; outlives the console
  ~WindowsConsole() override;
  WindowsConsole(const WindowsConsole&) = delete;
  WindowsConsole& operator=(const WindowsConsole&) = delete;

  void PressKey();  // asks for the stop

  bool _kbhit() override;
  void WriteOutput(std::string_view text) override;  // UTF-8, also on a console
  void WriteError(std::string_view text) override;
  void FlushOutput() override {}

 private:
  const HANDLE m_Stop;
  bool m_IsConsole = false;
};

}  // namespace corvane::platform::windows
