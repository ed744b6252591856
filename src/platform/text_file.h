#pragma once
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::platform {

// Files of the host, for programs that stand outside the simulated PC. Failures throw
// std::runtime_error with the path and the system's reason.
std::string ReadTextFile(const std::string& path);
bool FileExists(const std::string& path);
std::optional<std::uint64_t> FileSize(const std::string& path);  // in bytes; nothing: no such file
void RemoveFile(const std::string& path);  // one that is not there is no failure
// Whether the path is that of a folder, and the paths of the files in it that end so, sorted.
bool IsFolder(const std::string& path);
std::vector<std::string> FilesOf(const std::string& folder, const std::string& end);

// Whether a person may be watching the error output.
bool ErrorOutputIsTerminal();

// From now on standard output holds the bytes that are written to it: a system that ends lines by
// two of them adds none.
void WriteLinesAsTheyAre();

// Writes a new file beside the one of that name and puts it in its place at the end, so that
// readers see the old text or the whole new one. Without Commit nothing is changed. A line that
// could not be written makes Commit throw.
class TextFileWriter {
 public:
  explicit TextFileWriter(const std::string& path);
  ~TextFileWriter();
  TextFileWriter(const TextFileWriter&) = delete;
  TextFileWriter& operator=(const TextFileWriter&) = delete;

  void Write(std::string_view bytes) noexcept;
  void WriteLine(std::string_view line) noexcept;
  void Commit();  // once

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  const std::string m_Path;
  const std::string m_Beside;
  std::unique_ptr<std::FILE, Closer> m_pFile;
  bool m_bCommitted = false;
  int m_Error = 0;  // errno of the first failed write
};

}  // namespace corvane::platform
