#include "platform/windows/windows_http.h"

#include "platform/windows/library_call.h"

namespace corvane::platform::windows {

HINTERNET WindowsHttp::WinHttpOpen(LPCWSTR userAgent, DWORD accessType, LPCWSTR proxyName,
                                   LPCWSTR proxyBypass, DWORD flags) {
  return ForwardOrFailIfFound("WinHttpOpen", CORVANE_FIND(m_Library, WinHttpOpen), Wide(userAgent),
                              accessType, Wide(proxyName), Wide(proxyBypass), flags);
}

BOOL WindowsHttp::WinHttpSetTimeouts(HINTERNET session, int resolve, int connect, int send,
                                     int receive) {
  return ForwardOrFailIfFound("WinHttpSetTimeouts", CORVANE_FIND(m_Library, WinHttpSetTimeouts),
                              session, resolve, connect, send, receive);
}

// Without a buffer for the query, the system leaves it with the path.
BOOL WindowsHttp::WinHttpCrackUrl(LPCWSTR url, DWORD length, DWORD flags, URL_COMPONENTS* parts) {
  ::URL_COMPONENTS pieces{};
  pieces.dwStructSize = sizeof(pieces);
  pieces.lpszHostName = Wide(parts->lpszHostName);
  pieces.dwHostNameLength = parts->dwHostNameLength;
  pieces.lpszUrlPath = Wide(parts->lpszUrlPath);
  pieces.dwUrlPathLength = parts->dwUrlPathLength;
  const BOOL done =
      ForwardOrFailIfFound("WinHttpCrackUrl", CORVANE_FIND(m_Library, WinHttpCrackUrl), Wide(url),
                           length, flags, &pieces);
  if (!done) return FALSE;
  parts->nScheme = static_cast<int>(pieces.nScheme);
  parts->nPort = pieces.nPort;
  parts->dwHostNameLength = pieces.dwHostNameLength;
  parts->dwUrlPathLength = pieces.dwUrlPathLength;
  return done;
}

HINTERNET WindowsHttp::WinHttpConnect(HINTERNET session, LPCWSTR host, WORD port, DWORD reserved) {
  return ForwardOrFailIfFound("WinHttpConnect", CORVANE_FIND(m_Library, WinHttpConnect), session,
                              Wide(host), port, reserved);
}

HINTERNET WindowsHttp::WinHttpOpenRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR path,
                                          LPCWSTR version, LPCWSTR referrer,
                                          const LPCWSTR* acceptTypes, DWORD flags) {
  auto* const types = reinterpret_cast<const wchar_t**>(const_cast<LPCWSTR*>(acceptTypes));
  return ForwardOrFailIfFound("WinHttpOpenRequest", CORVANE_FIND(m_Library, WinHttpOpenRequest),
                              connection, Wide(verb), Wide(path), Wide(version), Wide(referrer),
                              types, flags);
}

BOOL WindowsHttp::WinHttpSetOption(HINTERNET handle, DWORD option, const void* value, DWORD size) {
  return ForwardOrFailIfFound("WinHttpSetOption", CORVANE_FIND(m_Library, WinHttpSetOption), handle,
                              option, const_cast<void*>(value), size);
}

BOOL WindowsHttp::WinHttpAddRequestHeaders(HINTERNET request, LPCWSTR headers, DWORD length,
                                           DWORD modifiers) {
  return ForwardOrFailIfFound("WinHttpAddRequestHeaders",
                              CORVANE_FIND(m_Library, WinHttpAddRequestHeaders), request,
                              Wide(headers), length, modifiers);
}

BOOL WindowsHttp::WinHttpSendRequest(HINTERNET request, LPCWSTR headers, DWORD headersLength,
                                     const void* optional, DWORD optionalLength, DWORD totalLength,
                                     std::uintptr_t context) {
  return ForwardOrFailIfFound("WinHttpSendRequest", CORVANE_FIND(m_Library, WinHttpSendRequest),
                              request, Wide(headers), headersLength, const_cast<void*>(optional),
                              optionalLength, totalLength, context);
}

