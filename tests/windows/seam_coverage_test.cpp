// Every operation of the seam is the Windows backend's own: none is left to the default that
// answers "not implemented".

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <string>

#include "platform/text_file.h"
#include "support/source_dir.h"

namespace corvane::test {

namespace {

using Operations = std::map<std::string, std::set<std::string>>;  // by the service's class

std::string Code(const std::filesystem::path& file) {
  return std::regex_replace(platform::ReadTextFile(file.string()), std::regex("//[^\n]*"), "");
}

// What `pattern` finds in each class whose head `head` matches; both have the name as first group.
Operations Find(const std::string& folder, const std::string& ending, const std::regex& head,
                const std::regex& pattern) {
  Operations found;
  for (const auto& entry : std::filesystem::directory_iterator(SourceDir() + folder)) {
    if (!entry.path().string().ends_with(ending)) continue;
    const std::string code = Code(entry.path());
    for (std::sregex_iterator at(code.begin(), code.end(), head), end; at != end; ++at) {
      const auto from = static_cast<std::size_t>(at->position());
      const std::string body = code.substr(from, code.find("\n};", from) - from);
      auto& names = found[(*at)[1]];
      for (std::sregex_iterator one(body.begin(), body.end(), pattern), last; one != last; ++one) {
        names.insert((*one)[1]);
      }
    }
  }
  return found;
}

}  // namespace

TEST(WindowsSeam, LeavesNoOperationToItsDefault) {
  // Those with a body in the header do nothing on purpose.
  const Operations seam = Find("/src/platform", "_api.h", std::regex(R"(class (\w+Api) \{)"),
                               std::regex(R"(virtual [^;{~]*?\b(\w+)\([^;{]*\);)"));
  const Operations own = Find("/src/platform/windows", ".h",
                              std::regex(R"(class \w+ final : public (?:\w+::)*(\w+Api) \{)"),
                              std::regex(R"(\b(\w+)\([^;{]*\)\s*override)"));
  EXPECT_GE(seam.size(), 21u);
  std::size_t count = 0;
  for (const auto& [service, operations] : seam) {
    const auto backend = own.find(service);
    ASSERT_NE(backend, own.end()) << service << " has no class";
    for (const std::string& operation : operations) {
      EXPECT_TRUE(backend->second.contains(operation)) << service << "::" << operation;
      ++count;
    }
  }
  EXPECT_GT(count, 180u);
}

}  // namespace corvane::test
