#pragma once
#include <string>
#include <utility>

#include "platform/file_api.h"

namespace corvane::platform::windows {

// Files by long paths: absolute ones get the prefix that lifts the limit of 260 characters, and
// either slash separates. An open file may be read, written, replaced and deleted by others.
class WindowsFiles final : public FileApi {
 public:
  // `dataFolder` stands for the common application data when it is not empty.
  explicit WindowsFiles(std::u16string dataFolder = {}) : m_DataFolder(std::move(dataFolder)) {}

  HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD disposition) override;
  BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read) override;
  BOOL WriteFile(HANDLE file, const void* data, DWORD size, DWORD* written) override;
  BOOL FlushFileBuffers(HANDLE file) override;
  BOOL CloseFile(HANDLE file) override;
  BOOL GetFileSizeEx(HANDLE file, ULONGLONG* size) override;
  BOOL CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists) override;
  BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) override;
  BOOL DeleteFileW(LPCWSTR path) override;
  BOOL CreateDirectoryW(LPCWSTR path) override;
  DWORD GetFileAttributesW(LPCWSTR path) override;
  HRESULT SHGetFolderPathW(int csidl, std::u16string* path) override;
  DWORD GetModuleFileNameA(std::string* path) override;

 private:
  const std::u16string m_DataFolder;
};

}  // namespace corvane::platform::windows
