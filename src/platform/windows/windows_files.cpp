#include "platform/windows/windows_files.h"

#include "platform/sim/kernel/sim_text.h"
#include "platform/windows/long_path.h"
#include "platform/windows/system_call.h"

namespace corvane::platform::windows {

namespace {

constexpr std::size_t kLongestPath = 32'768;  // characters
constexpr ::DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

}  // namespace

// The last error of a success tells whether the file was there, as CREATE_ALWAYS and OPEN_ALWAYS
// have it.
HANDLE WindowsFiles::CreateFileW(LPCWSTR path, DWORD access, DWORD disposition) {
  EnterGate("CreateFileW");
  const std::wstring name = LongPath(path);
  ::DWORD error = ERROR_SUCCESS;
  const HANDLE file = OrFault([&] {
    ::SetLastError(ERROR_SUCCESS);
    const HANDLE opened = ::CreateFileW(name.c_str(), access, kShared, nullptr, disposition,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    error = ::GetLastError();
    return opened;
  });
  WindowsThreads::KeepLastError(error);
  return NullIfInvalid(file);
}

BOOL WindowsFiles::ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read) {
  ::DWORD count = 0;
  const BOOL done =
      ForwardOrFail("ReadFile", [&] { return ::ReadFile(file, buffer, size, &count, nullptr); });
  if (read) *read = count;
  return done;
}

BOOL WindowsFiles::WriteFile(HANDLE file, const void* data, DWORD size, DWORD* written) {
  ::DWORD count = 0;
  const BOOL done =
      ForwardOrFail("WriteFile", [&] { return ::WriteFile(file, data, size, &count, nullptr); });
  if (written) *written = count;
  return done;
}

BOOL WindowsFiles::FlushFileBuffers(HANDLE file) {
  return ForwardOrFail("FlushFileBuffers", [&] { return ::FlushFileBuffers(file); });
}

BOOL WindowsFiles::CloseFile(HANDLE file) {
  return ForwardOrFail("CloseFile", [&] { return ::CloseHandle(file); });
}

BOOL WindowsFiles::GetFileSizeEx(HANDLE file, ULONGLONG* size) {
  return ForwardOrFail("GetFileSizeEx",
                       [&] { return ::GetFileSizeEx(file, As<::LARGE_INTEGER>(size)); });
}

BOOL WindowsFiles::CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists) {
  const std::wstring source = LongPath(from);
  const std::wstring target = LongPath(to);
  return ForwardOrFail("CopyFileW",
                       [&] { return ::CopyFileW(source.c_str(), target.c_str(), failIfExists); });
}

BOOL WindowsFiles::MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) {
  const std::wstring source = LongPath(from);
  const std::wstring target = LongPath(to);
  return ForwardOrFail("MoveFileExW", [&] {
    return ::MoveFileExW(source.c_str(), target.c_str(), flags | MOVEFILE_WRITE_THROUGH);
  });
}

BOOL WindowsFiles::DeleteFileW(LPCWSTR path) {
  const std::wstring name = LongPath(path);
  return ForwardOrFail("DeleteFileW", [&] { return ::DeleteFileW(name.c_str()); });
}

BOOL WindowsFiles::CreateDirectoryW(LPCWSTR path) {
  const std::wstring name = LongPath(path);
  return ForwardOrFail("CreateDirectoryW",
                       [&] { return ::CreateDirectoryW(name.c_str(), nullptr); });
}

DWORD WindowsFiles::GetFileAttributesW(LPCWSTR path) {
  EnterGate("GetFileAttributesW");
  const std::wstring name = LongPath(path);
  ::DWORD error = ERROR_SUCCESS;
  const DWORD attributes = OrFault([&] {
    const DWORD found = ::GetFileAttributesW(name.c_str());
    error = ::GetLastError();
    return found;
  });
  if (attributes == INVALID_FILE_ATTRIBUTES) WindowsThreads::KeepLastError(error);
  return attributes;
}

HRESULT WindowsFiles::SHGetFolderPathW(int csidl, std::u16string* path) {
  if (csidl == CSIDL_COMMON_APPDATA && !m_DataFolder.empty()) {
    *path = m_DataFolder;
    return S_OK;
  }
  char16_t folder[MAX_PATH] = {};
  const HRESULT result = Forward("SHGetFolderPathW", [&] {
    return ::SHGetFolderPathW(nullptr, csidl, nullptr, SHGFP_TYPE_CURRENT, Wide(folder));
  });
  if (result == S_OK) *path = folder;
  return result;
}

DWORD WindowsFiles::GetModuleFileNameA(std::string* path) {
  std::u16string name(kLongestPath, u'\0');
  const DWORD length = ForwardOrFail("GetModuleFileNameA", [&] {
    return ::GetModuleFileNameW(nullptr, Wide(name.data()), static_cast<::DWORD>(name.size()));
  });
  name.resize(length);
  *path = sim::ToUtf8(name);
  return static_cast<DWORD>(path->size());
}

}  // namespace corvane::platform::windows
