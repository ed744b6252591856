#include "web/win_http_helper.h"

#include <array>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/thread_api.h"
#include "web/response_text.h"
#include "web/web_log.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char kClassName[] = "CWinHTTPHelper";
constexpr DWORD kRequestRefused = 58;  // ERROR_BAD_NET_RESP: a status of 400 or more
constexpr DWORD kFirstRefusal = 400;
constexpr std::size_t kMaxHost = 260, kMaxPath = 1300;
constexpr DWORD kIgnoreCertificateFaults = SECURITY_FLAG_IGNORE_UNKNOWN_CA |
                                           SECURITY_FLAG_IGNORE_CERT_CN_INVALID |
                                           SECURITY_FLAG_IGNORE_CERT_DATE_INVALID;

}  // namespace

CWinHTTPHelper::CWinHTTPHelper(WStringView url) : m_Url(url) {}

void CWinHTTPHelper::SetProxy(WStringView name, WStringView user, WStringView password) {
  m_ProxyName = name.substr(0, kMaxProxyText);
  m_ProxyUser = user;
  m_ProxyPassword = password;
}

bool CWinHTTPHelper::OpenSession() {
  if (!m_Session) {
    m_Session.Reset(Os().http.WinHttpOpen(m_UserAgent.c_str(), WINHTTP_ACCESS_TYPE_DEFAULT_PROXY,
                                          nullptr, nullptr, 0));
  }
  return static_cast<bool>(m_Session);
}

DWORD CWinHTTPHelper::SyncSendHttpRequest(const char16_t* verb, bool bDisableAutoRedirect,
                                          bool bForceAutoProxy, const BYTE* body,
                                          DWORD bodyLength) {
  m_pBody = body;
  m_BodyLength = body ? bodyLength : 0;
  const WStringView word = verb ? WStringView(verb) : WStringView();
  if (word != u"GET" && word != u"POST") return ERROR_INVALID_PARAMETER;
  return Guarded(kClassName, "SyncSendHttpRequest", ERROR_GEN_FAILURE, [&] {
    return SendInternal(word == u"GET", bDisableAutoRedirect, bForceAutoProxy);
  });
}

DWORD CWinHTTPHelper::SendInternal(bool get, bool bDisableAutoRedirect, bool bForceAutoProxy) {
  auto& http = Os().http;
  if (!OpenSession()) return LastErrorOf();
  if (!http.WinHttpSetTimeouts(m_Session.Get(), m_ResolveTimeoutMs, m_ConnectTimeoutMs,
                               m_SendTimeoutMs, m_ReceiveTimeoutMs)) {
    return LastErrorOf();
  }
  std::array<char16_t, kMaxHost> host{};
  std::array<char16_t, kMaxPath> path{};
  URL_COMPONENTS parts;
  parts.lpszHostName = host.data();
  parts.dwHostNameLength = static_cast<DWORD>(host.size());
  parts.lpszUrlPath = path.data();
  parts.dwUrlPathLength = static_cast<DWORD>(path.size());
  if (!http.WinHttpCrackUrl(m_Url.c_str(), 0, 0, &parts)) {
    const DWORD code = LastErrorOf();
    LOG_DEBUG(kWebLog,
              u"_>CWinHTTPHelper::SyncSendHttpRequest: WinHttpCrackUrl(%s) FAILED [le=%lu]\n",
              m_Url, code);
    return code;
  }
  const CInternetHandle connection(
      http.WinHttpConnect(m_Session.Get(), host.data(), parts.nPort, 0));
  if (!connection) return LastErrorOf();
  const bool secure = parts.nScheme == INTERNET_SCHEME_HTTPS;
  const CInternetHandle handle(http.WinHttpOpenRequest(connection.Get(), get ? u"GET" : u"POST",
                                                       path.data(), nullptr, nullptr, nullptr,
                                                       secure ? WINHTTP_FLAG_SECURE : 0));
  if (!handle) {
    const DWORD code = LastErrorOf();
    LOG_DEBUG(kWebLog,
              u"_>CWinHTTPHelper::SyncSendHttpRequest: WinHttpOpenRequest(...%s) FAILED [le=%lu]\n",
              path.data(), code);
    return code;
  }
  Request request{.handle = handle.Get(), .page = get && !bDisableAutoRedirect};
  if (const DWORD code = Configure(&request, secure, bDisableAutoRedirect, bForceAutoProxy);
      code != ERROR_SUCCESS) {
    return code;
  }
  return RunRounds(&request);
}

DWORD CWinHTTPHelper::AddHeaders(HINTERNET request) {
  for (const WString* headers : {&m_ExtraHeaders1, &m_ExtraHeaders2}) {
    if (headers->empty()) continue;
    if (!Os().http.WinHttpAddRequestHeaders(request, headers->c_str(),
                                            static_cast<DWORD>(headers->size()),
                                            WINHTTP_ADDREQ_FLAG_COALESCE_WITH_SEMICOLON)) {
      return LastErrorOf();
    }
  }
  return ERROR_SUCCESS;
}

