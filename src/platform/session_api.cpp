#include "platform/session_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

namespace {

BOOL No() {
  SetNotImplemented();
  return FALSE;
}

}  // namespace

DWORD SessionApi::WTSGetActiveConsoleSessionId() {
  SetNotImplemented();
  return NO_CONSOLE_SESSION;
}
BOOL SessionApi::WTSQueryUserToken(DWORD, HANDLE*) { return No(); }
BOOL SessionApi::WTSEnumerateSessionsA(HANDLE, DWORD, DWORD, WTS_SESSION_INFOA**, DWORD*) {
  return No();
}
void SessionApi::WTSFreeMemory(void*) {}
BOOL SessionApi::CreateEnvironmentBlock(void**, HANDLE, BOOL) { return No(); }
BOOL SessionApi::DestroyEnvironmentBlock(void*) { return No(); }
BOOL SessionApi::CreateProcessAsUserW(HANDLE, LPCWSTR, LPCWSTR, BOOL, DWORD, void*, LPCWSTR,
                                      const STARTUPINFOW*, PROCESS_INFORMATION*) {
  return No();
}
DWORD SessionApi::WaitForSingleObject(HANDLE, DWORD) {
  SetNotImplemented();
  return WAIT_FAILED;
}
BOOL SessionApi::GetExitCodeProcess(HANDLE, DWORD*) { return No(); }
BOOL SessionApi::CloseHandle(HANDLE) { return No(); }
BOOL SessionApi::CreatePipe(HANDLE*, HANDLE*, const SECURITY_ATTRIBUTES*, DWORD) { return No(); }
BOOL SessionApi::PeekNamedPipe(HANDLE, DWORD*) { return No(); }
BOOL SessionApi::ReadFile(HANDLE, void*, DWORD, DWORD*) { return No(); }
HANDLE SessionApi::CreateToolhelp32Snapshot(DWORD, DWORD) {
  SetNotImplemented();
  return nullptr;
}
BOOL SessionApi::Process32FirstW(HANDLE, PROCESSENTRY32W*) { return No(); }
BOOL SessionApi::Process32NextW(HANDLE, PROCESSENTRY32W*) { return No(); }
HANDLE SessionApi::OpenProcess(DWORD, BOOL, DWORD) {
  SetNotImplemented();
  return nullptr;
}
BOOL SessionApi::TerminateProcess(HANDLE, DWORD) { return No(); }
int SessionApi::system(const char*) {
  SetNotImplemented();
  return -1;
}
int SessionApi::_wsystem(LPCWSTR) {
  SetNotImplemented();
  return -1;
}
BOOL SessionApi::EnumWindows(WNDENUMPROC, void*) { return No(); }
int SessionApi::GetWindowTextW(HANDLE, char16_t*, int) {
  SetNotImplemented();
  return 0;
}
DWORD SessionApi::NetGetDCName(LPCWSTR, LPCWSTR, std::u16string*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

BOOL SessionApi::GetComputerNameExW(int, char16_t*, DWORD*) { return No(); }
DWORD SessionApi::GetTempPathA(DWORD, char*) {
  SetNotImplemented();
  return 0;
}

}  // namespace corvane::platform
