#include "platform/linux/host_text_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace corvane::platform::linux_host {

namespace {

struct Closer {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

[[noreturn]] void Fail(const std::string& path, const char* doing) {
  throw std::runtime_error(path + ": cannot " + doing + ": " + std::strerror(errno));
}

}  // namespace

std::string ReadTextFile(const std::string& path) {
  const File file(std::fopen(path.c_str(), "rb"));
  if (!file) Fail(path, "open");
  std::string text;
  char block[65536];
  for (std::size_t got; (got = std::fread(block, 1, sizeof(block), file.get())) > 0;) text.append(block, got);
  if (std::ferror(file.get())) Fail(path, "read");
  return text;
}

void WriteTextFile(const std::string& path, const std::string& text) {
  const std::string beside = path + ".new";
  File file(std::fopen(beside.c_str(), "wb"));
  if (!file) Fail(beside, "open");
  const bool written = std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
  const bool closed = std::fclose(file.release()) == 0;
  if (!written || !closed) Fail(beside, "write");
  if (std::rename(beside.c_str(), path.c_str()) != 0) Fail(path, "replace");
}

}  // namespace corvane::platform::linux_host
