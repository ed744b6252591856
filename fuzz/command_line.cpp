// The command line: words with zero bytes between them, whatever they are.

#include "service/command_line.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "service/option_table.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvane;
  std::vector<WString> words{u"corvane"};
  std::string word;
  for (std::size_t i = 0; i <= size; ++i) {
    if (i < size && data[i] != 0) {
      word += static_cast<char>(data[i]);
      continue;
    }
    words.push_back(Utf8ToWide(word));
    word.clear();
  }
  const CommandLine line = ParseCommandLine(words);
  const bool bad = line.ends == 2;
  Require(!line.ends || bad || line.ends == 0);
  Require(bad == line.error.starts_with(u"corvane: error: "));
  Require(line.ends.has_value() == !line.output.empty());
  for (int i = 0; i < static_cast<int>(Option::kCount); ++i) {
    const auto option = static_cast<Option>(i);
    if (line.Has(option) && line.Number(option) != 0) Require(!line.Text(option).empty());
  }
  return 0;
}
