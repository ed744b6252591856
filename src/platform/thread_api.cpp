#include "platform/thread_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

HANDLE ThreadApi::CreateThread(ThreadProc, void*, const char*, DWORD*) {
  SetNotImplemented();
  return nullptr;
}

BOOL ThreadApi::TerminateThread(HANDLE, DWORD) {
  SetNotImplemented();
  return FALSE;
}

bool ThreadApi::AwaitAbandoned(DWORD) { return true; }

BOOL ThreadApi::GetExitCodeThread(HANDLE, DWORD*) {
  SetNotImplemented();
  return FALSE;
}

DWORD ThreadApi::GetCurrentThreadId() { return 1; }

HANDLE ThreadApi::CreateEventW(BOOL, BOOL, const char*) {
  SetNotImplemented();
  return nullptr;
}

BOOL ThreadApi::SetEvent(HANDLE) {
  SetNotImplemented();
  return FALSE;
}

BOOL ThreadApi::ResetEvent(HANDLE) {
  SetNotImplemented();
  return FALSE;
}

HANDLE ThreadApi::CreateSemaphoreW(LONG, LONG, const char*) {
  SetNotImplemented();
  return nullptr;
}

BOOL ThreadApi::ReleaseSemaphore(HANDLE, LONG, LONG*) {
  SetNotImplemented();
  return FALSE;
}

BOOL ThreadApi::CloseHandle(HANDLE) {
  SetNotImplemented();
  return FALSE;
}

DWORD ThreadApi::WaitForSingleObject(HANDLE, DWORD) {
  SetNotImplemented();
  return WAIT_FAILED;
}

DWORD ThreadApi::WaitForMultipleObjects(DWORD, const HANDLE*, BOOL, DWORD) {
  SetNotImplemented();
  return WAIT_FAILED;
}

void ThreadApi::Sleep(DWORD) {}

void ThreadApi::InitializeCriticalSection(CRITICAL_SECTION* section, const char* name, int rank) {
  section->name = name;
  section->rank = rank;
}

void ThreadApi::EnterCriticalSection(CRITICAL_SECTION*) {}
void ThreadApi::LeaveCriticalSection(CRITICAL_SECTION*) {}
void ThreadApi::DeleteCriticalSection(CRITICAL_SECTION*) {}

DWORD ThreadApi::GetLastError() { return ERROR_CALL_NOT_IMPLEMENTED; }
void ThreadApi::SetLastError(DWORD) {}

}  // namespace corvane::platform
