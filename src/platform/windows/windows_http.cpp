#include "platform/windows/windows_http.h"

#include "platform/windows/system_call.h"

namespace corvane::platform::windows {

namespace {

constexpr BOOL kFailed = FALSE;

BOOL Missing() {
  WindowsThreads::KeepLastError(ERROR_CALL_NOT_IMPLEMENTED);
  return kFailed;
}

HINTERNET MissingHandle() {
  Missing();
  return nullptr;
}

}  // namespace

HINTERNET WindowsHttp::WinHttpOpen(LPCWSTR userAgent, DWORD accessType, LPCWSTR proxyName,
                                   LPCWSTR proxyBypass, DWORD flags) {
  const auto call = CORVANE_FIND(m_Library, WinHttpOpen);
  if (!call) return MissingHandle();
  return ForwardOrFail("WinHttpOpen", [&] {
    return call(Wide(userAgent), accessType, Wide(proxyName), Wide(proxyBypass), flags);
  });
}

BOOL WindowsHttp::WinHttpSetTimeouts(HINTERNET session, int resolve, int connect, int send,
                                     int receive) {
  const auto call = CORVANE_FIND(m_Library, WinHttpSetTimeouts);
  if (!call) return Missing();
  return ForwardOrFail("WinHttpSetTimeouts",
                       [&] { return call(session, resolve, connect, send, receive); });
}

// Without a buffer for the query, the system leaves it with the path.
BOOL WindowsHttp::WinHttpCrackUrl(LPCWSTR url, DWORD length, DWORD flags, URL_COMPONENTS* parts) {
  const auto call = CORVANE_FIND(m_Library, WinHttpCrackUrl);
  if (!call) return Missing();
  ::URL_COMPONENTS pieces{};
  pieces.dwStructSize = sizeof(pieces);
  pieces.lpszHostName = Wide(parts->lpszHostName);
  pieces.dwHostNameLength = parts->dwHostNameLength;
  pieces.lpszUrlPath = Wide(parts->lpszUrlPath);
  pieces.dwUrlPathLength = parts->dwUrlPathLength;
  const BOOL done =
      ForwardOrFail("WinHttpCrackUrl", [&] { return call(Wide(url), length, flags, &pieces); });
  if (!done) return kFailed;
  parts->nScheme = static_cast<int>(pieces.nScheme);
  parts->nPort = pieces.nPort;
  parts->dwHostNameLength = pieces.dwHostNameLength;
  parts->dwUrlPathLength = pieces.dwUrlPathLength;
  return done;
}

HINTERNET WindowsHttp::WinHttpConnect(HINTERNET session, LPCWSTR host, WORD port, DWORD reserved) {
  const auto call = CORVANE_FIND(m_Library, WinHttpConnect);
  if (!call) return MissingHandle();
  return ForwardOrFail("WinHttpConnect", [&] { return call(session, Wide(host), port, reserved); });
}

HINTERNET WindowsHttp::WinHttpOpenRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR path,
                                          LPCWSTR version, LPCWSTR referrer,
                                          const LPCWSTR* acceptTypes, DWORD flags) {
  const auto call = CORVANE_FIND(m_Library, WinHttpOpenRequest);
  if (!call) return MissingHandle();
  auto* const types = reinterpret_cast<const wchar_t**>(const_cast<LPCWSTR*>(acceptTypes));
  return ForwardOrFail("WinHttpOpenRequest", [&] {
    return call(connection, Wide(verb), Wide(path), Wide(version), Wide(referrer), types, flags);
  });
}

BOOL WindowsHttp::WinHttpSetOption(HINTERNET handle, DWORD option, const void* value, DWORD size) {
  const auto call = CORVANE_FIND(m_Library, WinHttpSetOption);
  if (!call) return Missing();
  return ForwardOrFail("WinHttpSetOption",
                       [&] { return call(handle, option, const_cast<void*>(value), size); });
}

BOOL WindowsHttp::WinHttpAddRequestHeaders(HINTERNET request, LPCWSTR headers, DWORD length,
                                           DWORD modifiers) {
  const auto call = CORVANE_FIND(m_Library, WinHttpAddRequestHeaders);
  if (!call) return Missing();
  return ForwardOrFail("WinHttpAddRequestHeaders",
                       [&] { return call(request, Wide(headers), length, modifiers); });
}

BOOL WindowsHttp::WinHttpSendRequest(HINTERNET request, LPCWSTR headers, DWORD headersLength,
                                     const void* optional, DWORD optionalLength, DWORD totalLength,
                                     std::uintptr_t context) {
  const auto call = CORVANE_FIND(m_Library, WinHttpSendRequest);
  if (!call) return Missing();
  return ForwardOrFail("WinHttpSendRequest", [&] {
    return call(request, Wide(headers), headersLength, const_cast<void*>(optional), optionalLength,
                totalLength, context);
  });
}

