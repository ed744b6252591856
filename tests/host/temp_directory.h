#pragma once
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace corvane::test {

// A directory of a test's own, gone with all that is in it at the end.
class TempDirectory {
 public:
  TempDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "corvane-test-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary directory: " + name);
    m_Path = name;
  }
  ~TempDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(m_Path, ignored);
  }
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;

  const std::string& Path() const { return m_Path; }
  std::string operator/(const std::string& name) const { return m_Path + "/" + name; }

 private:
  std::string m_Path;
};

}  // namespace corvane::test
