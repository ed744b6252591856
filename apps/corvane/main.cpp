#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/linux_host.h"
#include "platform/utf.h"
#include "service/service_main.h"

int main(int argc, char** argv) {
  using namespace corvane::platform::linux_host;
  using corvane::platform::ToUtf16;
  if (argc == 2 && std::string_view(argv[1]) == "--help") {
    std::fputs(kHostHelp, stdout);
    return 0;
  }
  std::vector<std::u16string> words;
  std::vector<const char16_t*> arguments;
  for (int i = 0; i < argc; ++i) words.push_back(ToUtf16(argv[i]));
  for (const std::u16string& word : words) arguments.push_back(word.c_str());
  try {
    const HostOptions options = ReadHostOptions();
    const LinuxHost host(options, LoadWorld(options));
    return corvane::ServiceMain(argc, arguments.data());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "corvane: %s\n", error.what());
    return 1;
  }
}
