#include "platform/sim/kernel/sim_console.h"

#include <algorithm>
#include <cstdio>

#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform::sim {

bool SimConsole::_kbhit() { return m_Gate.Enter("_kbhit") == ERROR_SUCCESS && m_bKey; }

void SimConsole::WriteOutput(std::string_view text) {
  if (m_Gate.Enter("WriteOutput") != ERROR_SUCCESS) return;
  Keep(text);
  if (m_bEcho) std::fwrite(text.data(), 1, text.size(), stdout);
}

void SimConsole::WriteError(std::string_view text) {
  if (m_Gate.Enter("WriteError") != ERROR_SUCCESS) return;
  Keep(text);
  if (m_bEcho) std::fwrite(text.data(), 1, text.size(), stderr);
}

void SimConsole::FlushOutput() {
  if (m_Gate.Enter("FlushOutput") == ERROR_SUCCESS && m_bEcho) std::fflush(stdout);
}

void SimConsole::Keep(std::string_view text) {
  m_Text += text;
  if (m_Text.size() > 2 * kKeptBytes) m_Text.erase(0, m_Text.size() - kKeptBytes);
}

std::string SimConsole::Text() const {
  return m_Text.substr(m_Text.size() - std::min(m_Text.size(), kKeptBytes));
}

}  // namespace corvane::platform::sim