BOOL WindowsHttp::WinHttpWriteData(HINTERNET request, const void* data, DWORD size,
                                   DWORD* written) {
  const auto call = CORVANE_FIND(m_Library, WinHttpWriteData);
  if (!call) return Missing();
  return ForwardOrFail("WinHttpWriteData",
                       [&] { return call(request, data, size, As32(written)); });
}

BOOL WindowsHttp::WinHttpReceiveResponse(HINTERNET request, void* reserved) {
  const auto call = CORVANE_FIND(m_Library, WinHttpReceiveResponse);
  if (!call) return Missing();
  return ForwardOrFail("WinHttpReceiveResponse", [&] { return call(request, reserved); });
}

BOOL WindowsHttp::WinHttpQueryHeaders(HINTERNET request, DWORD infoLevel, LPCWSTR name,
                                      void* buffer, DWORD* size, DWORD* index) {
  const auto call = CORVANE_FIND(m_Library, WinHttpQueryHeaders);
  if (!call) return Missing();
  return ForwardOrFail("WinHttpQueryHeaders", [&] {
    return call(request, infoLevel, Wide(name), buffer, As32(size), As32(index));
  });
}

BOOL WindowsHttp::WinHttpQueryDataAvailable(HINTERNET request, DWORD* available) {
  const auto call = CORVANE_FIND(m_Library, WinHttpQueryDataAvailable);
  if (!call) return Missing();
  return ForwardOrFail("WinHttpQueryDataAvailable", [&] { return call(request, As32(available)); });
}

BOOL WindowsHttp::WinHttpReadData(HINTERNET request, void* buffer, DWORD size, DWORD* read) {
  const auto call = CORVANE_FIND(m_Library, WinHttpReadData);
  if (!call) return Missing();
  return ForwardOrFail("WinHttpReadData", [&] { return call(request, buffer, size, As32(read)); });
}

BOOL WindowsHttp::WinHttpCloseHandle(HINTERNET handle) {
  const auto call = CORVANE_FIND(m_Library, WinHttpCloseHandle);
  if (!call) return Missing();
  return ForwardOrFail("WinHttpCloseHandle", [&] { return call(handle); });
}

BOOL WindowsHttp::WinHttpGetIEProxyConfigForCurrentUser(
    WINHTTP_CURRENT_USER_IE_PROXY_CONFIG* config) {
  const auto call = CORVANE_FIND(m_Library, WinHttpGetIEProxyConfigForCurrentUser);
  if (!call) return Missing();
  return ForwardOrFail("WinHttpGetIEProxyConfigForCurrentUser",
                       [&] { return call(As<::WINHTTP_CURRENT_USER_IE_PROXY_CONFIG>(config)); });
}

BOOL WindowsHttp::WinHttpGetProxyForUrl(HINTERNET session, LPCWSTR url,
                                        const WINHTTP_AUTOPROXY_OPTIONS* options,
                                        WINHTTP_PROXY_INFO* info) {
  const auto call = CORVANE_FIND(m_Library, WinHttpGetProxyForUrl);
  if (!call) return Missing();
  auto* const wanted = const_cast<WINHTTP_AUTOPROXY_OPTIONS*>(options);
  return ForwardOrFail("WinHttpGetProxyForUrl", [&] {
    return call(session, Wide(url), As<::WINHTTP_AUTOPROXY_OPTIONS>(wanted),
                As<::WINHTTP_PROXY_INFO>(info));
  });
}

BOOL WindowsHttp::WinHttpDetectAutoProxyConfigUrl(DWORD detectFlags, char16_t** url) {
  const auto call = CORVANE_FIND(m_Library, WinHttpDetectAutoProxyConfigUrl);
  if (!call) return Missing();
  return ForwardOrFail("WinHttpDetectAutoProxyConfigUrl",
                       [&] { return call(detectFlags, reinterpret_cast<wchar_t**>(url)); });
}

void WindowsHttp::GlobalFree(void* memory) {
  Forward("GlobalFree", [&] { return ::GlobalFree(memory); });
}

int WindowsHttp::MultiByteToWideChar(unsigned codePage, DWORD flags, const char* bytes, int size,
                                     char16_t* wide, int wideSize) {
  return ForwardOrFail("MultiByteToWideChar", [&] {
    return ::MultiByteToWideChar(codePage, flags, bytes, size, Wide(wide), wideSize);
  });
}

}  // namespace corvane::platform::windows
