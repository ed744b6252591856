#pragma once
#include <string>

#include "platform/types.h"

namespace corvane::platform {

using HINTERNET = void*;

inline constexpr DWORD WINHTTP_ACCESS_TYPE_DEFAULT_PROXY = 0;
inline constexpr DWORD WINHTTP_ACCESS_TYPE_NAMED_PROXY = 3;
inline constexpr DWORD WINHTTP_FLAG_SECURE = 0x800000;
inline constexpr DWORD WINHTTP_ADDREQ_FLAG_ADD = 0x20000000;
inline constexpr DWORD WINHTTP_ADDREQ_FLAG_COALESCE_WITH_SEMICOLON = 0x1000000;
inline constexpr DWORD SECURITY_FLAG_IGNORE_UNKNOWN_CA = 0x100;
inline constexpr DWORD SECURITY_FLAG_IGNORE_CERT_CN_INVALID = 0x1000;
inline constexpr DWORD SECURITY_FLAG_IGNORE_CERT_DATE_INVALID = 0x2000;
inline constexpr DWORD WINHTTP_OPTION_SECURITY_FLAGS = 31;
inline constexpr DWORD WINHTTP_OPTION_PROXY = 38;
inline constexpr DWORD WINHTTP_OPTION_DISABLE_FEATURE = 63;
inline constexpr DWORD WINHTTP_OPTION_PROXY_USERNAME = 4098;  // as the program sets it
inline constexpr DWORD WINHTTP_OPTION_PROXY_PASSWORD = 4099;
inline constexpr DWORD WINHTTP_DISABLE_REDIRECTS = 2;
inline constexpr DWORD WINHTTP_QUERY_CONTENT_TYPE = 1;
inline constexpr DWORD WINHTTP_QUERY_CONTENT_LENGTH = 5;
inline constexpr DWORD WINHTTP_QUERY_STATUS_CODE = 19;
inline constexpr DWORD WINHTTP_QUERY_RAW_HEADERS_CRLF = 22;
inline constexpr DWORD WINHTTP_QUERY_SET_COOKIE = 43;
inline constexpr DWORD WINHTTP_QUERY_FLAG_NUMBER = 0x20000000;
inline constexpr DWORD WINHTTP_AUTOPROXY_AUTO_DETECT = 1;
inline constexpr DWORD WINHTTP_AUTOPROXY_CONFIG_URL = 2;
inline constexpr DWORD WINHTTP_AUTO_DETECT_TYPE_DHCP = 1;
inline constexpr DWORD WINHTTP_AUTO_DETECT_TYPE_DNS_A = 2;
inline constexpr int INTERNET_SCHEME_HTTP = 1;
inline constexpr int INTERNET_SCHEME_HTTPS = 2;
inline constexpr DWORD ERROR_WINHTTP_TIMEOUT = 12002;
inline constexpr DWORD ERROR_WINHTTP_INVALID_URL = 12005;
inline constexpr DWORD ERROR_WINHTTP_UNRECOGNIZED_SCHEME = 12006;
inline constexpr DWORD ERROR_WINHTTP_NAME_NOT_RESOLVED = 12007;
inline constexpr DWORD ERROR_WINHTTP_CANNOT_CONNECT = 12029;
inline constexpr DWORD ERROR_WINHTTP_CONNECTION_ERROR = 12030;
inline constexpr DWORD ERROR_WINHTTP_HEADER_NOT_FOUND = 12150;
inline constexpr DWORD ERROR_WINHTTP_INVALID_SERVER_RESPONSE = 12152;
inline constexpr DWORD ERROR_WINHTTP_REDIRECT_FAILED = 12156;
inline constexpr DWORD ERROR_WINHTTP_SECURE_CHANNEL_ERROR = 12157;
inline constexpr DWORD ERROR_WINHTTP_INCORRECT_HANDLE_TYPE = 12018;
inline constexpr DWORD ERROR_WINHTTP_INCORRECT_HANDLE_STATE = 12019;
inline constexpr DWORD ERROR_WINHTTP_SECURE_FAILURE = 12175;
inline constexpr DWORD ERROR_WINHTTP_AUTODETECTION_FAILED = 12180;
inline constexpr DWORD ERROR_WINHTTP_HEADER_SIZE_OVERFLOW = 12182;
inline constexpr DWORD ERROR_WINHTTP_RESPONSE_DRAIN_OVERFLOW = 12184;
inline constexpr unsigned CP_ACP = 0;  // the system's default code page
inline constexpr unsigned CP_UTF8 = 65001;
inline constexpr DWORD MB_PRECOMPOSED = 1;

// Each text goes back by GlobalFree when the platform gave it out.
struct WINHTTP_CURRENT_USER_IE_PROXY_CONFIG {
  BOOL fAutoDetect = FALSE;
  char16_t* lpszAutoConfigUrl = nullptr;
  char16_t* lpszProxy = nullptr;
  char16_t* lpszProxyBypass = nullptr;
};
static_assert(sizeof(WINHTTP_CURRENT_USER_IE_PROXY_CONFIG) == 32);

struct WINHTTP_PROXY_INFO {
  DWORD dwAccessType = 0;
  char16_t* lpszProxy = nullptr;
  char16_t* lpszProxyBypass = nullptr;
};
static_assert(sizeof(WINHTTP_PROXY_INFO) == 24);

struct WINHTTP_AUTOPROXY_OPTIONS {
  DWORD dwFlags = 0;
  DWORD dwAutoDetectFlags = 0;
  const char16_t* lpszAutoConfigUrl = nullptr;
  void* lpvReserved = nullptr;
  DWORD dwReserved = 0;
  BOOL fAutoLogonIfChallenged = FALSE;
};
static_assert(sizeof(WINHTTP_AUTOPROXY_OPTIONS) == 32);

// The parts of an address as WinHttpCrackUrl writes them into buffers of the caller.
struct URL_COMPONENTS {
  int nScheme = 0;
  char16_t* lpszHostName = nullptr;
  DWORD dwHostNameLength = 0;  // going in: the buffer's characters; coming out: the text's
  WORD nPort = 0;
  char16_t* lpszUrlPath = nullptr;  // with the query
  DWORD dwUrlPathLength = 0;
};

// HTTP as WinHTTP gives it to a synchronous caller. Operations that give BOOL or a null handle
// leave the reason in ThreadApi::GetLastError(). A handle serves one thread at a time and is closed
// by WinHttpCloseHandle exactly once, a request before its connection, that before its session.
class HttpApi {
 public:
  virtual ~HttpApi() = default;
  virtual HINTERNET WinHttpOpen(LPCWSTR userAgent, DWORD accessType, LPCWSTR proxyName,
                                LPCWSTR proxyBypass, DWORD flags);
  // Milliseconds, 0 for no limit; for requests that are opened afterwards.
  virtual BOOL WinHttpSetTimeouts(HINTERNET session, int resolve, int connect, int send,
                                  int receive);
  virtual BOOL WinHttpCrackUrl(LPCWSTR url, DWORD length, DWORD flags, URL_COMPONENTS* parts);
  virtual HINTERNET WinHttpConnect(HINTERNET session, LPCWSTR host, WORD port, DWORD reserved);
  virtual HINTERNET WinHttpOpenRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR path,
                                       LPCWSTR version, LPCWSTR referrer,
                                       const LPCWSTR* acceptTypes, DWORD flags);
  virtual BOOL WinHttpSetOption(HINTERNET handle, DWORD option, const void* value, DWORD size);
  virtual BOOL WinHttpAddRequestHeaders(HINTERNET request, LPCWSTR headers, DWORD length,
                                        DWORD modifiers);
  virtual BOOL WinHttpSendRequest(HINTERNET request, LPCWSTR headers, DWORD headersLength,
                                  const void* optional, DWORD optionalLength, DWORD totalLength,
                                  std::uintptr_t context);
  virtual BOOL WinHttpWriteData(HINTERNET request, const void* data, DWORD size, DWORD* written);
  virtual BOOL WinHttpReceiveResponse(HINTERNET request, void* reserved);
  // `size` in bytes; ERROR_INSUFFICIENT_BUFFER sets it to what is needed. Texts come as UTF-16 with
  // their NUL, numbers (with WINHTTP_QUERY_FLAG_NUMBER) as a DWORD.
  virtual BOOL WinHttpQueryHeaders(HINTERNET request, DWORD infoLevel, LPCWSTR name, void* buffer,
                                   DWORD* size, DWORD* index);
  // Waits for data; 0 at the end of the body.
  virtual BOOL WinHttpQueryDataAvailable(HINTERNET request, DWORD* available);
  virtual BOOL WinHttpReadData(HINTERNET request, void* buffer, DWORD size, DWORD* read);
  virtual BOOL WinHttpCloseHandle(HINTERNET handle);

  virtual BOOL WinHttpGetIEProxyConfigForCurrentUser(WINHTTP_CURRENT_USER_IE_PROXY_CONFIG* config);
  virtual BOOL WinHttpGetProxyForUrl(HINTERNET session, LPCWSTR url,
                                     const WINHTTP_AUTOPROXY_OPTIONS* options,
                                     WINHTTP_PROXY_INFO* info);
  // The text goes back by GlobalFree.
  virtual BOOL WinHttpDetectAutoProxyConfigUrl(DWORD detectFlags, char16_t** url);
  virtual void GlobalFree(void* memory);

  // Text of the system's default code page; its length in characters, 0 on failure. A null `wide`
  // asks for the length.
  virtual int MultiByteToWideChar(unsigned codePage, DWORD flags, const char* bytes, int size,
                                  char16_t* wide, int wideSize);
};

}  // namespace corvane::platform
