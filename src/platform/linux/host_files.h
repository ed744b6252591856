#pragma once
#include <string>

#include "platform/file_api.h"

namespace corvane::platform {
class ThreadApi;
}
namespace corvane::platform::sim {
class SeamGate;
}

namespace corvane::platform::linux_host {

// Files of the host, by UTF-8 paths. Names are compared by their case and open files may be deleted
// or replaced, as POSIX has it.
class HostFiles final : public FileApi {
 public:
  // `dataFolder` is what CSIDL_COMMON_APPDATA names; `threads` keeps the calling thread's last
  // error.
  HostFiles(sim::SeamGate& gate, ThreadApi& threads, std::u16string dataFolder);

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
  BOOL Fail(DWORD code);
  BOOL FailWithErrno();

  sim::SeamGate& m_Gate;
  ThreadApi& m_Threads;
  const std::u16string m_DataFolder;
};

}  // namespace corvane::platform::linux_host
