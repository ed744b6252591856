#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "foundation/text.h"
#include "platform/linux/linux_host.h"
#include "platform/utf.h"
#include "service/command_line.h"
#include "service/service_main.h"

int main(int argc, char** argv) {
  using namespace corvane::platform::linux_host;
  std::vector<std::u16string> words;
  for (int i = 0; i < argc; ++i) words.push_back(corvane::platform::ToUtf16(argv[i]));
  const corvane::CommandLine line = corvane::ParseCommandLine(words);
  if (line.ends) {
    std::fputs(corvane::WideToUtf8(line.output).c_str(), stdout);
    if (line.wantsHelp) std::printf("\n%s", kHostHelp);
    std::fputs(corvane::WideToUtf8(line.error).c_str(), stderr);
    return *line.ends;
  }
  try {
    HostOptions options = ReadHostOptions();
    options.shareHome = corvane::IsOneShot(line);
    options.program = OwnProgram();
    const LinuxHost host(options, LoadWorld(options));
    return corvane::ServiceMain(line);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "corvane: %s\n", error.what());
    return 1;
  }
}
