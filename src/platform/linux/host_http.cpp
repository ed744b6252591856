#include "platform/linux/host_http.h"

#include <curl/curl.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/code_page.h"
#include "platform/linux/host_transfer.h"
#include "platform/sim/kernel/seam_gate.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/thread_api.h"
#include "platform/utf.h"

namespace corvane::platform::linux_host {

using sim::ToUtf8;
using sim::ViewOf;

// A session, a connection or a request: each takes over what the one before it has.
struct HostHttp::Handle {
  explicit Handle(const HostTime& time) : transfer(time) {}
  Handle(const Handle& parent, Kind theKind, const HostTime& time)
      : kind(theKind), order(parent.order), host(parent.host), port(parent.port), transfer(time) {}

  Kind kind = Kind::kSession;
  TransferOrder order;
  std::string host;
  WORD port = 0;
  std::string proxySetting;
  std::string proxyUser, proxyPassword;
  HostTransfer transfer;
};

namespace {

DWORD Milliseconds(int limit) { return limit > 0 ? static_cast<DWORD>(limit) : 0; }

std::string Escaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    if (c != '%' && c != ':') {
      out += c;
    } else {
      out += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    }
  }
  return out;
}

}  // namespace

HostHttp::HostHttp(sim::SeamGate& gate, ThreadApi& threads, const HostTime& time,
                   const HostProxies& proxies, std::vector<std::string> connectTo)
    : m_Gate(gate),
      m_Threads(threads),
      m_Time(time),
      m_Proxies(proxies),
      m_ConnectTo(std::move(connectTo)) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
}

HostHttp::~HostHttp() {
  m_Handles.clear();
  curl_global_cleanup();
}

bool HostHttp::Passes(const char* operation) {
  const DWORD code = m_Gate.Enter(operation);
  if (code != ERROR_SUCCESS) m_Threads.SetLastError(code);
  return code == ERROR_SUCCESS;
}

BOOL HostHttp::Result(DWORD code) {
  if (code != ERROR_SUCCESS) m_Threads.SetLastError(code);
  return code == ERROR_SUCCESS ? TRUE : FALSE;
}

HINTERNET HostHttp::Open(HandlePtr handle) {
  const std::lock_guard guard(m_Mutex);
  m_LastHandle += 4;
  m_Handles[m_LastHandle] = std::move(handle);
  return reinterpret_cast<HINTERNET>(m_LastHandle);
}

HostHttp::HandlePtr HostHttp::Find(HINTERNET handle, Kind kind) {
  const std::lock_guard guard(m_Mutex);
  const auto found = m_Handles.find(reinterpret_cast<std::uintptr_t>(handle));
  if (found == m_Handles.end()) {
    m_Threads.SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
  }
  if (found->second->kind == kind) return found->second;
  m_Threads.SetLastError(ERROR_WINHTTP_INCORRECT_HANDLE_TYPE);
  return nullptr;
}

char16_t* HostHttp::Allocate(const std::string& text) {
  if (text.empty()) return nullptr;
  const std::u16string wide = ToUtf16(text);
  auto copy = std::make_unique<char16_t[]>(wide.size() + 1);
  std::ranges::copy(wide, copy.get());
  char16_t* const out = copy.get();
  const std::lock_guard guard(m_Mutex);
  m_Texts[out] = std::move(copy);
  return out;
}

// ---- handles

HINTERNET HostHttp::WinHttpOpen(LPCWSTR userAgent, DWORD, LPCWSTR, LPCWSTR, DWORD) {
  if (!Passes("WinHttpOpen")) return nullptr;
  auto session = std::make_shared<Handle>(m_Time);
  session->order.userAgent = ToUtf8(ViewOf(userAgent));
  session->order.connectTo = m_ConnectTo;
  return Open(std::move(session));
}

BOOL HostHttp::WinHttpSetTimeouts(HINTERNET session, int resolve, int connect, int send,
                                  int receive) {
  if (!Passes("WinHttpSetTimeouts")) return FALSE;
  const HandlePtr handle = Find(session, Kind::kSession);
  if (!handle) return FALSE;
  handle->order.resolveMs = Milliseconds(resolve);
  handle->order.connectMs = Milliseconds(connect);
  handle->order.sendMs = Milliseconds(send);
  handle->order.receiveMs = Milliseconds(receive);
  return TRUE;
}

BOOL HostHttp::WinHttpCrackUrl(LPCWSTR url, DWORD length, DWORD, URL_COMPONENTS* parts) {
  return Passes("WinHttpCrackUrl") ? Result(CrackUrl(url, length, parts)) : FALSE;
}

