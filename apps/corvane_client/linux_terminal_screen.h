#pragma once
#include "corvane_client/terminal_screen.h"
#include "platform/linux/live_terminal.h"

namespace corvane::client {

// The terminal of standard output on this host.
class CLinuxTerminalScreen : public ITerminalScreen {
 public:
  Wish Look() override;

 private:
  platform::linux_host::LiveTerminal m_Terminal;
};

}  // namespace corvane::client
