#include "corvane_client/windows_terminal_screen.h"

namespace corvane::client {

ITerminalScreen::Wish CWindowsTerminalScreen::Look() {
  const bool anew = m_Console.IsResized();
  for (const char key : m_Console.Keys()) {
    if (key == 'q' || key == 'Q') return Wish::kEnd;
  }
  return anew ? Wish::kRedraw : Wish::kNone;
}

}  // namespace corvane::client
