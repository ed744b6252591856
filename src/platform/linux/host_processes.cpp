#include "platform/linux/host_processes.h"

#include <unistd.h>

#include <array>

#include "platform/utf.h"

namespace corvane::platform::linux_host {

namespace {

constexpr std::string_view kDeleted = " (deleted)";
constexpr std::size_t kMostBytes = 4096;

}  // namespace

std::string_view FileNameOfExecutable(std::string_view link) {
  if (link.ends_with(kDeleted)) link.remove_suffix(kDeleted.size());
  return link.substr(link.rfind('/') + 1);
}

std::optional<std::u16string> ExecutableOfProcess(DWORD processId) {
  const std::string path = "/proc/" + std::to_string(processId) + "/exe";
  std::array<char, kMostBytes> link{};
  const ssize_t size = readlink(path.c_str(), link.data(), link.size());
  if (size <= 0 || static_cast<std::size_t>(size) == link.size()) return std::nullopt;
  return ToUtf16(FileNameOfExecutable({link.data(), static_cast<std::size_t>(size)}));
}

}  // namespace corvane::platform::linux_host
