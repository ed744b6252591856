#include "corvane_lab/registry_page.h"

#include <gtest/gtest.h>

#include <regex>

#include "platform/text_file.h"
#include "store/value_table.h"
#include "support/source_dir.h"

namespace corvane::lab {
namespace {

std::string TextOf(const char* path) {
  return platform::ReadTextFile(test::SourceDir() + "/" + path);
}

TEST(RegistryPage, StandsInTheDocumentsAsTheTablePrintsIt) {
  EXPECT_EQ(TextOf("docs/registry.md"), RegistryPage())
      << "print it anew: corvane-lab registry > docs/registry.md";
}

TEST(RegistryPage, HasARowForEachValueThatHasAConstant) {
  const std::regex constant(R"re(\[\] =\s+u"(\w+)";)re");
  int count = 0;
  for (const char* header : {"src/store/value_names.h", "src/engine/value_names.h"}) {
    const std::string text = TextOf(header);
    for (std::sregex_iterator at(text.begin(), text.end(), constant), end; at != end;
         ++at, ++count) {
      const WString name = Widen((*at)[1].str());
      EXPECT_TRUE(FindValue(ValueKey::kHome, name) || FindValue(ValueKey::kAdapter, name) ||
                  FindValue(ValueKey::kEngine, name))
          << (*at)[1];
    }
  }
  EXPECT_GT(count, 90);
}

}  // namespace
}  // namespace corvane::lab