HINTERNET HostHttp::WinHttpConnect(HINTERNET session, LPCWSTR host, WORD port, DWORD) {
  if (!Passes("WinHttpConnect")) return nullptr;
  const HandlePtr parent = Find(session, Kind::kSession);
  if (!parent) return nullptr;
  auto connection = std::make_shared<Handle>(*parent, Kind::kConnection, m_Time);
  connection->host = ToUtf8(ViewOf(host));
  connection->port = port;
  return Open(std::move(connection));
}

HINTERNET HostHttp::WinHttpOpenRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR path, LPCWSTR,
                                       LPCWSTR, const LPCWSTR*, DWORD flags) {
  if (!Passes("WinHttpOpenRequest")) return nullptr;
  const HandlePtr parent = Find(connection, Kind::kConnection);
  if (!parent) return nullptr;
  const std::u16string_view word = ViewOf(verb);
  if (word != u"GET" && word != u"POST") {
    m_Threads.SetLastError(ERROR_NOT_SUPPORTED);
    return nullptr;
  }
  auto request = std::make_shared<Handle>(*parent, Kind::kRequest, m_Time);
  TransferOrder& order = request->order;
  order.post = word == u"POST";
  order.secure = (flags & WINHTTP_FLAG_SECURE) != 0;
  const std::string where = ToUtf8(ViewOf(path));
  order.url = (order.secure ? "https://" : "http://") + request->host + ":" +
              std::to_string(request->port) + (where.starts_with('/') ? "" : "/") + where;
  return Open(std::move(request));
}

BOOL HostHttp::WinHttpCloseHandle(HINTERNET handle) {
  m_Gate.Enter("WinHttpCloseHandle");
  HandlePtr closed;  // ends a transfer without the lock
  {
    const std::lock_guard guard(m_Mutex);
    const auto found = m_Handles.find(reinterpret_cast<std::uintptr_t>(handle));
    if (found != m_Handles.end()) {
      closed = std::move(found->second);
      m_Handles.erase(found);
    }
  }
  return Result(closed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE);
}

BOOL HostHttp::WinHttpSetOption(HINTERNET handle, DWORD option, const void* value, DWORD size) {
  if (!Passes("WinHttpSetOption")) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  if (!request) return FALSE;
  if (!value) return Result(ERROR_INVALID_PARAMETER);
  DWORD number = 0;
  if (size == sizeof number) std::memcpy(&number, value, sizeof number);
  const auto text = [&] { return Escaped(ToUtf8({static_cast<const char16_t*>(value), size})); };
  switch (option) {
    case WINHTTP_OPTION_SECURITY_FLAGS:
      request->order.securityFlags = number;
      return TRUE;
    case WINHTTP_OPTION_DISABLE_FEATURE:
      if (number & WINHTTP_DISABLE_REDIRECTS) request->order.redirects = false;
      return TRUE;
    case WINHTTP_OPTION_PROXY: {
      if (size != sizeof(WINHTTP_PROXY_INFO)) return Result(ERROR_INVALID_PARAMETER);
      const auto* info = static_cast<const WINHTTP_PROXY_INFO*>(value);
      request->proxySetting = ToUtf8(ViewOf(info->lpszProxy));
      request->order.bypass = ToUtf8(ViewOf(info->lpszProxyBypass));
      return TRUE;
    }
    case WINHTTP_OPTION_PROXY_USERNAME:
      request->proxyUser = text();
      return TRUE;
    case WINHTTP_OPTION_PROXY_PASSWORD:
      request->proxyPassword = text();
      return TRUE;
    default:
      return Result(ERROR_INVALID_PARAMETER);
  }
}

BOOL HostHttp::WinHttpAddRequestHeaders(HINTERNET handle, LPCWSTR headers, DWORD length, DWORD) {
  if (!Passes("WinHttpAddRequestHeaders")) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  if (!request) return FALSE;
  if (!headers) return Result(ERROR_INVALID_PARAMETER);
  std::string text = ToUtf8({headers, length});
  if (!text.ends_with("\r\n")) text += "\r\n";
  request->order.headers += text;
  return TRUE;
}

// ---- a request

