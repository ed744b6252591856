#pragma once
#include "platform/pipe_api.h"

namespace corvane::platform::windows {

// Named pipes. The records of clients are this object's: one that is freed while an operation is
// pending stays until that has ended.
class WindowsPipes final : public PipeApi {
 public:
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
};

}  // namespace corvane::platform::windows
