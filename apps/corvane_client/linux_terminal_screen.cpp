#include "corvane_client/linux_terminal_screen.h"

namespace corvane::client {

ITerminalScreen::Wish CLinuxTerminalScreen::Look() {
  // A stop that was asked for comes first: it ends in another picture.
  const bool anew = m_Terminal.StopIfAsked() || m_Terminal.IsResized();
  for (const char key : m_Terminal.Keys()) {
    if (key == 'q' || key == 'Q') return Wish::kEnd;
  }
  return anew ? Wish::kRedraw : Wish::kNone;
}

}  // namespace corvane::client
