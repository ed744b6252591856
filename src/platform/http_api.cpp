#include "platform/http_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

HINTERNET HttpApi::WinHttpOpen(LPCWSTR, DWORD, LPCWSTR, LPCWSTR, DWORD) {
  SetNotImplemented();
  return nullptr;
}

BOOL HttpApi::WinHttpSetTimeouts(HINTERNET, int, int, int, int) {
  SetNotImplemented();
  return FALSE;
}

BOOL HttpApi::WinHttpCrackUrl(LPCWSTR, DWORD, DWORD, URL_COMPONENTS*) {
  SetNotImplemented();
  return FALSE;
}

HINTERNET HttpApi::WinHttpConnect(HINTERNET, LPCWSTR, WORD, DWORD) {
  SetNotImplemented();
  return nullptr;
}

HINTERNET HttpApi::WinHttpOpenRequest(HINTERNET, LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR, const LPCWSTR*,
                                      DWORD) {
  SetNotImplemented();
  return nullptr;
}

BOOL HttpApi::WinHttpSetOption(HINTERNET, DWORD, const void*, DWORD) {
  SetNotImplemented();
  return FALSE;
}

BOOL HttpApi::WinHttpAddRequestHeaders(HINTERNET, LPCWSTR, DWORD, DWORD) {
  SetNotImplemented();
  return FALSE;
}

BOOL HttpApi::WinHttpSendRequest(HINTERNET, LPCWSTR, DWORD, const void*, DWORD, DWORD,
                                 std::uintptr_t) {
  SetNotImplemented();
  return FALSE;
}

BOOL HttpApi::WinHttpWriteData(HINTERNET, const void*, DWORD, DWORD*) {
  SetNotImplemented();
  return FALSE;
}

BOOL HttpApi::WinHttpReceiveResponse(HINTERNET, void*) {
  SetNotImplemented();
  return FALSE;
}

BOOL HttpApi::WinHttpQueryHeaders(HINTERNET, DWORD, LPCWSTR, void*, DWORD*, DWORD*) {
  SetNotImplemented();
  return FALSE;
}

BOOL HttpApi::WinHttpQueryDataAvailable(HINTERNET, DWORD*) {
  SetNotImplemented();
  return FALSE;
}

BOOL HttpApi::WinHttpReadData(HINTERNET, void*, DWORD, DWORD*) {
  SetNotImplemented();
  return FALSE;
}

BOOL HttpApi::WinHttpCloseHandle(HINTERNET) {
  SetNotImplemented();
  return FALSE;
}

BOOL HttpApi::WinHttpGetIEProxyConfigForCurrentUser(WINHTTP_CURRENT_USER_IE_PROXY_CONFIG*) {
  SetNotImplemented();
  return FALSE;
}

BOOL HttpApi::WinHttpGetProxyForUrl(HINTERNET, LPCWSTR, const WINHTTP_AUTOPROXY_OPTIONS*,
                                    WINHTTP_PROXY_INFO*) {
  SetNotImplemented();
  return FALSE;
}

BOOL HttpApi::WinHttpDetectAutoProxyConfigUrl(DWORD, char16_t**) {
  SetNotImplemented();
  return FALSE;
}

void HttpApi::GlobalFree(void*) {}

int HttpApi::MultiByteToWideChar(unsigned, DWORD, const char*, int, char16_t*, int) {
  SetNotImplemented();
  return 0;
}

}  // namespace corvane::platform
