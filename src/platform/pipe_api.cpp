#include "platform/pipe_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

HANDLE PipeApi::CreateNamedPipeW(LPCWSTR, DWORD, DWORD, DWORD, DWORD, DWORD, DWORD,
                                 const SECURITY_ATTRIBUTES*) {
  SetNotImplemented();
  return nullptr;
}

BOOL PipeApi::ConnectNamedPipe(HANDLE, OVERLAPPED*) {
  SetNotImplemented();
  return FALSE;
}

BOOL PipeApi::GetOverlappedResult(HANDLE, OVERLAPPED*, DWORD*, BOOL) {
  SetNotImplemented();
  return FALSE;
}

BOOL PipeApi::ReadFileEx(HANDLE, void*, DWORD, OVERLAPPED*, OVERLAPPED_COMPLETION_ROUTINE) {
  SetNotImplemented();
  return FALSE;
}

BOOL PipeApi::WriteFileEx(HANDLE, const void*, DWORD, OVERLAPPED*, OVERLAPPED_COMPLETION_ROUTINE) {
  SetNotImplemented();
  return FALSE;
}

BOOL PipeApi::DisconnectNamedPipe(HANDLE) {
  SetNotImplemented();
  return FALSE;
}

BOOL PipeApi::CloseHandle(HANDLE) {
  SetNotImplemented();
  return FALSE;
}

BOOL PipeApi::GetNamedPipeClientProcessId(HANDLE, ULONG*) {
  SetNotImplemented();
  return FALSE;
}

DWORD PipeApi::WaitForMultipleObjectsEx(DWORD, const HANDLE*, BOOL, DWORD, BOOL) {
  SetNotImplemented();
  return WAIT_FAILED;
}

DWORD PipeApi::QueueUserAPC(PAPCFUNC, HANDLE, std::uintptr_t) {
  SetNotImplemented();
  return 0;
}

void* PipeApi::GlobalAlloc(std::size_t) {
  SetNotImplemented();
  return nullptr;
}

void PipeApi::GlobalFree(void*) {}

BOOL PipeApi::OpenThreadToken(HANDLE*) {
  SetNotImplemented();
  return FALSE;
}

BOOL PipeApi::OpenProcessToken(HANDLE*) {
  SetNotImplemented();
  return FALSE;
}

BOOL PipeApi::CloseToken(HANDLE) {
  SetNotImplemented();
  return FALSE;
}

BOOL PipeApi::GetTokenUser(HANDLE, void*, DWORD, DWORD*) {
  SetNotImplemented();
  return FALSE;
}

BOOL PipeApi::ConvertSidToStringSidW(const void*, std::u16string*) {
  SetNotImplemented();
  return FALSE;
}

BOOL PipeApi::ConvertStringSecurityDescriptorToSecurityDescriptorW(LPCWSTR, DWORD, void**) {
  SetNotImplemented();
  return FALSE;
}

void PipeApi::LocalFree(void*) {}

DWORD PipeApi::GetMajorVersion() { return 0; }

}  // namespace corvane::platform
