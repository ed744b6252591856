#include "platform/sim/devices/sim_web.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/code_page.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/sim/world/world_text.h"
#include "platform/thread_api.h"

namespace corvane::platform::sim {

namespace {

constexpr DWORD kConnectMs = 20;     // of a host that is there
constexpr DWORD kNoAnswerMs = 1000;  // until a way that leads nowhere is known to
constexpr int kMaxRedirects = 10;
constexpr std::size_t kPiece = 8192;
constexpr std::size_t kMaxKept = 1000;  // requests that nobody took

// One of the list is the host, or its end behind a "*".
bool IsBypassed(std::string_view host, std::string_view list) {
  while (!list.empty()) {
    const std::size_t end = std::min(list.find_first_of("; "), list.size());
    std::string_view entry = list.substr(0, end);
    list.remove_prefix(std::min(end + 1, list.size()));
    if (entry.starts_with('*')) {
      entry.remove_prefix(1);
      if (host.ends_with(entry)) return true;
    } else if (!entry.empty() && host == entry) {
      return true;
    }
  }
  return false;
}

std::string UrlText(const UrlParts& url) {
  const bool secure = url.scheme == INTERNET_SCHEME_HTTPS;
  std::string text = (secure ? "https://" : "http://") + ToUtf8(url.host);
  if (url.port != (secure ? 443 : 80)) text += ":" + std::to_string(url.port);
  return text + ToUtf8(url.path);
}

}  // namespace

bool SimWeb::Passes(const char* operation, DWORD ordinary) {
  const DWORD code = m_Gate.Enter(operation, ordinary);
  if (code != ERROR_SUCCESS) m_Threads.SetLastError(code);
  return code == ERROR_SUCCESS;
}

BOOL SimWeb::Fail(DWORD code) {
  m_Threads.SetLastError(code);
  return FALSE;
}

HINTERNET SimWeb::Open(Handle handle) {
  const std::lock_guard guard(m_Mutex);
  m_LastHandle += 4;
  m_Handles[m_LastHandle] = std::make_shared<Handle>(std::move(handle));
  return reinterpret_cast<HINTERNET>(m_LastHandle);
}

SimWeb::HandlePtr SimWeb::Find(HINTERNET handle, Kind kind) {
  const std::lock_guard guard(m_Mutex);
  const auto found = m_Handles.find(reinterpret_cast<std::uintptr_t>(handle));
  if (found == m_Handles.end()) {
    Fail(ERROR_INVALID_HANDLE);
    return nullptr;
  }
  if (found->second->kind == kind) return found->second;
  Fail(ERROR_WINHTTP_INCORRECT_HANDLE_TYPE);
  return nullptr;
}

char16_t* SimWeb::Allocate(std::u16string_view text) {
  if (text.empty()) return nullptr;
  auto copy = std::make_unique<char16_t[]>(text.size() + 1);
  std::ranges::copy(text, copy.get());
  char16_t* const out = copy.get();
  const std::lock_guard guard(m_Mutex);
  m_Texts[out] = std::move(copy);
  return out;
}

// ---- handles

HINTERNET SimWeb::WinHttpOpen(LPCWSTR, DWORD, LPCWSTR, LPCWSTR, DWORD) {
  return Passes("WinHttpOpen") ? Open(Handle()) : nullptr;
}

BOOL SimWeb::WinHttpSetTimeouts(HINTERNET session, int, int, int, int receive) {
  if (!Passes("WinHttpSetTimeouts")) return FALSE;
  const HandlePtr handle = Find(session, Kind::kSession);
  if (!handle) return FALSE;
  handle->receiveMs = receive;
  return TRUE;
}

BOOL SimWeb::WinHttpCrackUrl(LPCWSTR url, DWORD length, DWORD, URL_COMPONENTS* parts) {
  if (!Passes("WinHttpCrackUrl", ERROR_WINHTTP_INVALID_URL)) return FALSE;
  const DWORD code = CrackUrl(url, length, parts);
  return code == ERROR_SUCCESS ? TRUE : Fail(code);
}

HINTERNET SimWeb::WinHttpConnect(HINTERNET session, LPCWSTR host, WORD port, DWORD) {
  if (!Passes("WinHttpConnect")) return nullptr;
  const HandlePtr parent = Find(session, Kind::kSession);
  if (!parent) return nullptr;
  Handle connection;
  connection.kind = Kind::kConnection;
  connection.receiveMs = parent->receiveMs;
  connection.url.host = FoldCase(host);
  connection.url.port = port;
  return Open(std::move(connection));
}

HINTERNET SimWeb::WinHttpOpenRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR path, LPCWSTR,
                                     LPCWSTR, const LPCWSTR*, DWORD flags) {
  if (!Passes("WinHttpOpenRequest")) return nullptr;
  const HandlePtr parent = Find(connection, Kind::kConnection);
  if (!parent) return nullptr;
  Handle request = *parent;
  request.kind = Kind::kRequest;
  request.url.scheme = flags & WINHTTP_FLAG_SECURE ? INTERNET_SCHEME_HTTPS : INTERNET_SCHEME_HTTP;
  request.url.path = ViewOf(path).empty() ? u"/" : path;
  request.verb = ViewOf(verb);
  return Open(std::move(request));
}

