#include "platform/linux/host_home.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "platform/linux/host_error.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/utf.h"

namespace corvane::platform::linux_host {

namespace {

// Where the program looks for the folder of its logs, below the common application data.
constexpr char kDataFolder[] = "/OstrelNetworks/Corvane";

[[noreturn]] void Unusable(const std::string& path, const std::string& reason) {
  throw HostError("the home directory " + path + " cannot be used: " + reason);
}

std::string OwnerOf(int lock) {
  char text[32] = {};
  const ssize_t size = pread(lock, text, sizeof(text) - 1, 0);
  const std::string owner(text, size > 0 ? static_cast<std::size_t>(size) : 0);
  return owner.substr(0, owner.find('\n'));
}

}  // namespace

HostHome::HostHome(const std::string& path, bool share) : m_Path(path) {
  if (sim::ToUtf8(ToUtf16(path)) != path) Unusable(path, "its name is not UTF-8");
  std::error_code error;
  m_Path = std::filesystem::absolute(path, error).string();
  if (!error) std::filesystem::create_directories(m_Path + kDataFolder, error);
  if (error) Unusable(m_Path, error.message());

  if (share) return;
  const std::string name = m_Path + "/lock";
  m_Lock = open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (m_Lock < 0) Unusable(m_Path, std::string("lock: ") + std::strerror(errno));
  if (flock(m_Lock, LOCK_EX | LOCK_NB) != 0) {
    const int reason = errno;
    const std::string owner = OwnerOf(m_Lock);
    close(m_Lock);
    if (reason != EWOULDBLOCK) Unusable(m_Path, std::string("lock: ") + std::strerror(reason));
    throw HostError("another instance " + (owner.empty() ? "" : "(process " + owner + ") ") +
                    "runs on the home directory " + m_Path +
                    "; end it, or set CORVANE_HOME to another directory");
  }
  const std::string process = std::to_string(getpid()) + "\n";
  const bool told = ftruncate(m_Lock, 0) == 0 && pwrite(m_Lock, process.data(), process.size(),
                                                        0) == static_cast<ssize_t>(process.size());
  if (!told) {
    const int reason = errno;
    close(m_Lock);
    Unusable(m_Path, std::string("lock: ") + std::strerror(reason));
  }
}

// The file stays: without it, two that start at once could each lock a file of that name.
HostHome::~HostHome() {
  if (m_Lock >= 0) close(m_Lock);
}

}  // namespace corvane::platform::linux_host
