#include "platform/windows/whole_file.h"

#include "platform/windows/long_path.h"
#include "platform/windows/win32.h"

namespace corvane::platform::windows {

namespace {

DWORD WriteAll(HANDLE file, std::string_view text) {
  while (!text.empty()) {
    ::DWORD written = 0;
    if (!::WriteFile(file, text.data(), static_cast<::DWORD>(text.size()), &written, nullptr))
      return ::GetLastError();
    text.remove_prefix(written);
  }
  return ::FlushFileBuffers(file) ? DWORD{ERROR_SUCCESS} : DWORD{::GetLastError()};
}

}  // namespace

DWORD ReadWholeFile(const std::u16string& path, std::size_t most, std::string* text) {
  const HANDLE file = ::CreateFileW(LongPath(path).c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return ::GetLastError();
  text->assign(most, '\0');
  std::size_t size = 0;
  DWORD code = ERROR_SUCCESS;
  while (size < most) {
    ::DWORD count = 0;
    const auto room = static_cast<::DWORD>(most - size);
    if (!::ReadFile(file, text->data() + size, room, &count, nullptr)) {
      code = ::GetLastError();
      break;
    }
    if (count == 0) break;
    size += count;
  }
  ::CloseHandle(file);
  text->resize(size);
  if (code != ERROR_SUCCESS) return code;
  return size == 0 || size == most ? DWORD{ERROR_INVALID_DATA} : DWORD{ERROR_SUCCESS};
}

DWORD WriteWholeFile(const std::u16string& path, std::string_view text) {
  const std::wstring beside = LongPath(path + u".new");
  const HANDLE file = ::CreateFileW(beside.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return ::GetLastError();
  DWORD code = WriteAll(file, text);
  ::CloseHandle(file);
  if (code == ERROR_SUCCESS && !::MoveFileExW(beside.c_str(), LongPath(path).c_str(),
                                              MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
    code = ::GetLastError();
  }
  if (code != ERROR_SUCCESS) ::DeleteFileW(beside.c_str());
  return code;
}

bool IsFileMissing(const std::u16string& path) {
  if (::GetFileAttributesW(LongPath(path).c_str()) != INVALID_FILE_ATTRIBUTES) return false;
  const ::DWORD error = ::GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

}  // namespace corvane::platform::windows
