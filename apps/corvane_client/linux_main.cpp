#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "corvane_client/client_commands.h"
#include "corvane_client/client_error.h"
#include "corvane_client/linux_service_access.h"
#include "corvane_client/linux_terminal_screen.h"
#include "platform/linux/client_host.h"
#include "platform/linux/host_options.h"

int main(int argc, char** argv) {
  using namespace corvane;
  namespace host = platform::linux_host;
  client::Output output{.write =
                            [](std::string_view text) {
                              if (host::WriteOutput(text)) return;
                              throw client::ClientError(
                                  client::kRefused,
                                  std::string("can't write: ") + std::strerror(errno));
                            },
                        .isTerminal = host::IsTerminal(),
                        .columns = [] { return static_cast<std::size_t>(host::TerminalColumns()); },
                        .rows = [] { return static_cast<std::size_t>(host::TerminalRows()); }};
  if (host::LiveTerminal::IsUsable())
    output.openScreen = [] { return std::make_unique<client::CLinuxTerminalScreen>(); };
  const client::Output error{
      .write = [](std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); }};
  host::CatchInterrupts();
  try {
    return client::RunClient(std::vector<std::string>(argv + 1, argv + argc), output, error,
                             [](const std::string& home) {
                               return std::make_unique<client::CLinuxServiceAccess>(
                                   home.empty() ? host::ReadHostOptions().home : home);
                             });
  } catch (const std::exception& e) {
    std::fprintf(stderr, "corvane-client: %s\n", e.what());
    return client::kRefused;
  }
}
