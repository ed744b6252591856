#include "platform/linux/host_pipe_socket.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/pipe_api.h"

namespace corvane::platform::linux_host {

namespace {

constexpr mode_t kFolderMode = 0755;
constexpr mode_t kSocketMode = 0666;
constexpr mode_t kLockMode = 0600;
constexpr char kLockName[] = ".lock";  // no pipe has a dot in its name
constexpr int kBacklog = 1024;         // clients that come faster than they are taken

DWORD CodeOf(int error) {
  switch (error) {
    case EACCES:
    case EPERM:
    case EROFS:
      return ERROR_ACCESS_DENIED;
    case ENOENT:
    case ENOTDIR:
      return ERROR_PATH_NOT_FOUND;
    case EMFILE:
    case ENFILE:
    case ENOMEM:
    case ENOBUFS:
      return ERROR_NOT_ENOUGH_MEMORY;
    default:
      return ERROR_GEN_FAILURE;
  }
}

// An address holds about a hundred bytes; a longer path goes by way of the open folder.
sockaddr_un AddressOf(const std::string& path, int folder, const std::string& name) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string fits = path.size() < sizeof address.sun_path
                               ? path
                               : "/proc/self/fd/" + std::to_string(folder) + "/" + name;
  std::memcpy(address.sun_path, fits.data(), std::min(fits.size(), sizeof address.sun_path - 1));
  return address;
}

int OpenSpare() { return open("/dev/null", O_RDONLY | O_CLOEXEC); }

int StreamSocket() { return socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0); }

// A server that is too busy for one more client lives, too.
bool IsServed(const sockaddr_un& address) {
  const int probe = StreamSocket();
  if (probe < 0) return true;
  const int result = connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  const bool served = result == 0 || errno != ECONNREFUSED;
  close(probe);
  return served;
}

// Keeps errno.
void CloseQuietly(int descriptor) {
  const int reason = errno;
  if (descriptor >= 0) close(descriptor);
  errno = reason;
}

// The folder, open; -1 with errno set.
int OpenFolder(const std::string& folder) {
  if (mkdir(folder.c_str(), kFolderMode) != 0 && errno != EEXIST) return -1;
  const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor >= 0 && fchmod(descriptor, kFolderMode) == 0) return descriptor;
  CloseQuietly(descriptor);
  return -1;
}

// Locks the places in the folder until it is closed, so that two that start at once do not take the
// same one; -1 with errno set. The lock is on a file that only this account may open: everybody may
// open the folder, and could hold a lock on it for ever.
int LockPlaces(int folder) {
  const int file = openat(folder, kLockName, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kLockMode);
  if (file < 0) return -1;
  int result;
  do {
    result = flock(file, LOCK_EX);
  } while (result != 0 && errno == EINTR);
  if (result == 0) return file;
  CloseQuietly(file);
  return -1;
}

}  // namespace

bool IsPipeFileName(std::string_view name) {
  const auto fits = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-';
  };
  return !name.empty() && name.size() <= 64 && std::ranges::all_of(name, fits);
}

std::unique_ptr<HostPipeSocket> HostPipeSocket::Open(const std::string& folder,
                                                     const std::string& name, DWORD* code) {
  const int descriptor = OpenFolder(folder);
  if (descriptor < 0) {
    *code = CodeOf(errno);
    return nullptr;
  }
  std::unique_ptr<HostPipeSocket> socket(new HostPipeSocket(folder + "/" + name, descriptor));
  const int places = LockPlaces(descriptor);
  *code = places >= 0 ? socket->Bind(name) : CodeOf(errno);
  CloseQuietly(places);
  return *code == ERROR_SUCCESS ? std::move(socket) : nullptr;
}

DWORD HostPipeSocket::Bind(const std::string& name) {
  const sockaddr_un address = AddressOf(m_Path, m_Folder, name);
  struct stat there {};
  if (fstatat(m_Folder, name.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0) {
    if (!S_ISSOCK(there.st_mode) || IsServed(address)) return ERROR_ACCESS_DENIED;
    if (unlinkat(m_Folder, name.c_str(), 0) != 0) return CodeOf(errno);
  }
  m_Listen = StreamSocket();
  if (m_Listen < 0) return CodeOf(errno);
  if (bind(m_Listen, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    return CodeOf(errno);
  m_bBound = true;
  if (fchmodat(m_Folder, name.c_str(), kSocketMode, 0) != 0) return CodeOf(errno);
  if (listen(m_Listen, kBacklog) != 0) return CodeOf(errno);
  m_Spare = OpenSpare();
  return ERROR_SUCCESS;
}

HostPipeSocket::~HostPipeSocket() {
  if (m_bBound) unlink(m_Path.c_str());
  for (const int descriptor : {m_Listen, m_Spare, m_Folder}) {
    if (descriptor >= 0) close(descriptor);
  }
}

int HostPipeSocket::Accept() {
  if (m_Spare < 0) m_Spare = OpenSpare();  // somebody else took the last one
  for (;;) {
    const int client = accept4(m_Listen, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (client >= 0) return client;
    if (errno == EINTR || errno == ECONNABORTED) continue;
    if ((errno != EMFILE && errno != ENFILE) || m_Spare < 0) return -1;
    // It would ask again and again, as its place in the queue stays.
    close(m_Spare);
    const int turnedAway = accept4(m_Listen, nullptr, nullptr, SOCK_CLOEXEC);
    if (turnedAway >= 0) close(turnedAway);
    m_Spare = OpenSpare();
    return -1;
  }
}

}  // namespace corvane::platform::linux_host
