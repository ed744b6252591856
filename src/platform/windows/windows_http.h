#pragma once
#include "platform/http_api.h"
#include "platform/windows/system_library.h"

namespace corvane::platform::windows {

// HTTP over winhttp.dll.
class WindowsHttp final : public HttpApi {
 public:
  WindowsHttp() = default;
  explicit WindowsHttp(SystemLibrary::Resolver resolver) : m_Library(resolver) {}

  HINTERNET WinHttpOpen(LPCWSTR userAgent, DWORD accessType, LPCWSTR proxyName, LPCWSTR proxyBypass,
                        DWORD flags) override;
  BOOL WinHttpSetTimeouts(HINTERNET session, int resolve, int connect, int send,
                          int receive) override;
  BOOL WinHttpCrackUrl(LPCWSTR url, DWORD length, DWORD flags, URL_COMPONENTS* parts) override;
  HINTERNET WinHttpConnect(HINTERNET session, LPCWSTR host, WORD port, DWORD reserved) override;
  HINTERNET WinHttpOpenRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR path, LPCWSTR version,
                               LPCWSTR referrer, const LPCWSTR* acceptTypes, DWORD flags) override;
  BOOL WinHttpSetOption(HINTERNET handle, DWORD option, const void* value, DWORD size) override;
  BOOL WinHttpAddRequestHeaders(HINTERNET request, LPCWSTR headers, DWORD length,
                                DWORD modifiers) override;
  BOOL WinHttpSendRequest(HINTERNET request, LPCWSTR headers, DWORD headersLength,
                          const void* optional, DWORD optionalLength, DWORD totalLength,
                          std::uintptr_t context) override;
  BOOL WinHttpWriteData(HINTERNET request, const void* data, DWORD size, DWORD* written) override;
  BOOL WinHttpReceiveResponse(HINTERNET request, void* reserved) override;
  BOOL WinHttpQueryHeaders(HINTERNET request, DWORD infoLevel, LPCWSTR name, void* buffer,
                           DWORD* size, DWORD* index) override;
  BOOL WinHttpQueryDataAvailable(HINTERNET request, DWORD* available) override;
  BOOL WinHttpReadData(HINTERNET request, void* buffer, DWORD size, DWORD* read) override;
  BOOL WinHttpCloseHandle(HINTERNET handle) override;
  BOOL WinHttpGetIEProxyConfigForCurrentUser(WINHTTP_CURRENT_USER_IE_PROXY_CONFIG* config) override;
  BOOL WinHttpGetProxyForUrl(HINTERNET session, LPCWSTR url,
                             const WINHTTP_AUTOPROXY_OPTIONS* options,
                             WINHTTP_PROXY_INFO* info) override;
  BOOL WinHttpDetectAutoProxyConfigUrl(DWORD detectFlags, char16_t** url) override;
  void GlobalFree(void* memory) override;
  int MultiByteToWideChar(unsigned codePage, DWORD flags, const char* bytes, int size,
                          char16_t* wide, int wideSize) override;

 private:
  const SystemLibrary m_Library{L"winhttp.dll"};
};

}  // namespace corvane::platform::windows
