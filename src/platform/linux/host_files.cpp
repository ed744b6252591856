#include "platform/linux/host_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>
#include <vector>

#include "platform/sim/kernel/seam_gate.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/thread_api.h"

namespace corvane::platform::linux_host {

namespace {

constexpr mode_t kFileMode = 0666;       // what the umask leaves of it
constexpr mode_t kDirectoryMode = 0777;  // likewise
constexpr std::size_t kBlock = 64 * 1024;
constexpr std::size_t kLongestPath = 4096;

std::string PathOf(LPCWSTR path) { return sim::ToUtf8(sim::ViewOf(path)); }

// A handle is the descriptor plus one, so that none is null.
HANDLE HandleOf(int descriptor) {
  return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(descriptor) + 1);
}
int DescriptorOf(HANDLE file) {
  return static_cast<int>(reinterpret_cast<std::uintptr_t>(file)) - 1;
}

DWORD CodeOf(int error, const std::string& path) {
  switch (error) {
    case ENOENT: {
      // Windows tells a missing file from a missing directory.
      const std::size_t end = path.rfind('/');
      const bool hasParent =
          end == path.npos || end == 0 || access(path.substr(0, end).c_str(), F_OK) == 0;
      return hasParent ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
    }
    case ENOTDIR:
      return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
      return ERROR_ACCESS_DENIED;
    case EEXIST:
      return ERROR_ALREADY_EXISTS;
    case EBADF:
      return ERROR_INVALID_HANDLE;
    case ENOMEM:
      return ERROR_NOT_ENOUGH_MEMORY;
    case EBUSY:
    case ETXTBSY:
      return ERROR_SHARING_VIOLATION;
    case ENAMETOOLONG:
      return ERROR_BAD_PATHNAME;
    case EINVAL:
      return ERROR_INVALID_PARAMETER;
    default:
      return ERROR_GEN_FAILURE;
  }
}

// A descriptor that is closed at the end of the scope.
class Descriptor {
 public:
  explicit Descriptor(int number) : m_Number(number) {}
  ~Descriptor() {
    if (m_Number >= 0) close(m_Number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Get() const { return m_Number; }
  int Release() { return std::exchange(m_Number, -1); }

 private:
  int m_Number;
};

int Open(const std::string& path, int flags) {
  return open(path.c_str(), flags | O_CLOEXEC, kFileMode);
}

// All of it; false with errno.
bool WriteAll(int to, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t count = write(to, data, size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    data += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

ssize_t ReadSome(int from, void* buffer, std::size_t size) {
  ssize_t count;
  do count = read(from, buffer, size);
  while (count < 0 && errno == EINTR);
  return count;
}

bool CopyAll(int from, int to) {
  std::vector<char> block(kBlock);
  for (;;) {
    const ssize_t count = ReadSome(from, block.data(), block.size());
    if (count == 0) return true;
    if (count < 0 || !WriteAll(to, block.data(), static_cast<std::size_t>(count))) return false;
  }
}

bool IsSameFile(int a, const std::string& b) {
  struct stat first {
  }, second{};
  return fstat(a, &first) == 0 && stat(b.c_str(), &second) == 0 && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

bool IsDirectory(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

HostFiles::HostFiles(sim::SeamGate& gate, ThreadApi& threads, std::u16string dataFolder)
    : m_Gate(gate), m_Threads(threads), m_DataFolder(std::move(dataFolder)) {}

BOOL HostFiles::Fail(DWORD code) {
  m_Threads.SetLastError(code);
  return FALSE;
}

BOOL HostFiles::FailWithErrno() { return Fail(CodeOf(errno, {})); }

HANDLE HostFiles::CreateFileW(LPCWSTR path, DWORD access, DWORD disposition) {
  m_Gate.Enter("CreateFileW");
  const bool known =
      disposition == CREATE_ALWAYS || disposition == OPEN_EXISTING || disposition == OPEN_ALWAYS;
  if (!known) {
    Fail(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  const bool writes = (access & (GENERIC_WRITE | FILE_APPEND_DATA)) != 0;
  int flags = !writes ? O_RDONLY : access & GENERIC_READ ? O_RDWR : O_WRONLY;
  if (writes && !(access & GENERIC_WRITE)) flags |= O_APPEND;
  const std::string name = PathOf(path);
  // Without O_CREAT first, as only that tells whether the file was there before.
  Descriptor file(Open(name, flags));
  const bool existed = file.Get() >= 0;
  if (!existed) {
    const bool create = disposition != OPEN_EXISTING && errno == ENOENT;
    Descriptor made(create ? Open(name, flags | O_CREAT) : -1);
    if (made.Get() < 0) {
      Fail(CodeOf(errno, name));
      return nullptr;
    }
    m_Threads.SetLastError(ERROR_SUCCESS);
    return HandleOf(made.Release());
  }
  if (IsDirectory(file.Get())) {
    Fail(ERROR_ACCESS_DENIED);
    return nullptr;
  }
  if (disposition == CREATE_ALWAYS && ftruncate(file.Get(), 0) != 0) {
    FailWithErrno();
    return nullptr;
  }
  m_Threads.SetLastError(disposition == OPEN_EXISTING ? ERROR_SUCCESS : ERROR_ALREADY_EXISTS);
  return HandleOf(file.Release());
}

BOOL HostFiles::ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read) {
  if (read) *read = 0;
  m_Gate.Enter("ReadFile");
  const ssize_t count = ReadSome(DescriptorOf(file), buffer, size);
  if (count < 0) return FailWithErrno();
  if (read) *read = static_cast<DWORD>(count);
  return TRUE;
}

BOOL HostFiles::WriteFile(HANDLE file, const void* data, DWORD size, DWORD* written) {
  if (written) *written = 0;
  m_Gate.Enter("WriteFile");
  if (!WriteAll(DescriptorOf(file), static_cast<const char*>(data), size)) return FailWithErrno();
  if (written) *written = size;
  return TRUE;
}

BOOL HostFiles::FlushFileBuffers(HANDLE file) {
  return fsync(DescriptorOf(file)) == 0 ? TRUE : FailWithErrno();
}

BOOL HostFiles::CloseFile(HANDLE file) {
  return close(DescriptorOf(file)) == 0 ? TRUE : FailWithErrno();
}

BOOL HostFiles::GetFileSizeEx(HANDLE file, ULONGLONG* size) {
  m_Gate.Enter("GetFileSizeEx");
  struct stat status {};
  if (fstat(DescriptorOf(file), &status) != 0) return FailWithErrno();
  *size = static_cast<ULONGLONG>(status.st_size);
  return TRUE;
}

BOOL HostFiles::CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists) {
  m_Gate.Enter("CopyFileW");
  const std::string source = PathOf(from), target = PathOf(to);
  const Descriptor reader(Open(source, O_RDONLY));
  if (reader.Get() < 0) return Fail(CodeOf(errno, source));
  if (IsDirectory(reader.Get())) return Fail(ERROR_ACCESS_DENIED);
  if (IsSameFile(reader.Get(), target)) return Fail(ERROR_SHARING_VIOLATION);
  const Descriptor writer(Open(target, O_WRONLY | O_CREAT | (failIfExists ? O_EXCL : O_TRUNC)));
  if (writer.Get() < 0) {
    return Fail(errno == EEXIST ? ERROR_FILE_EXISTS : CodeOf(errno, target));
  }
  return CopyAll(reader.Get(), writer.Get()) ? TRUE : FailWithErrno();
}

BOOL HostFiles::MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) {
  m_Gate.Enter("MoveFileExW");
  const std::string source = PathOf(from), target = PathOf(to);
  const bool replace = (flags & MOVEFILE_REPLACE_EXISTING) != 0;
  int result =
      renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), replace ? 0 : RENAME_NOREPLACE);
  if (result != 0 && errno == EINVAL && !replace) {  // a file system that cannot do it in one step
    if (access(target.c_str(), F_OK) == 0) return Fail(ERROR_ALREADY_EXISTS);
    result = rename(source.c_str(), target.c_str());
  }
  if (result == 0) return TRUE;
  const int error = errno;
  return Fail(CodeOf(error, access(source.c_str(), F_OK) == 0 ? target : source));
}

BOOL HostFiles::DeleteFileW(LPCWSTR path) {
  m_Gate.Enter("DeleteFileW");
  const std::string name = PathOf(path);
  return unlink(name.c_str()) == 0 ? TRUE : Fail(CodeOf(errno, name));
}

BOOL HostFiles::CreateDirectoryW(LPCWSTR path) {
  m_Gate.Enter("CreateDirectoryW");
  const std::string name = PathOf(path);
  return mkdir(name.c_str(), kDirectoryMode) == 0 ? TRUE : Fail(CodeOf(errno, name));
}

DWORD HostFiles::GetFileAttributesW(LPCWSTR path) {
  m_Gate.Enter("GetFileAttributesW");
  const std::string name = PathOf(path);
  struct stat status {};
  if (stat(name.c_str(), &status) != 0) {
    Fail(CodeOf(errno, name));
    return INVALID_FILE_ATTRIBUTES;
  }
  return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
}

HRESULT HostFiles::SHGetFolderPathW(int csidl, std::u16string* path) {
  m_Gate.Enter("SHGetFolderPathW");
  if (csidl != CSIDL_COMMON_APPDATA) return E_FAIL;
  *path = m_DataFolder;
  return S_OK;
}

DWORD HostFiles::GetModuleFileNameA(std::string* path) {
  m_Gate.Enter("GetModuleFileNameA");
  std::string target(kLongestPath, '\0');
  const ssize_t length = readlink("/proc/self/exe", target.data(), target.size());
  if (length < 0 || static_cast<std::size_t>(length) == target.size()) {
    FailWithErrno();
    return 0;
  }
  target.resize(static_cast<std::size_t>(length));
  *path = std::move(target);
  return static_cast<DWORD>(path->size());
}

}  // namespace corvane::platform::linux_host