TransferOrder HostHttp::OrderOf(const Handle& request) const {
  TransferOrder order = request.order;
  order.proxy = ProxyFor(request.proxySetting, order.secure ? "https" : "http");
  if (!request.proxyUser.empty()) {
    order.proxyCredentials = request.proxyUser + ":" + request.proxyPassword;
  } else {
    for (const HostProxy* known : {&m_Proxies.http, &m_Proxies.https}) {
      if (known->name == order.proxy) order.proxyCredentials = known->credentials;
    }
  }
  return order;
}

BOOL HostHttp::WinHttpSendRequest(HINTERNET handle, LPCWSTR headers, DWORD headersLength,
                                  const void*, DWORD optionalLength, DWORD totalLength,
                                  std::uintptr_t) {
  if (!Passes("WinHttpSendRequest")) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  if (!request) return FALSE;
  // The program gives its headers and its body in calls of their own.
  if ((headers && headersLength > 0) || optionalLength > 0) return Result(ERROR_NOT_SUPPORTED);
  return Result(request->transfer.Send(OrderOf(*request), totalLength));
}

BOOL HostHttp::WinHttpWriteData(HINTERNET handle, const void* data, DWORD size, DWORD* written) {
  if (!Passes("WinHttpWriteData")) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  if (!request) return FALSE;
  const DWORD code = request->transfer.Write(data, size);
  *written = code == ERROR_SUCCESS ? size : 0;
  return Result(code);
}

BOOL HostHttp::WinHttpReceiveResponse(HINTERNET handle, void*) {
  if (!Passes("WinHttpReceiveResponse")) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  return request ? Result(request->transfer.Receive()) : FALSE;
}

BOOL HostHttp::WinHttpQueryHeaders(HINTERNET handle, DWORD infoLevel, LPCWSTR, void* buffer,
                                   DWORD* size, DWORD* index) {
  if (!Passes("WinHttpQueryHeaders")) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  if (!request) return FALSE;
  const HttpResponseHead& head = request->transfer.Head();
  if (!head.IsComplete()) return Result(ERROR_WINHTTP_INCORRECT_HANDLE_STATE);
  return Result(head.Query(infoLevel, buffer, size, index));
}

BOOL HostHttp::WinHttpQueryDataAvailable(HINTERNET handle, DWORD* available) {
  if (!Passes("WinHttpQueryDataAvailable")) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  return request ? Result(request->transfer.AwaitData(available)) : FALSE;
}

BOOL HostHttp::WinHttpReadData(HINTERNET handle, void* buffer, DWORD size, DWORD* read) {
  if (!Passes("WinHttpReadData")) return FALSE;
  const HandlePtr request = Find(handle, Kind::kRequest);
  return request ? Result(request->transfer.Read(buffer, size, read)) : FALSE;
}

// ---- proxies and text

BOOL HostHttp::WinHttpGetIEProxyConfigForCurrentUser(WINHTTP_CURRENT_USER_IE_PROXY_CONFIG* config) {
  if (!Passes("WinHttpGetIEProxyConfigForCurrentUser")) return FALSE;
  *config = {};
  config->lpszProxy = Allocate(m_Proxies.Setting());
  if (config->lpszProxy) config->lpszProxyBypass = Allocate(m_Proxies.bypass);
  return TRUE;
}

BOOL HostHttp::WinHttpGetProxyForUrl(HINTERNET, LPCWSTR, const WINHTTP_AUTOPROXY_OPTIONS*,
                                     WINHTTP_PROXY_INFO*) {
  return Passes("WinHttpGetProxyForUrl") ? Result(ERROR_WINHTTP_AUTODETECTION_FAILED) : FALSE;
}

BOOL HostHttp::WinHttpDetectAutoProxyConfigUrl(DWORD, char16_t**) {
  return Passes("WinHttpDetectAutoProxyConfigUrl") ? Result(ERROR_WINHTTP_AUTODETECTION_FAILED)
                                                   : FALSE;
}

void HostHttp::GlobalFree(void* memory) {
  const std::lock_guard guard(m_Mutex);
  m_Texts.erase(memory);
}

int HostHttp::MultiByteToWideChar(unsigned codePage, DWORD flags, const char* bytes, int size,
                                  char16_t* wide, int wideSize) {
  if (!Passes("MultiByteToWideChar")) return 0;
  DWORD code = ERROR_SUCCESS;
  const int length = CodePageToWide(codePage, flags, bytes, size, wide, wideSize, &code);
  if (length == 0) m_Threads.SetLastError(code);
  return length;
}

std::size_t HostHttp::Outstanding() const {
  const std::lock_guard guard(m_Mutex);
  return m_Handles.size() + m_Texts.size();
}

}  // namespace corvane::platform::linux_host
