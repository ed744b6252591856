// Where the way to the web goes through a proxy.

#include "foundation/guarded.h"
#include "web/web_log.h"
#include "web/win_http_helper.h"

namespace corvane {

using namespace platform;

namespace {

constexpr DWORD kDetectAll = WINHTTP_AUTO_DETECT_TYPE_DHCP | WINHTTP_AUTO_DETECT_TYPE_DNS_A;
constexpr DWORD kDetectAndConfig = WINHTTP_AUTOPROXY_AUTO_DETECT | WINHTTP_AUTOPROXY_CONFIG_URL;

bool HasText(const char16_t* text) { return text && *text; }

// The user's settings, freed at the end of the scope.
class CUserProxySettings {
 public:
  CUserProxySettings() : m_bKnown(Os().http.WinHttpGetIEProxyConfigForCurrentUser(&m) != FALSE) {}
  ~CUserProxySettings() {
    for (char16_t* text : {m.lpszAutoConfigUrl, m.lpszProxy, m.lpszProxyBypass})
      const CInternetText freed(text);
  }
  CUserProxySettings(const CUserProxySettings&) = delete;
  CUserProxySettings& operator=(const CUserProxySettings&) = delete;

  bool IsKnown() const { return m_bKnown; }
  const char16_t* ConfigUrl() const {
    return HasText(m.lpszAutoConfigUrl) ? m.lpszAutoConfigUrl : nullptr;
  }
  const char16_t* Proxy() const { return HasText(m.lpszProxy) ? m.lpszProxy : nullptr; }
  const char16_t* Bypass() const {
    return HasText(m.lpszProxyBypass) ? m.lpszProxyBypass : nullptr;
  }

 private:
  WINHTTP_CURRENT_USER_IE_PROXY_CONFIG m;
  bool m_bKnown;
};

bool AskProxyForUrl(HINTERNET session, const WString& url, DWORD flags, DWORD detectFlags,
                    const char16_t* configUrl, WINHTTP_PROXY_INFO* info) {
  WINHTTP_AUTOPROXY_OPTIONS options;
  options.dwFlags = flags;
  options.dwAutoDetectFlags = detectFlags;
  options.lpszAutoConfigUrl = configUrl;
  options.fAutoLogonIfChallenged = TRUE;
  return Os().http.WinHttpGetProxyForUrl(session, url.c_str(), &options, info) != FALSE;
}

bool SetProxyOption(HINTERNET request, const WINHTTP_PROXY_INFO& info) {
  return Os().http.WinHttpSetOption(request, WINHTTP_OPTION_PROXY, &info, sizeof info) != FALSE;
}

// The address of a configuration that the network tells.
class CDetectedUrl {
 public:
  CDetectedUrl() {
    if (!Os().http.WinHttpDetectAutoProxyConfigUrl(kDetectAll, &m_pUrl)) m_pUrl = nullptr;
  }
  ~CDetectedUrl() { const CInternetText freed(m_pUrl); }
  CDetectedUrl(const CDetectedUrl&) = delete;
  CDetectedUrl& operator=(const CDetectedUrl&) = delete;
  const char16_t* Get() const { return HasText(m_pUrl) ? m_pUrl : nullptr; }

