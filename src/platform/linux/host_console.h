#pragma once
#include "platform/console_api.h"

namespace corvane::platform::linux_host {

// The console of the process, one at a time. SIGINT, SIGTERM and SIGHUP are the console key: the
// first asks for the orderly stop, a second ends the process at once with 128 + its number.
// A reader of the output that has gone away does not end the process.
class HostConsole final : public ConsoleApi {
 public:
  HostConsole();
  ~HostConsole() override;  // the signals act as before
  HostConsole(const HostConsole&) = delete;
  HostConsole& operator=(const HostConsole&) = delete;

  void PressKey();  // as the first signal does

  bool _kbhit() override;
  void WriteOutput(std::string_view text) override;
  void WriteError(std::string_view text) override;
  void FlushOutput() override;
};

}  // namespace corvane::platform::linux_host
