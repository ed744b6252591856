#pragma once
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>

namespace corvane::test {

// A directory of a test's own, gone with all that is in it at the end.
class TempDirectory {
 public:
  TempDirectory() {
    const std::filesystem::path parent = std::filesystem::temp_directory_path();
    std::random_device random;
    for (int tries = 0; m_Path.empty(); ++tries) {
      const auto path = parent / ("corvane-test-" + std::to_string(random()));
      if (std::filesystem::create_directory(path)) m_Path = path.string();
      if (tries == 10) throw std::runtime_error("no temporary directory in " + parent.string());
    }
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