BOOL WindowsHttp::WinHttpWriteData(HINTERNET request, const void* data, DWORD size,
                                   DWORD* written) {
  return ForwardOrFailIfFound("WinHttpWriteData", CORVANE_FIND(m_Library, WinHttpWriteData),
                              request, data, size, As32(written));
}

BOOL WindowsHttp::WinHttpReceiveResponse(HINTERNET request, void* reserved) {
  return ForwardOrFailIfFound("WinHttpReceiveResponse",
                              CORVANE_FIND(m_Library, WinHttpReceiveResponse), request, reserved);
}

BOOL WindowsHttp::WinHttpQueryHeaders(HINTERNET request, DWORD infoLevel, LPCWSTR name,
                                      void* buffer, DWORD* size, DWORD* index) {
  return ForwardOrFailIfFound("WinHttpQueryHeaders", CORVANE_FIND(m_Library, WinHttpQueryHeaders),
                              request, infoLevel, Wide(name), buffer, As32(size), As32(index));
}

BOOL WindowsHttp::WinHttpQueryDataAvailable(HINTERNET request, DWORD* available) {
  return ForwardOrFailIfFound("WinHttpQueryDataAvailable",
                              CORVANE_FIND(m_Library, WinHttpQueryDataAvailable), request,
                              As32(available));
}

BOOL WindowsHttp::WinHttpReadData(HINTERNET request, void* buffer, DWORD size, DWORD* read) {
  return ForwardOrFailIfFound("WinHttpReadData", CORVANE_FIND(m_Library, WinHttpReadData), request,
                              buffer, size, As32(read));
}

BOOL WindowsHttp::WinHttpCloseHandle(HINTERNET handle) {
  return ForwardOrFailIfFound("WinHttpCloseHandle", CORVANE_FIND(m_Library, WinHttpCloseHandle),
                              handle);
}

BOOL WindowsHttp::WinHttpGetIEProxyConfigForCurrentUser(
    WINHTTP_CURRENT_USER_IE_PROXY_CONFIG* config) {
  return ForwardOrFailIfFound("WinHttpGetIEProxyConfigForCurrentUser",
                              CORVANE_FIND(m_Library, WinHttpGetIEProxyConfigForCurrentUser),
                              As<::WINHTTP_CURRENT_USER_IE_PROXY_CONFIG>(config));
}

BOOL WindowsHttp::WinHttpGetProxyForUrl(HINTERNET session, LPCWSTR url,
                                        const WINHTTP_AUTOPROXY_OPTIONS* options,
                                        WINHTTP_PROXY_INFO* info) {
  auto* const wanted = const_cast<WINHTTP_AUTOPROXY_OPTIONS*>(options);
  return ForwardOrFailIfFound(
      "WinHttpGetProxyForUrl", CORVANE_FIND(m_Library, WinHttpGetProxyForUrl), session, Wide(url),
      As<::WINHTTP_AUTOPROXY_OPTIONS>(wanted), As<::WINHTTP_PROXY_INFO>(info));
}

BOOL WindowsHttp::WinHttpDetectAutoProxyConfigUrl(DWORD detectFlags, char16_t** url) {
  return ForwardOrFailIfFound("WinHttpDetectAutoProxyConfigUrl",
                              CORVANE_FIND(m_Library, WinHttpDetectAutoProxyConfigUrl), detectFlags,
                              reinterpret_cast<wchar_t**>(url));
}

void WindowsHttp::GlobalFree(void* memory) {
  Forward("GlobalFree", [&] { return ::GlobalFree(memory); });
}

// MB_PRECOMPOSED is what all code pages do that have a choice, and ERROR_INVALID_FLAGS with those
// that have none, such as UTF-8, which the program's manifest makes the default one.
int WindowsHttp::MultiByteToWideChar(unsigned codePage, DWORD flags, const char* bytes, int size,
                                     char16_t* wide, int wideSize) {
  const ::DWORD others = flags & ~::DWORD{MB_PRECOMPOSED};
  return ForwardOrFail("MultiByteToWideChar", [&] {
    return ::MultiByteToWideChar(codePage, others, bytes, size, Wide(wide), wideSize);
  });
}

}  // namespace corvane::platform::windows
