#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "corvane_client/client_commands.h"
#include "corvane_client/client_error.h"
#include "corvane_client/linux_service_access.h"
#include "platform/linux/client_host.h"
#include "platform/linux/host_options.h"

int main(int argc, char** argv) {
  using namespace corvane;
  namespace host = platform::linux_host;
  const auto writer = [](std::FILE* file) {
    return [file](std::string_view text) {
      std::fwrite(text.data(), 1, text.size(), file);
      std::fflush(file);
    };
  };
  const client::Output output{
      .write = writer(stdout),
      .isTerminal = host::IsTerminal(),
      .columns = [] { return static_cast<std::size_t>(host::TerminalColumns()); },
      .rows = [] { return static_cast<std::size_t>(host::TerminalRows()); }};
  const client::Output error{.write = writer(stderr)};
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
