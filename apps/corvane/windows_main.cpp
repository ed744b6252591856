#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "foundation/text.h"
#include "platform/windows/installation.h"
#include "platform/windows/windows_host.h"
#include "service/command_line.h"
#include "service/service_main.h"

int wmain(int argc, wchar_t** argv) {
  using namespace corvane::platform::windows;
  std::vector<std::u16string> words;
  for (int i = 0; i < argc; ++i) words.emplace_back(reinterpret_cast<const char16_t*>(argv[i]));
  try {
    if (IsInstallationCommand(words)) return RunInstallationCommand(words);
    const corvane::CommandLine line = corvane::ParseCommandLine(words);
    if (line.ends) {
      std::fputs(corvane::WideToUtf8(line.output).c_str(), stdout);
      if (line.wantsHelp) std::printf("\n%s", kHostHelp);
      std::fputs(corvane::WideToUtf8(line.error).c_str(), stderr);
      return *line.ends;
    }
    WindowsOptions options = ReadWindowsOptions();
    options.shareHome = corvane::IsOneShot(line);
    const WindowsHost host(options);
    return corvane::ServiceMain(line);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "corvane: %s\n", error.what());
    return 1;
  }
}
