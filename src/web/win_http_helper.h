#pragma once
#include <string>

#include "foundation/text.h"
#include "web/internet_handle.h"

namespace corvane {

// A synchronous HTTP client for one URL: sends one GET or POST, tries again, finds a web proxy by
// itself when the direct way fails, and keeps the response as text. For one thread; a call may
// block for the sum of its time-outs, three times over.
class CWinHTTPHelper {
 public:
  // The body of a response is kept in memory, and no further than this.
  static constexpr std::size_t kMaxBody = 16 * 1024 * 1024;

  explicit CWinHTTPHelper(WStringView url);
  CWinHTTPHelper(const CWinHTTPHelper&) = delete;
  CWinHTTPHelper& operator=(const CWinHTTPHelper&) = delete;

  // `verb` is "GET" or "POST". With `bForceAutoProxy` a proxy is looked for before the first send,
  // otherwise after the first that fails. 0, or the Win32 code of what failed: 87 for another verb,
  // 58 for a status of 400 or more, 31 where the platform names no reason. `body` is the caller's
  // and stays as it is during the call.
  platform::DWORD SyncSendHttpRequest(const char16_t* verb, bool bDisableAutoRedirect,
                                      bool bForceAutoProxy, const platform::BYTE* body,
                                      platform::DWORD bodyLength);
  // Sets the proxy of the user's settings, or one that the network tells, on the request. Needs the
  // session of a send.
  bool AutoDetectAndSetHttpProxy(platform::HINTERNET request);
  // The proxy probe: whether a proxy is there for the URL, and its name or the address of its
  // configuration.
  bool GetProxyInfo(WString* text);

  void SetExtraHeaders1(WStringView headers) { m_ExtraHeaders1 = headers; }
  void SetExtraHeaders2(WStringView headers) { m_ExtraHeaders2 = headers; }
  void SetStrictCertificates(bool strict) { m_bStrictCertificates = strict; }
  void SetProxy(WStringView name, WStringView user, WStringView password);

  // Of the last response.
  const WString& GetResponseHeaders() const { return m_ResponseHeaders; }
  const WString& GetResponseText() const { return m_ResponseText; }
  const WString& GetSetCookie() const { return m_SetCookie; }
  platform::DWORD GetStatusCode() const { return m_StatusCode; }
  platform::DWORD GetContentLength() const { return m_ContentLength; }  // as the server says
  platform::DWORD GetBytesReceived() const { return m_BytesReceived; }

 private:
  enum class Round { kDone, kFailed, kEnded };  // kEnded: the call ends with the code
  struct Request {
    platform::HINTERNET handle = nullptr;
    bool page = false;  // a page that is not whole is fetched again
    bool proxyWasSet = false;
    bool discovered = false;  // a proxy was looked for after a failed send
    platform::DWORD code = 0;
  };

  platform::DWORD SendInternal(bool get, bool bDisableAutoRedirect, bool bForceAutoProxy);
  platform::DWORD Configure(Request* request, bool secure, bool bDisableAutoRedirect,
                            bool bForceAutoProxy);
  platform::DWORD AddHeaders(platform::HINTERNET request);
  void SetFixedProxy(platform::HINTERNET request);
  platform::DWORD RunRounds(Request* request);
  Round RunRound(Request* request);
  bool Send(Request* request);
  bool WriteBody(Request* request);
  Round TakeResponse(Request* request);
  Round ReadBody(Request* request, std::string* body);
  bool OpenSession();
  bool SetProxyForUrl(platform::HINTERNET request, platform::DWORD flags,
                      platform::DWORD detectFlags, const char16_t* configUrl, WString* name);
  bool SetProxyOfUser(platform::HINTERNET request);
  bool GetProxyInfoInternal(WString* text);

  CInternetHandle m_Session;
  WString m_Url;
  WString m_UserAgent = u"WinHTTPHelper";
  const platform::BYTE* m_pBody = nullptr;
  platform::DWORD m_BodyLength = 0;
  WString m_ResponseHeaders;
  WString m_ResponseText;
  WString m_SetCookie;
  platform::DWORD m_StatusCode = 0;
  platform::DWORD m_ContentLength = 0;
  platform::DWORD m_BytesReceived = 0;
  WString m_ProxyName;
  WString m_ProxyUser;
  WString m_ProxyPassword;
  platform::DWORD m_Attempts = 3;
  int m_ResolveTimeoutMs = 0;  // no limit
  int m_ConnectTimeoutMs = 60'000;
  int m_SendTimeoutMs = 30'000;
  int m_ReceiveTimeoutMs = 30'000;
  bool m_bStrictCertificates = false;
  WString m_ExtraHeaders1;
  WString m_ExtraHeaders2;
};

// The probe on the statistics endpoint. Any thread may call; it may ask the network.
bool ProxyPresent(WString* text);

}  // namespace corvane
