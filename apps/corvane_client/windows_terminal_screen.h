#pragma once
#include "corvane_client/terminal_screen.h"
#include "platform/windows/windows_client_host.h"

namespace corvane::client {

// The console of standard output on this host.
class CWindowsTerminalScreen : public ITerminalScreen {
 public:
  Wish Look() override;

 private:
  platform::windows::LiveConsole m_Console;
};

}  // namespace corvane::client