BOOL SimWeb::WinHttpCloseHandle(HINTERNET handle) {
  bool closed = false;
  {
    const std::lock_guard guard(m_Mutex);
    closed = m_Handles.erase(reinterpret_cast<std::uintptr_t>(handle)) > 0;
  }
  m_Gate.Enter("WinHttpCloseHandle");
  return closed ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

BOOL SimWeb::WinHttpSetOption(HINTERNET handle, DWORD option, const void* value, DWORD size) {
  if (!Passes("WinHttpSetOption")) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  if (!request) return FALSE;
  DWORD number = 0;
  if (size == sizeof number) std::memcpy(&number, value, sizeof number);
  switch (option) {
    case WINHTTP_OPTION_SECURITY_FLAGS:
      request->securityFlags = number;
      return TRUE;
    case WINHTTP_OPTION_DISABLE_FEATURE:
      if (number & WINHTTP_DISABLE_REDIRECTS) request->redirects = false;
      return TRUE;
    case WINHTTP_OPTION_PROXY: {
      if (size != sizeof(WINHTTP_PROXY_INFO)) return Fail(ERROR_INVALID_PARAMETER);
      const auto* info = static_cast<const WINHTTP_PROXY_INFO*>(value);
      request->proxy = ToUtf8(ViewOf(info->lpszProxy));
      request->bypass = ToUtf8(ViewOf(info->lpszProxyBypass));
      return TRUE;
    }
    case WINHTTP_OPTION_PROXY_USERNAME:
    case WINHTTP_OPTION_PROXY_PASSWORD:
      return TRUE;
    default:
      return Fail(ERROR_INVALID_PARAMETER);
  }
}

BOOL SimWeb::WinHttpAddRequestHeaders(HINTERNET handle, LPCWSTR headers, DWORD length, DWORD) {
  if (!Passes("WinHttpAddRequestHeaders")) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  if (!request) return FALSE;
  request->headers += ToUtf8(std::u16string_view(headers, length));
  return TRUE;
}

// ---- a request

// Whether the host can be had on the request's way; *answer is what it says then.
DWORD SimWeb::Reach(const Handle& request, WebAnswer* answer) {
  const std::string host = ToUtf8(request.url.host);
  const std::string path = ToUtf8(request.url.path);
  const bool found = m_Machine.loop.WithLock([&] {
    const auto& answers = m_Machine.world.web.answers;
    const auto fits = std::ranges::find_if(answers, [&](const WebAnswer& one) {
      return one.host == host && (one.path.empty() || one.path == path);
    });
    if (fits == answers.end()) return false;
    *answer = *fits;
    return true;
  });
  if (!found) return ERROR_WINHTTP_NAME_NOT_RESOLVED;
  const bool direct = request.proxy.empty() || IsBypassed(host, request.bypass);
  const bool reached = answer->reach == WebReach::kAnyWay ||
                       answer->reach == (direct ? WebReach::kDirect : WebReach::kProxy);
  m_Threads.Sleep(reached ? kConnectMs : kNoAnswerMs);
  if (!reached) return ERROR_WINHTTP_CANNOT_CONNECT;
  if (request.url.scheme != INTERNET_SCHEME_HTTPS) return ERROR_SUCCESS;
  if (answer->certificate == WebCertificate::kRefused) return ERROR_WINHTTP_SECURE_CHANNEL_ERROR;
  const bool trusted = answer->certificate == WebCertificate::kGood ||
                       (request.securityFlags & SECURITY_FLAG_IGNORE_UNKNOWN_CA) != 0;
  return trusted ? ERROR_SUCCESS : ERROR_WINHTTP_SECURE_FAILURE;
}

BOOL SimWeb::WinHttpSendRequest(HINTERNET handle, LPCWSTR, DWORD, const void*, DWORD, DWORD,
                                std::uintptr_t) {
  if (!Passes("WinHttpSendRequest", ERROR_WINHTTP_CANNOT_CONNECT)) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  if (!request) return FALSE;
  request->sent = false;
  request->body.clear();
  WebAnswer answer;
  if (const DWORD code = Reach(*request, &answer); code != ERROR_SUCCESS) return Fail(code);
  request->sent = true;
  return TRUE;
}

BOOL SimWeb::WinHttpWriteData(HINTERNET handle, const void* data, DWORD size, DWORD* written) {
  if (!Passes("WinHttpWriteData", ERROR_WINHTTP_CONNECTION_ERROR)) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  if (!request) return FALSE;
  if (!request->sent) return Fail(ERROR_WINHTTP_INCORRECT_HANDLE_STATE);
  request->body.append(static_cast<const char*>(data), size);
  *written = size;
  return TRUE;
}

// The answer that the request ends at, past all redirects.
DWORD SimWeb::Answer(Handle* request) {
  Handle hop = *request;
  for (int redirects = 0;; ++redirects) {
    WebAnswer answer;
    if (const DWORD code = Reach(hop, &answer); code != ERROR_SUCCESS) return code;
    {
      const std::lock_guard guard(m_Mutex);
      if (m_Requests.size() < kMaxKept) {
        m_Requests.push_back(
            {ToUtf8(hop.verb), UrlText(hop.url), hop.proxy, hop.headers, hop.body});
      }
    }
    const auto limit = static_cast<DWORD>(std::max(request->receiveMs, 0));
    const bool late = limit != 0 && answer.delayMs > limit;
    m_Threads.Sleep(late ? limit : answer.delayMs);
    if (late) return ERROR_WINHTTP_TIMEOUT;
    const bool moved = !answer.redirect.empty() && answer.status >= 300 && answer.status < 400;
    if (moved && hop.redirects) {
      if (redirects == kMaxRedirects) return ERROR_WINHTTP_REDIRECT_FAILED;
      SplitUrl(FromUtf8(answer.redirect), &hop.url);
      if (hop.url.path.empty()) hop.url.path = u"/";
      hop.verb = u"GET";
      hop.body.clear();
      continue;
    }
    request->head = {};
    request->head.AddLine("HTTP/1.1 " + std::to_string(answer.status) + " " + answer.reason);
    for (const std::string& line : answer.headers) request->head.AddLine(line);
    if (!answer.redirect.empty()) request->head.AddLine("Location: " + answer.redirect);
    request->head.AddLine("Content-Length: " + std::to_string(answer.body.size()));
    request->head.AddLine("");
    request->answer = answer.body;
    request->read = 0;
    return ERROR_SUCCESS;
  }
}

BOOL SimWeb::WinHttpReceiveResponse(HINTERNET handle, void*) {
  if (!Passes("WinHttpReceiveResponse", ERROR_WINHTTP_TIMEOUT)) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  if (!request) return FALSE;
  if (!request->sent) return Fail(ERROR_WINHTTP_INCORRECT_HANDLE_STATE);
  request->sent = false;
  const DWORD code = Answer(request.get());
  return code == ERROR_SUCCESS ? TRUE : Fail(code);
}

BOOL SimWeb::WinHttpQueryHeaders(HINTERNET handle, DWORD infoLevel, LPCWSTR, void* buffer,
                                 DWORD* size, DWORD* index) {
  if (!Passes("WinHttpQueryHeaders", ERROR_WINHTTP_HEADER_NOT_FOUND)) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  if (!request) return FALSE;
  if (!request->head.IsComplete()) return Fail(ERROR_WINHTTP_INCORRECT_HANDLE_STATE);
  const DWORD code = request->head.Query(infoLevel, buffer, size, index);
  return code == ERROR_SUCCESS ? TRUE : Fail(code);
}

BOOL SimWeb::WinHttpQueryDataAvailable(HINTERNET handle, DWORD* available) {
  if (!Passes("WinHttpQueryDataAvailable", ERROR_WINHTTP_TIMEOUT)) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  if (!request) return FALSE;
  if (!request->head.IsComplete()) return Fail(ERROR_WINHTTP_INCORRECT_HANDLE_STATE);
  *available = static_cast<DWORD>(std::min(request->answer.size() - request->read, kPiece));
  return TRUE;
}

BOOL SimWeb::WinHttpReadData(HINTERNET handle, void* buffer, DWORD size, DWORD* read) {
  if (!Passes("WinHttpReadData", ERROR_WINHTTP_TIMEOUT)) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  if (!request) return FALSE;
  const std::size_t count = std::min<std::size_t>(size, request->answer.size() - request->read);
  std::memcpy(buffer, request->answer.data() + request->read, count);
  request->read += count;
  *read = static_cast<DWORD>(count);
  return TRUE;
}

// ---- proxies

BOOL SimWeb::WinHttpGetIEProxyConfigForCurrentUser(WINHTTP_CURRENT_USER_IE_PROXY_CONFIG* config) {
  if (!Passes("WinHttpGetIEProxyConfigForCurrentUser", ERROR_FILE_NOT_FOUND)) return FALSE;
  const WebProxies known = m_Machine.loop.WithLock([&] { return m_Machine.world.web.proxies; });
  if (!known.known) return Fail(ERROR_FILE_NOT_FOUND);
  *config = {};
  config->fAutoDetect = known.detectedUrl.empty() ? FALSE : TRUE;
  config->lpszAutoConfigUrl = Allocate(known.configUrl);
  config->lpszProxy = Allocate(known.proxy);
  config->lpszProxyBypass = Allocate(known.bypass);
  return TRUE;
}

BOOL SimWeb::WinHttpGetProxyForUrl(HINTERNET session, LPCWSTR,
                                   const WINHTTP_AUTOPROXY_OPTIONS* options,
                                   WINHTTP_PROXY_INFO* info) {
  if (!Passes("WinHttpGetProxyForUrl", ERROR_WINHTTP_AUTODETECTION_FAILED)) return FALSE;
  if (!Find(session, Kind::kSession)) return FALSE;
  const WebProxies known = m_Machine.loop.WithLock([&] { return m_Machine.world.web.proxies; });
  const bool told =
      (options->dwFlags & WINHTTP_AUTOPROXY_CONFIG_URL) != 0 || !known.detectedUrl.empty();
  if (!told || known.detectedProxy.empty()) return Fail(ERROR_WINHTTP_AUTODETECTION_FAILED);
  *info = {};
  info->dwAccessType = WINHTTP_ACCESS_TYPE_NAMED_PROXY;
  info->lpszProxy = Allocate(known.detectedProxy);
  return TRUE;
}

BOOL SimWeb::WinHttpDetectAutoProxyConfigUrl(DWORD, char16_t** url) {
  if (!Passes("WinHttpDetectAutoProxyConfigUrl", ERROR_WINHTTP_AUTODETECTION_FAILED)) return FALSE;
  const WebProxies known = m_Machine.loop.WithLock([&] { return m_Machine.world.web.proxies; });
  if (known.detectedUrl.empty()) return Fail(ERROR_WINHTTP_AUTODETECTION_FAILED);
  *url = Allocate(known.detectedUrl);
  return TRUE;
}

void SimWeb::GlobalFree(void* memory) {
  {
    const std::lock_guard guard(m_Mutex);
    m_Texts.erase(memory);
  }
  m_Gate.Enter("GlobalFree");
}

int SimWeb::MultiByteToWideChar(unsigned codePage, DWORD flags, const char* bytes, int size,
                                char16_t* wide, int wideSize) {
  if (!Passes("MultiByteToWideChar")) return 0;
  DWORD code = ERROR_SUCCESS;
  const int length = CodePageToWide(codePage, flags, bytes, size, wide, wideSize, &code);
  if (length == 0) Fail(code);
  return length;
}

// ---- for worlds and tests

void SimWeb::SetAnswer(const WebAnswer& answer) {
  auto& answers = m_Machine.world.web.answers;
  const auto same = std::ranges::find_if(answers, [&](const WebAnswer& one) {
    return one.host == answer.host && one.path == answer.path;
  });
  if (same != answers.end()) {
    *same = answer;
  } else {
    answers.push_back(answer);
  }
}

std::vector<WebRequest> SimWeb::TakeRequests() {
  const std::lock_guard guard(m_Mutex);
  return std::exchange(m_Requests, {});
}

std::size_t SimWeb::Outstanding() const {
  const std::lock_guard guard(m_Mutex);
  return m_Handles.size() + m_Texts.size();
}

}  // namespace corvane::platform::sim
