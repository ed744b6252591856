#include "platform/file_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

HANDLE FileApi::CreateFileW(LPCWSTR, DWORD, DWORD) {
  SetNotImplemented();
  return nullptr;
}

BOOL FileApi::ReadFile(HANDLE, void*, DWORD, DWORD*) {
  SetNotImplemented();
  return FALSE;
}

BOOL FileApi::WriteFile(HANDLE, const void*, DWORD, DWORD*) {
  SetNotImplemented();
  return FALSE;
}

BOOL FileApi::FlushFileBuffers(HANDLE) {
  SetNotImplemented();
  return FALSE;
}

BOOL FileApi::CloseFile(HANDLE) {
  SetNotImplemented();
  return FALSE;
}

BOOL FileApi::GetFileSizeEx(HANDLE, ULONGLONG*) {
  SetNotImplemented();
  return FALSE;
}

BOOL FileApi::CopyFileW(LPCWSTR, LPCWSTR, BOOL) {
  SetNotImplemented();
  return FALSE;
}

BOOL FileApi::MoveFileExW(LPCWSTR, LPCWSTR, DWORD) {
  SetNotImplemented();
  return FALSE;
}

BOOL FileApi::DeleteFileW(LPCWSTR) {
  SetNotImplemented();
  return FALSE;
}

BOOL FileApi::CreateDirectoryW(LPCWSTR) {
  SetNotImplemented();
  return FALSE;
}

DWORD FileApi::GetFileAttributesW(LPCWSTR) {
  SetNotImplemented();
  return INVALID_FILE_ATTRIBUTES;
}

DWORD FileApi::GetModuleFileNameA(std::string*) {
  SetNotImplemented();
  return 0;
}

HRESULT FileApi::SHGetFolderPathW(int, std::u16string*) { return E_NOTIMPL; }

}  // namespace corvane::platform
