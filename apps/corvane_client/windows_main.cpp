#include <exception>
#include <string>
#include <vector>

#include "corvane_client/client_commands.h"
#include "corvane_client/client_error.h"
#include "corvane_client/windows_service_access.h"
#include "corvane_client/windows_terminal_screen.h"
#include "foundation/text.h"
#include "platform/windows/windows_client_host.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_options.h"

int wmain(int argc, wchar_t** argv) {
  using namespace corvane;
  namespace host = platform::windows;
  const host::ConsoleMode mode;
  client::Output output{.write =
                            [](std::string_view text) {
                              if (const auto error = host::WriteOutput(text))
                                throw client::ClientError(client::kRefused,
                                                          "can't write: " + host::ErrorText(error));
                            },
                        .isTerminal = host::IsTerminal(),
                        .columns = [] { return static_cast<std::size_t>(host::TerminalColumns()); },
                        .rows = [] { return static_cast<std::size_t>(host::TerminalRows()); }};
  if (output.isTerminal)
    output.openScreen = [] { return std::make_unique<client::CWindowsTerminalScreen>(); };
  const client::Output error{.write = [](std::string_view text) { host::WriteError(text); }};
  host::CatchInterrupts();
  try {
    std::vector<std::string> words;
    for (int i = 1; i < argc; ++i)
      words.push_back(WideToUtf8(reinterpret_cast<const char16_t*>(argv[i])));
    return client::RunClient(words, output, error, [](const std::string& home) {
      return std::make_unique<client::CWindowsServiceAccess>(client::CWindowsServiceAccess::Places{
          .root = home.empty() ? host::ReadWindowsOptions().home : home});
    });
  } catch (const std::exception& e) {
    host::WriteError(std::string("corvane-client: ") + e.what() + "\n");
    return client::kRefused;
  }
}
