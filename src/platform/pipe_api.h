#pragma once
#include <cstddef>

#include "platform/types.h"

namespace corvane::platform {

struct SECURITY_ATTRIBUTES;

inline constexpr DWORD PIPE_ACCESS_DUPLEX = 0x3;
inline constexpr DWORD FILE_FLAG_OVERLAPPED = 0x40000000;
inline constexpr DWORD PIPE_TYPE_MESSAGE = 0x4;
inline constexpr DWORD PIPE_READMODE_MESSAGE = 0x2;
inline constexpr DWORD PIPE_WAIT = 0x0;
inline constexpr DWORD PIPE_UNLIMITED_INSTANCES = 255;
inline constexpr DWORD WAIT_IO_COMPLETION = 192;
inline constexpr DWORD ERROR_BROKEN_PIPE = 109;
inline constexpr DWORD ERROR_PIPE_BUSY = 231;
inline constexpr DWORD ERROR_PIPE_NOT_CONNECTED = 233;
inline constexpr DWORD ERROR_PIPE_CONNECTED = 535;
inline constexpr DWORD ERROR_OPERATION_ABORTED = 995;
inline constexpr DWORD ERROR_IO_INCOMPLETE = 996;
inline constexpr DWORD ERROR_IO_PENDING = 997;
inline constexpr std::uintptr_t STATUS_PENDING = 0x103;

// minwinbase.h. `Internal` is STATUS_PENDING from the start of an operation until it is complete,
// whether its completion routine has run or not.
struct OVERLAPPED {
  std::uintptr_t Internal = 0;
  std::uintptr_t InternalHigh = 0;
  DWORD Offset = 0;
  DWORD OffsetHigh = 0;
  HANDLE hEvent = nullptr;  // of ThreadApi
};
static_assert(sizeof(OVERLAPPED) == 32);

inline bool HasOverlappedIoCompleted(const OVERLAPPED& overlapped) {
  return overlapped.Internal != STATUS_PENDING;
}

// `error` is a system error code.
using OVERLAPPED_COMPLETION_ROUTINE = void (*)(DWORD error, DWORD bytes, OVERLAPPED* overlapped);
using PAPCFUNC = void (*)(std::uintptr_t data);

// The server's ends of named pipes in message mode, and the alertable wait in which their
// operations end. Operations that give BOOL or a null handle leave the reason in
// ThreadApi::GetLastError().
//
// A message is UTF-16 with its NUL. It is at most 1,000,000 bytes: a longer one ends the read with
// ERROR_MORE_DATA. A client that has gone ends reads and writes with ERROR_BROKEN_PIPE. Each
// instance has a buffer of 1,000,000 bytes towards its client: a write that fits is complete at
// once, another one is pending until the client has read enough. No operation but the wait blocks.
//
// Completion routines and queued calls run on the thread that began the operation (or whose handle
// was given), only inside its WaitForMultipleObjectsEx, one at a time and in order.
class PipeApi {
 public:
  virtual ~PipeApi() = default;

  // `path` is \\.\pipe\ and a name. Makes one more instance of the pipe, which has no client yet.
  // Null on failure; ERROR_PIPE_BUSY when there are `maxInstances` (255: as many as the platform
  // gives), ERROR_ACCESS_DENIED when another process serves that name.
  virtual HANDLE CreateNamedPipeW(LPCWSTR path, DWORD openMode, DWORD pipeMode, DWORD maxInstances,
                                  DWORD outBufferSize, DWORD inBufferSize, DWORD defaultTimeoutMs,
                                  const SECURITY_ATTRIBUTES* attributes);
  // FALSE with ERROR_IO_PENDING, and hEvent is set once a client is there; or with
  // ERROR_PIPE_CONNECTED, when one was there before the call (the event stays as it is).
  virtual BOOL ConnectNamedPipe(HANDLE pipe, OVERLAPPED* overlapped);
  // Without `wait`: ERROR_IO_INCOMPLETE while the operation is pending.
  virtual BOOL GetOverlappedResult(HANDLE pipe, OVERLAPPED* overlapped, DWORD* transferred,
                                   BOOL wait);
  virtual BOOL ReadFileEx(HANDLE pipe, void* buffer, DWORD size, OVERLAPPED* overlapped,
                          OVERLAPPED_COMPLETION_ROUTINE completion);
  virtual BOOL WriteFileEx(HANDLE pipe, const void* buffer, DWORD size, OVERLAPPED* overlapped,
                           OVERLAPPED_COMPLETION_ROUTINE completion);
  // The client's end breaks; what it has not read is lost.
  virtual BOOL DisconnectNamedPipe(HANDLE pipe);
  // Pending operations end without their completion routines being called any more.
  virtual BOOL CloseHandle(HANDLE pipe);
  // The process at the other end; FALSE where the platform cannot tell.
  virtual BOOL GetNamedPipeClientProcessId(HANDLE pipe, ULONG* processId);

  // WAIT_OBJECT_0 + index, WAIT_TIMEOUT, WAIT_FAILED; WAIT_IO_COMPLETION after completion routines
  // or queued calls have run. The handles are ThreadApi's. The only alertable wait there is.
  virtual DWORD WaitForMultipleObjectsEx(DWORD count, const HANDLE* objects, BOOL waitAll,
                                         DWORD milliseconds, BOOL alertable);
  // Has `thread` (a handle of ThreadApi) call `routine` in its next alertable wait. 0 on failure;
  // calls that an ended thread did not come to are forgotten.
  virtual DWORD QueueUserAPC(PAPCFUNC routine, HANDLE thread, std::uintptr_t data);

  // The record of a client: zeroed. A page of it costs memory only once it is written. Freeing a
  // record whose operation is still pending keeps the memory until that has ended.
  virtual void* GlobalAlloc(std::size_t bytes);
  virtual void GlobalFree(void* memory);

  // What the security descriptor of a pipe is made from.
  virtual BOOL OpenThreadToken(HANDLE* token);   // of the calling thread, to query
  virtual BOOL OpenProcessToken(HANDLE* token);  // of this process, to query
  virtual BOOL CloseToken(HANDLE token);
  // TokenUser. ERROR_INSUFFICIENT_BUFFER with the bytes needed in *size.
  virtual BOOL GetTokenUser(HANDLE token, void* buffer, DWORD bufferSize, DWORD* size);
  // `tokenUser` is what GetTokenUser gave. "S-1-5-18" is the system's account.
  virtual BOOL ConvertSidToStringSidW(const void* tokenUser, std::u16string* sid);
  virtual BOOL ConvertStringSecurityDescriptorToSecurityDescriptorW(LPCWSTR sddl, DWORD revision,
                                                                    void** descriptor);
  virtual void LocalFree(void* descriptor);
  virtual DWORD GetMajorVersion();  // of the operating system, GetVersionExW; 0 on failure
};

}  // namespace corvane::platform