 private:
  char16_t* m_pUrl = nullptr;
};

}  // namespace

// Asks for the URL's proxy and sets it; `name` is what was found.
bool CWinHTTPHelper::SetProxyForUrl(HINTERNET request, DWORD flags, DWORD detectFlags,
                                    const char16_t* configUrl, WString* name) {
  WINHTTP_PROXY_INFO info;
  if (!AskProxyForUrl(m_Session.Get(), m_Url, flags, detectFlags, configUrl, &info)) return false;
  const CInternetText proxy(info.lpszProxy), bypass(info.lpszProxyBypass);
  *name = HasText(info.lpszProxy) ? info.lpszProxy : u"";
  return SetProxyOption(request, info);
}

bool CWinHTTPHelper::SetProxyOfUser(HINTERNET request) {
  const CUserProxySettings user;
  if (!user.IsKnown()) return false;
  if (const char16_t* url = user.ConfigUrl()) {
    WString name;
    if (SetProxyForUrl(request, kDetectAndConfig, WINHTTP_AUTO_DETECT_TYPE_DHCP, url, &name)) {
      LOG_DEBUG(kWebLog,
                u"_>CWinHTTPHelper::AutoDetectAndSetHttpProxy: GOT proxyInfo via IESettings url "
                u"[%s]\n",
                url);
      return true;
    }
    LOG_DEBUG(kWebLog,
              u"_>CWinHTTPHelper::AutoDetectAndSetHttpProxy: IESettings[URL]: FAILED [le=%lu] to "
              u"get autoproxy from url [%s]\n",
              LastErrorOf(), url);
  }
  if (const char16_t* proxy = user.Proxy()) {
    WString name = WString(proxy).substr(0, kMaxProxyText);
    WString bypass = user.Bypass() ? WString(user.Bypass()).substr(0, kMaxProxyText) : WString();
    WINHTTP_PROXY_INFO info;
    info.dwAccessType = WINHTTP_ACCESS_TYPE_NAMED_PROXY;
    info.lpszProxy = name.data();
    if (!bypass.empty()) info.lpszProxyBypass = bypass.data();
    if (!SetProxyOption(request, info)) return false;
    LOG_DEBUG(kWebLog,
              u"_>CWinHTTPHelper::AutoDetectAndSetHttpProxy: GOT proxyInfo via IESettings NON-URL "
              u"[%s]\n",
              name);
    return true;
  }
  if (!user.ConfigUrl()) {
    LOG_DEBUG(kWebLog,
              u"_>CWinHTTPHelper::AutoDetectAndSetHttpProxy: [hInternetRequest=%p] "
              u"WinHttpGetIEProxyConfigForCurrentUser() failed to return config data or url\n",
              request);
  }
  return false;
}

bool CWinHTTPHelper::AutoDetectAndSetHttpProxy(HINTERNET request) {
  if (SetProxyOfUser(request)) return true;
  WString name;
  if (SetProxyForUrl(request, WINHTTP_AUTOPROXY_AUTO_DETECT, kDetectAll, nullptr, &name)) {
    LOG_DEBUG(kWebLog,
              u"_>CWinHTTPHelper::AutoDetectAndSetHttpProxy: GOT proxyInfo via autodetecting "
              u"WinHttpGetProxyForUrl: [%s]\n",
              name);
    return true;
  }
  const CDetectedUrl url;
  if (!url.Get()) {
    LOG_DEBUG(kWebLog,
              u"_>CWinHTTPHelper::AutoDetectAndSetHttpProxy:[DET URL] NO url returned by "
              u"WinHttpDetectAutoProxyConfigUrl()\n");
    return false;
  }
  if (SetProxyForUrl(request, kDetectAndConfig, kDetectAll, url.Get(), &name)) return true;
  LOG_DEBUG(kWebLog,
            u"_>CWinHTTPHelper::AutoDetectAndSetHttpProxy:[DET URL] FAILED [le=%lu] to get PAC "
            u"from detected url [%s]\n",
            LastErrorOf(), url.Get());
  return false;
}

bool CWinHTTPHelper::GetProxyInfo(WString* text) {
  text->clear();
  return Guarded("CWinHTTPHelper", "GetProxyInfo", false,
                 [&] { return GetProxyInfoInternal(text); });
}

bool CWinHTTPHelper::GetProxyInfoInternal(WString* text) {
  {
    const CUserProxySettings user;
    if (user.IsKnown()) {
      if (user.ConfigUrl()) {
        *text = user.ConfigUrl();
      } else if (user.Proxy()) {
        *text = user.Proxy();
      }
      return !text->empty();
    }
  }
  OpenSession();  // the platform asks nobody without one
  WINHTTP_PROXY_INFO info;
  if (AskProxyForUrl(m_Session.Get(), m_Url, WINHTTP_AUTOPROXY_AUTO_DETECT, kDetectAll, nullptr,
                     &info)) {
    const CInternetText proxy(info.lpszProxy), bypass(info.lpszProxyBypass);
    if (HasText(info.lpszProxy)) *text = info.lpszProxy;
    return !text->empty();
  }
  const CDetectedUrl url;
  if (url.Get()) *text = url.Get();
  return !text->empty();
}

}  // namespace corvane
