#pragma once
#include "platform/types.h"

namespace corvane::platform {

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD FILE_APPEND_DATA = 0x4;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD MOVEFILE_REPLACE_EXISTING = 1;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr int CSIDL_COMMON_APPDATA = 35;

// Files. Operations that give BOOL or a null handle leave the reason in ThreadApi::GetLastError().
// A handle serves one thread at a time. Others may read, write, replace and delete a file while it
// is open here; one that another program holds without sharing gives ERROR_SHARING_VIOLATION, or
// ERROR_ACCESS_DENIED as the target of a move.
class FileApi {
 public:
  virtual ~FileApi() = default;
  // Null on failure (not the -1 of Windows, so that one test fits all handles of this program).
  virtual HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD disposition);
  virtual BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read);
  virtual BOOL WriteFile(HANDLE file, const void* data, DWORD size, DWORD* written);
  virtual BOOL FlushFileBuffers(HANDLE file);  // to the medium
  virtual BOOL CloseFile(HANDLE file);
  virtual BOOL GetFileSizeEx(HANDLE file, ULONGLONG* size);
  virtual BOOL CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists);
  virtual BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags);  // atomic within a directory
  virtual BOOL DeleteFileW(LPCWSTR path);
  virtual BOOL CreateDirectoryW(LPCWSTR path);
  virtual DWORD GetFileAttributesW(LPCWSTR path);
  // S_OK and the folder, without a separator at its end.
  virtual HRESULT SHGetFolderPathW(int csidl, std::u16string* path);
  // Full path of this process's executable, in UTF-8; its length, or 0 on failure.
  virtual DWORD GetModuleFileNameA(std::string* path);
};

}  // namespace corvane::platform
