#pragma once
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/pipe_api.h"
#include "platform/windows/pipe_records.h"

namespace corvane::platform::windows {

class WindowsThreads;

// Named pipes. The first instance of a name is made only where no other process has that name, and
// clients of other machines are turned away. The records of clients are this object's: one that is
// freed while an operation is pending stays until that has ended.
class WindowsPipes final : public PipeApi {
 public:
  explicit WindowsPipes(WindowsThreads& threads);
  ~WindowsPipes() override;

  HANDLE CreateNamedPipeW(LPCWSTR path, DWORD openMode, DWORD pipeMode, DWORD maxInstances,
                          DWORD outBufferSize, DWORD inBufferSize, DWORD defaultTimeoutMs,
                          const SECURITY_ATTRIBUTES* attributes) override;
  BOOL ConnectNamedPipe(HANDLE pipe, OVERLAPPED* overlapped) override;
  BOOL GetOverlappedResult(HANDLE pipe, OVERLAPPED* overlapped, DWORD* transferred,
                           BOOL wait) override;
  BOOL ReadFileEx(HANDLE pipe, void* buffer, DWORD size, OVERLAPPED* overlapped,
                  OVERLAPPED_COMPLETION_ROUTINE completion) override;
  BOOL WriteFileEx(HANDLE pipe, const void* buffer, DWORD size, OVERLAPPED* overlapped,
                   OVERLAPPED_COMPLETION_ROUTINE completion) override;
  BOOL DisconnectNamedPipe(HANDLE pipe) override;
  BOOL CloseHandle(HANDLE pipe) override;
  BOOL GetNamedPipeClientProcessId(HANDLE pipe, ULONG* processId) override;
  DWORD WaitForMultipleObjectsEx(DWORD count, const HANDLE* objects, BOOL waitAll,
                                 DWORD milliseconds, BOOL alertable) override;
  DWORD QueueUserAPC(PAPCFUNC routine, HANDLE thread, std::uintptr_t data) override;
  void* GlobalAlloc(std::size_t bytes) override;
  void GlobalFree(void* memory) override;
  BOOL OpenThreadToken(HANDLE* token) override;
  BOOL OpenProcessToken(HANDLE* token) override;
  BOOL CloseToken(HANDLE token) override;
  BOOL GetTokenUser(HANDLE token, void* buffer, DWORD bufferSize, DWORD* size) override;
  BOOL ConvertSidToStringSidW(const void* tokenUser, std::u16string* sid) override;
  BOOL ConvertStringSecurityDescriptorToSecurityDescriptorW(LPCWSTR sddl, DWORD revision,
                                                            void** descriptor) override;
  void LocalFree(void* descriptor) override;
  DWORD GetMajorVersion() override;

  std::size_t OpenHandles() const;  // pipes
  std::size_t OpenRecords() const { return m_Records.Count(); }

 private:
  // What the system keeps of a connect, which may outlive both the pipe's user and the pipe.
  struct Connect;
  struct Pipe {
    std::u16string path;
    std::unique_ptr<Connect> connect;  // null until the first
  };

  BOOL Fail(DWORD code);
  bool IsServed(std::u16string_view path) const;  // needs m_Mutex
  Connect* ConnectOf(HANDLE pipe, const OVERLAPPED* overlapped = nullptr);
  void AwaitEnds(HANDLE handle, const Connect* connect);
  std::size_t MakeCalls();
  DWORD WaitOnce(DWORD count, const HANDLE* objects, BOOL waitAll, DWORD milliseconds);

  WindowsThreads& m_Threads;
  PipeRecords m_Records;
  mutable std::mutex m_Mutex;  // guards those below
  std::map<HANDLE, Pipe> m_Pipes;
  std::vector<std::unique_ptr<Connect>> m_Lingering;  // the system has not ended them
};

}  // namespace corvane::platform::windows
