#pragma once
#include <string>

#include "platform/console_api.h"

namespace corvane::platform::sim {

class SeamGate;

// The console of the simulated PC: keeps what is written, and has one key.
class SimConsole final : public ConsoleApi {
 public:
  static constexpr std::size_t kKeptBytes = 256 * 1024;

  // With `echo` all output also goes to the real console.
  SimConsole(SeamGate& gate, bool echo) : m_Gate(gate), m_bEcho(echo) {}

  bool _kbhit() override;
  void WriteOutput(std::string_view text) override;
  void WriteError(std::string_view text) override;
  void FlushOutput() override;

  void PressKey() { m_bKey = true; }
  // Both streams as they were written, at most the last kKeptBytes.
  std::string Text() const;

 private:
  void Keep(std::string_view text);

  SeamGate& m_Gate;
  const bool m_bEcho;
  bool m_bKey = false;
  std::string m_Text;  // up to twice what is kept
};

}  // namespace corvane::platform::sim
