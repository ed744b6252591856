#include "platform/text_file.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#else
#include <unistd.h>
#endif

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace corvane::platform {

namespace {

[[noreturn]] void Fail(const std::string& path, const char* doing) {
  throw std::runtime_error(path + ": cannot " + doing + ": " + std::strerror(errno));
}

struct Closer {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

std::string ReadTextFile(const std::string& path) {
  const std::unique_ptr<std::FILE, Closer> file(std::fopen(path.c_str(), "rb"));
  if (!file) Fail(path, "open");
  std::string text;
  char block[65536];
  for (std::size_t got; (got = std::fread(block, 1, sizeof(block), file.get())) > 0;)
    text.append(block, got);
  if (std::ferror(file.get())) Fail(path, "read");
  return text;
}

bool FileExists(const std::string& path) {
  std::error_code failure;
  const bool exists = std::filesystem::exists(path, failure);
  if (failure) throw std::runtime_error(path + ": cannot look: " + failure.message());
  return exists;
}

std::optional<std::uint64_t> FileSize(const std::string& path) {
  std::error_code failure;
  const std::uint64_t bytes = std::filesystem::file_size(path, failure);
  return failure ? std::nullopt : std::optional(bytes);
}

void RemoveFile(const std::string& path) {
  std::error_code failure;
  std::filesystem::remove(path, failure);
  if (failure) throw std::runtime_error(path + ": cannot remove: " + failure.message());
}

bool IsFolder(const std::string& path) {
  std::error_code failure;
  return std::filesystem::is_directory(path, failure);
}

std::vector<std::string> FilesOf(const std::string& folder, const std::string& end) {
  std::error_code failure;
  std::vector<std::string> files;
  for (std::filesystem::directory_iterator at(folder, failure), last; !failure && at != last;
       at.increment(failure)) {
    if (at->path().filename().string().ends_with(end)) files.push_back(at->path().string());
  }
  if (failure) throw std::runtime_error(folder + ": cannot look into: " + failure.message());
  std::ranges::sort(files);
  return files;
}

bool ErrorOutputIsTerminal() {
#ifdef _WIN32
  return _isatty(_fileno(stderr)) != 0;
#else
  return isatty(fileno(stderr)) != 0;
#endif
}

void WriteLinesAsTheyAre() {
#ifdef _WIN32
  _setmode(_fileno(stdout), _O_BINARY);
#endif
}

TextFileWriter::TextFileWriter(const std::string& path)
    : m_Path(path), m_Beside(path + ".new"), m_pFile(std::fopen(m_Beside.c_str(), "wb")) {
  if (!m_pFile) Fail(m_Beside, "open");
}

TextFileWriter::~TextFileWriter() {
  if (!m_bCommitted) std::remove(m_Beside.c_str());
}

void TextFileWriter::Write(std::string_view bytes) noexcept {
  if (m_Error != 0) return;
  if (std::fwrite(bytes.data(), 1, bytes.size(), m_pFile.get()) != bytes.size()) m_Error = errno;
}

void TextFileWriter::WriteLine(std::string_view line) noexcept {
  Write(line);
  Write("\n");
}

void TextFileWriter::Commit() {
  if (std::fclose(m_pFile.release()) != 0 && m_Error == 0) m_Error = errno;
  if (m_Error != 0) {
    errno = m_Error;
    Fail(m_Beside, "write");
  }
  // std::rename does not replace a file on every system.
  std::error_code failure;
  std::filesystem::rename(m_Beside, m_Path, failure);
  if (failure) throw std::runtime_error(m_Path + ": cannot replace: " + failure.message());
  m_bCommitted = true;
}

}  // namespace corvane::platform
