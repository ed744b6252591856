#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_api.h"

namespace corvane::platform {
class ThreadApi;
}

namespace corvane::platform::sim {

class SeamGate;

// The files of the simulated PC, in memory. Paths are absolute; both separators serve, and the case
// of ASCII letters makes no difference. As on Windows, a file that is open can be opened again but
// neither be deleted nor be moved or replaced (ERROR_SHARING_VIOLATION).
//
// The program's calls pass the gate; Read, Write and the other plain look-ups, which are for tests
// and worlds, do not.
class SimFiles final : public FileApi {
 public:
  static constexpr LPCWSTR kDataFolder = u"/data";
  static constexpr LPCWSTR kProgramFolder = u"/program";  // where the program's executable lies

  // `threads` keeps the last error of the calling thread.
  SimFiles(SeamGate& gate, ThreadApi& threads);

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

  // Nothing when there is no such file.
  std::optional<std::string> Read(std::u16string_view path) const;
  // Makes the file and the directories above it where missing.
  void Write(std::u16string_view path, std::string_view bytes);
  void MakeDirectories(std::u16string_view path);
  bool Remove(std::u16string_view path);  // open or not; handles on it go on
  // All files at and below a directory, with '/' as separator, in order.
  std::vector<std::u16string> List(std::u16string_view directory) const;
  std::size_t OpenHandles() const { return m_Handles.size(); }

 private:
  struct Node {
    std::u16string path = {};  // as it was spelled
    bool directory = false;
    std::string bytes = {};
    int handles = 0;
  };
  struct Handle {
    std::shared_ptr<Node> node;
    DWORD access = 0;
    std::size_t position = 0;
  };

  bool Passes(const char* operation, DWORD ordinary);
  BOOL Fail(DWORD code);
  Handle* Find(HANDLE file);
  std::shared_ptr<Node> FindNode(std::u16string_view path) const;
  bool HasParent(std::u16string_view path) const;
  // ERROR_FILE_NOT_FOUND, or ERROR_PATH_NOT_FOUND when the directory is missing too.
  DWORD WhyMissing(std::u16string_view path) const;
  DWORD Open(std::u16string_view path, DWORD access, DWORD disposition, HANDLE* file);
  DWORD Copy(std::u16string_view from, std::u16string_view to, bool failIfExists);
  DWORD Move(std::u16string_view from, std::u16string_view to, bool replace);

  SeamGate& m_Gate;
  ThreadApi& m_Threads;
  std::map<std::u16string, std::shared_ptr<Node>> m_Nodes;  // by folded path
  std::map<std::uintptr_t, Handle> m_Handles;
  std::uintptr_t m_LastHandle = 0;
};

}  // namespace corvane::platform::sim