DWORD CWinHTTPHelper::Configure(Request* request, bool secure, bool bDisableAutoRedirect,
                                bool bForceAutoProxy) {
  auto& http = Os().http;
  if (secure && !m_bStrictCertificates &&
      !http.WinHttpSetOption(request->handle, WINHTTP_OPTION_SECURITY_FLAGS,
                             &kIgnoreCertificateFaults, sizeof kIgnoreCertificateFaults)) {
    return LastErrorOf();
  }
  if (const DWORD code = AddHeaders(request->handle); code != ERROR_SUCCESS) return code;
  if (bDisableAutoRedirect &&
      !http.WinHttpSetOption(request->handle, WINHTTP_OPTION_DISABLE_FEATURE,
                             &WINHTTP_DISABLE_REDIRECTS, sizeof WINHTTP_DISABLE_REDIRECTS)) {
    return LastErrorOf();
  }
  if (!m_ProxyName.empty()) {
    SetFixedProxy(request->handle);
    request->proxyWasSet = true;
  } else if (bForceAutoProxy) {
    request->proxyWasSet = AutoDetectAndSetHttpProxy(request->handle);
    if (!request->proxyWasSet) {
      LOG_DEBUG(kWebLog,
                u"_>CWinHTTPHelper::AutoDetectAndSetHttpProxy: "
                u"[hInternetRequest=%p]:[ForceAutoProxy] NO PROXY CONFIGURATION FOUND\n",
                request->handle);
    }
  }
  return ERROR_SUCCESS;
}

void CWinHTTPHelper::SetFixedProxy(HINTERNET request) {
  auto& http = Os().http;
  WINHTTP_PROXY_INFO info;
  info.dwAccessType = WINHTTP_ACCESS_TYPE_NAMED_PROXY;
  info.lpszProxy = m_ProxyName.data();
  http.WinHttpSetOption(request, WINHTTP_OPTION_PROXY, &info, sizeof info);
  const auto set = [&](DWORD option, const WString& text) {
    if (!text.empty())
      http.WinHttpSetOption(request, option, text.c_str(), static_cast<DWORD>(text.size()));
  };
  set(WINHTTP_OPTION_PROXY_USERNAME, m_ProxyUser);
  set(WINHTTP_OPTION_PROXY_PASSWORD, m_ProxyPassword);
}

DWORD CWinHTTPHelper::RunRounds(Request* request) {
  for (DWORD round = 0; round < m_Attempts; ++round) {
    request->code = ERROR_SUCCESS;
    switch (RunRound(request)) {
      case Round::kDone:
        return ERROR_SUCCESS;
      case Round::kEnded:
        return request->code;
      case Round::kFailed:
        break;
    }
  }
  return request->code != ERROR_SUCCESS ? request->code : ERROR_GEN_FAILURE;
}

CWinHTTPHelper::Round CWinHTTPHelper::RunRound(Request* request) {
  if (!Send(request)) return Round::kFailed;
  if (m_BodyLength > 0 && !WriteBody(request)) return Round::kEnded;
  if (!Os().http.WinHttpReceiveResponse(request->handle, nullptr)) {
    request->code = LastErrorOf();
    return Round::kFailed;
  }
  const Round taken = TakeResponse(request);
  if (taken != Round::kDone) return taken;
  if (m_StatusCode >= kFirstRefusal) {
    LOG_DEBUG(kWebLog,
              u"_>CWinHTTPHelper::SyncSendHttpRequest: [hInternetRequest=%p][ProxyWasSet=%i] GOT "
              u"RESPONSE CODE: %lu [ABORT!]\n",
              request->handle, request->proxyWasSet, m_StatusCode);
    request->code = kRequestRefused;
    return Round::kEnded;
  }
  LOG_DEBUG(kWebLog,
            u"_>CWinHTTPHelper::SyncSendHttpRequest: [hInternetRequest=%p][ProxyWasSet=%i] GOT "
            u"RESPONSE CODE: %lu\n",
            request->handle, request->proxyWasSet, m_StatusCode);
  return request->page && IsIncompletePage(m_ResponseText) ? Round::kFailed : Round::kDone;
}

// One send, and one more through the proxy that is found after the first failure.
bool CWinHTTPHelper::Send(Request* request) {
  const auto send = [request] {
    const bool sent =
        Os().http.WinHttpSendRequest(request->handle, nullptr, 0, nullptr, 0, 0, 0) != FALSE;
    if (!sent) request->code = LastErrorOf();
    return sent;
  };
  bool sent = send();
  if (!sent) {
    LOG_DEBUG(kWebLog,
              u"_>CWinHTTPHelper::SyncSendHttpRequest: [hInternetRequest=%p] WinHttpSendRequest() "
              u"failed -- %lu\n",
              request->handle, request->code);
    if (request->proxyWasSet || request->discovered) return false;
    request->discovered = true;
    request->proxyWasSet = AutoDetectAndSetHttpProxy(request->handle);
    if (!request->proxyWasSet) return false;
    LOG_DEBUG(kWebLog,
              u"_>CWinHTTPHelper::SyncSendHttpRequest: [hInternetRequest=%p]:SET PROXY "
              u"CONFIGURATION FOR RETRY\n",
              request->handle);
    sent = send();
  }
  if (!sent) {
    LOG_DEBUG(kWebLog,
              u"_>CWinHTTPHelper::SyncSendHttpRequest: [hInternetRequest=%p][RETRY WITH PROXY] "
              u"WinHttpSendRequest() failed -- %lu\n",
              request->handle, request->code);
    return false;
  }
  LOG_DEBUG(kWebLog,
            u"_>CWinHTTPHelper::SyncSendHttpRequest: [hInternetRequest=%p][ProxyWasSet=%i] "
            u"WinHttpSendRequest() successful\n",
            request->handle, request->proxyWasSet);
  return true;
}

bool CWinHTTPHelper::WriteBody(Request* request) {
  DWORD written = 0;
  if (Os().http.WinHttpWriteData(request->handle, m_pBody, m_BodyLength, &written)) return true;
  request->code = LastErrorOf();
  LOG_DEBUG(kWebLog,
            u"_>CWinHTTPHelper::SyncSendHttpRequest: [hInternetRequest=%p] WinHttpWriteData() "
            u"failed -- %lu [abort]\n",
            request->handle, request->code);
  return false;
}

bool ProxyPresent(WString* text) { return CWinHTTPHelper(kStatisticsPlainUrl).GetProxyInfo(text); }

}  // namespace corvane
