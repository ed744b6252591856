#include "platform/linux/host_transfer.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstring>

#include "platform/linux/host_threads.h"

namespace corvane::platform::linux_host {

namespace {

using namespace std::chrono_literals;

constexpr auto kSlice = 100ms;                // between two looks whether the thread was given up
constexpr long kLibraryLimitMs = 86'400'000;  // above every limit that is kept here

bool StartsWithFolded(std::string_view text, std::string_view lower) {
  return text.size() >= lower.size() &&
         std::equal(lower.begin(), lower.end(), text.begin(), [](char a, char b) {
           return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b + 32) : b);
         });
}

template <class Value>
void Set(CURL* easy, CURLoption option, Value value) {
  curl_easy_setopt(easy, option, value);
}

// "a;*.b" as "a,.b".
std::string NoProxyList(std::string_view bypass) {
  std::string list;
  while (!bypass.empty()) {
    const std::size_t end = std::min(bypass.find_first_of("; "), bypass.size());
    std::string_view entry = bypass.substr(0, end);
    bypass.remove_prefix(std::min(end + 1, bypass.size()));
    if (entry.size() > 1 && entry.starts_with('*')) entry.remove_prefix(1);
    if (entry.empty() || entry.starts_with('<')) continue;
    if (!list.empty()) list += ',';
    list += entry;
  }
  return list;
}

bool IsRedirect(DWORD status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

}  // namespace

void HostTransfer::Close() {
  if (m_pMulti && m_pEasy) curl_multi_remove_handle(m_pMulti.get(), m_pEasy.get());
  m_pEasy.reset();
  m_pMulti.reset();
  m_Headers.reset();
  m_ConnectTo.reset();
}

void HostTransfer::SetUpHeaders(const TransferOrder& order, std::uint64_t* length) {
  curl_slist* list = nullptr;
  const auto add = [&](const std::string& line) { list = curl_slist_append(list, line.c_str()); };
  // What the library would send of its own.
  add("Accept:");
  add("Expect:");
  bool typed = false;
  std::string_view text = order.headers;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    while (line.ends_with('\r')) line.remove_suffix(1);
    constexpr std::string_view kLength = "content-length:";
    if (line.empty()) continue;
    if (StartsWithFolded(line, kLength)) {
      std::string_view number = line.substr(kLength.size());
      number.remove_prefix(std::min(number.find_first_not_of(" \t"), number.size()));
      std::from_chars(number.data(), number.data() + number.size(), *length);
      continue;
    }
    typed = typed || StartsWithFolded(line, "content-type:");
    add(std::string(line));
  }
  if (order.post && !typed) add("Content-Type:");
  m_Headers.reset(list);
  Set(m_pEasy.get(), CURLOPT_HTTPHEADER, list);
}

void HostTransfer::SetUpProxy(const TransferOrder& order) {
  CURL* const easy = m_pEasy.get();
  // Never what the library reads from the environment by itself.
  Set(easy, CURLOPT_PROXY, order.proxy.c_str());
  Set(easy, CURLOPT_NOPROXY, NoProxyList(order.bypass).c_str());
  Set(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  if (!order.proxyCredentials.empty())
    Set(easy, CURLOPT_PROXYUSERPWD, order.proxyCredentials.c_str());
  curl_slist* places = nullptr;
  for (const std::string& place : order.connectTo)
    places = curl_slist_append(places, place.c_str());
  m_ConnectTo.reset(places);
  Set(easy, CURLOPT_CONNECT_TO, places);
}

void HostTransfer::SetUp(const TransferOrder& order, std::uint64_t length) {
  CURL* const easy = m_pEasy.get();
  Set(easy, CURLOPT_URL, order.url.c_str());
  Set(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  Set(easy, CURLOPT_REDIR_PROTOCOLS_STR, order.secure ? "https" : "http,https");
  Set(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  Set(easy, CURLOPT_NOSIGNAL, 1L);
  Set(easy, CURLOPT_CONNECTTIMEOUT_MS, kLibraryLimitMs);
  Set(easy, CURLOPT_USERAGENT, order.userAgent.c_str());
  Set(easy, CURLOPT_FOLLOWLOCATION, order.redirects ? 1L : 0L);
  Set(easy, CURLOPT_MAXREDIRS, kMaxRedirects);
  Set(easy, CURLOPT_SSL_VERIFYPEER,
      order.securityFlags & SECURITY_FLAG_IGNORE_UNKNOWN_CA ? 0L : 1L);
  Set(easy, CURLOPT_SSL_VERIFYHOST,
      order.securityFlags & SECURITY_FLAG_IGNORE_CERT_CN_INVALID ? 0L : 2L);
  SetUpProxy(order);
  SetUpHeaders(order, &length);
  m_UploadLength = order.post ? length : 0;
  if (order.post) {
    Set(easy, CURLOPT_POST, 1L);
    Set(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_UploadLength));
    Set(easy, CURLOPT_READFUNCTION, &HostTransfer::OnUpload);
    Set(easy, CURLOPT_READDATA, this);
    Set(easy, CURLOPT_SEEKFUNCTION, &HostTransfer::OnSeek);
    Set(easy, CURLOPT_SEEKDATA, this);
  }
  Set(easy, CURLOPT_HEADERFUNCTION, &HostTransfer::OnHeader);
  Set(easy, CURLOPT_HEADERDATA, this);
  Set(easy, CURLOPT_WRITEFUNCTION, &HostTransfer::OnBody);
  Set(easy, CURLOPT_WRITEDATA, this);
  Set(easy, CURLOPT_PREREQFUNCTION, &HostTransfer::OnConnected);
  Set(easy, CURLOPT_PREREQDATA, this);
  Set(easy, CURLOPT_OPENSOCKETFUNCTION, &HostTransfer::OnSocket);
  Set(easy, CURLOPT_OPENSOCKETDATA, this);
}

// ---- what the library asks and tells

std::size_t HostTransfer::OnHeader(char* data, std::size_t size, std::size_t count, void* self) {
  auto& me = *static_cast<HostTransfer*>(self);
  const std::string_view line(data, size * count);
  const bool begins = line.starts_with("HTTP/");
  if (begins) {
    me.m_bMoves = me.m_bHeadFinal = false;
    me.Moved();
  }
  if (!me.m_Head.AddLine(line)) {
    me.m_bHeadTooLarge = true;
    return 0;
  }
  if (StartsWithFolded(line, "location:")) me.m_bMoves = true;
  if (me.m_Head.IsComplete()) {
    const DWORD status = me.m_Head.StatusCode();
    const bool goesOn = me.m_bRedirects && me.m_bMoves && IsRedirect(status);
    me.m_bHeadFinal = status >= 200 && !goesOn;
  }
  return line.size();
}

std::size_t HostTransfer::OnBody(char* data, std::size_t size, std::size_t count, void* self) {
  auto& me = *static_cast<HostTransfer*>(self);
  if (me.m_Body.size() - me.m_Read >= kMaxBuffered) return CURL_WRITEFUNC_PAUSE;
  if (me.m_Read > 0) {
    me.m_Body.erase(0, me.m_Read);
    me.m_Read = 0;
  }
  me.m_Body.append(data, size * count);
  me.Moved();
  return size * count;
}

std::size_t HostTransfer::OnUpload(char* data, std::size_t size, std::size_t count, void* self) {
  auto& me = *static_cast<HostTransfer*>(self);
  const std::size_t left = me.m_Upload.size() - me.m_Uploaded;
  if (left == 0) return me.m_Uploaded >= me.m_UploadLength ? 0 : CURL_READFUNC_PAUSE;
  const std::size_t taken = std::min(size * count, left);
  std::memcpy(data, me.m_Upload.data() + me.m_Uploaded, taken);
  me.m_Uploaded += taken;
  me.Moved();
  return taken;
}

int HostTransfer::OnSeek(void* self, curl_off_t offset, int origin) {
  auto& me = *static_cast<HostTransfer*>(self);
  if (origin != SEEK_SET || offset < 0 || static_cast<std::uint64_t>(offset) > me.m_Upload.size()) {
    return CURL_SEEKFUNC_FAIL;
  }
  me.m_Uploaded = static_cast<std::size_t>(offset);
  return CURL_SEEKFUNC_OK;
}

int HostTransfer::OnConnected(void* self, char*, char*, int, int) {
  static_cast<HostTransfer*>(self)->m_bConnected = true;
  return CURL_PREREQFUNC_OK;
}

curl_socket_t HostTransfer::OnSocket(void* self, curlsocktype, curl_sockaddr* address) {
  auto& me = *static_cast<HostTransfer*>(self);
  if (!me.m_bConnecting) me.Moved();
  me.m_bConnecting = true;
  return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

// ---- the run of it

void HostTransfer::Perform() {
  int running = 0;
  const CURLMcode code = curl_multi_perform(m_pMulti.get(), &running);
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(m_pMulti.get(), &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    m_bEnded = true;
    m_End = message->data.result;
  }
  if (code != CURLM_OK && !m_bEnded) {
    m_bEnded = true;
    m_End = CURLE_FAILED_INIT;
  }
}

DWORD HostTransfer::Drive(const std::function<bool()>& done,
                          const std::function<DWORD()>& limitMs) {
  Moved();
  for (;;) {
    if (done()) return ERROR_SUCCESS;
    if (m_bEnded) return CodeOfEnd();
    Perform();
    if (done()) return ERROR_SUCCESS;
    if (m_bEnded) return CodeOfEnd();
    HostThreads::ThrowIfAbandoned();
    auto wait = std::chrono::duration_cast<std::chrono::nanoseconds>(kSlice);
    if (const DWORD limit = limitMs(); limit != 0) {
      const auto left = m_Time.RealDuration(limit) - (HostTime::RealClock::now() - m_LastMove);
      if (left <= 0ns) {
        Close();
        return ERROR_WINHTTP_TIMEOUT;
      }
      wait = std::min(wait, left);
    }
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(wait);
    curl_multi_poll(m_pMulti.get(), nullptr, 0, static_cast<int>(ms.count()), nullptr);
  }
}

DWORD HostTransfer::CodeOfEnd() const {
  if (m_bHeadTooLarge) return ERROR_WINHTTP_HEADER_SIZE_OVERFLOW;
  switch (m_End) {
    case CURLE_OK:
      return ERROR_SUCCESS;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return ERROR_WINHTTP_NAME_NOT_RESOLVED;
    case CURLE_OPERATION_TIMEDOUT:
      return ERROR_WINHTTP_TIMEOUT;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CIPHER:
      return ERROR_WINHTTP_SECURE_CHANNEL_ERROR;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
      return ERROR_WINHTTP_SECURE_FAILURE;
    case CURLE_TOO_MANY_REDIRECTS:
      return ERROR_WINHTTP_REDIRECT_FAILED;
    case CURLE_UNSUPPORTED_PROTOCOL:  // of a redirect, or an answer without a head
    case CURLE_URL_MALFORMAT:
      return m_Head.IsComplete() ? ERROR_WINHTTP_REDIRECT_FAILED
             : m_bConnected      ? ERROR_WINHTTP_INVALID_SERVER_RESPONSE
                                 : ERROR_WINHTTP_INVALID_URL;
    case CURLE_WEIRD_SERVER_REPLY:
      return ERROR_WINHTTP_INVALID_SERVER_RESPONSE;
    case CURLE_OUT_OF_MEMORY:  // a line that does not end looks like this, too
      return m_bConnected && !m_bHeadFinal ? ERROR_WINHTTP_HEADER_SIZE_OVERFLOW
                                           : ERROR_NOT_ENOUGH_MEMORY;
    default:
      return m_bConnected ? ERROR_WINHTTP_CONNECTION_ERROR : ERROR_WINHTTP_CANNOT_CONNECT;
  }
}

// ---- the steps

DWORD HostTransfer::Send(const TransferOrder& order, std::uint64_t length) {
  Close();
  m_bConnecting = m_bConnected = m_bHeadFinal = m_bEnded = m_bHeadTooLarge = m_bMoves = false;
  m_End = CURLE_OK;
  m_Upload.clear();
  m_Body.clear();
  m_Uploaded = m_Read = 0;
  m_Head = {};
  m_bRedirects = order.redirects;
  m_ResolveMs = order.resolveMs;
  m_ConnectMs = order.connectMs;
  m_SendMs = order.sendMs;
  m_ReceiveMs = order.receiveMs;
  m_pMulti.reset(curl_multi_init());
  m_pEasy.reset(curl_easy_init());
  if (!m_pMulti || !m_pEasy) {
    Close();
    return ERROR_NOT_ENOUGH_MEMORY;
  }
  SetUp(order, length);
  if (curl_multi_add_handle(m_pMulti.get(), m_pEasy.get()) != CURLM_OK) {
    Close();
    return ERROR_NOT_ENOUGH_MEMORY;
  }
  const DWORD code = Drive([this] { return m_bConnected; },
                           [this] { return m_bConnecting ? m_ConnectMs : m_ResolveMs; });
  if (code != ERROR_SUCCESS) Close();
  return code;
}

DWORD HostTransfer::Write(const void* data, DWORD size) {
  if (!IsOpen()) return ERROR_WINHTTP_INCORRECT_HANDLE_STATE;
  if (m_Upload.size() + size > m_UploadLength) return ERROR_INVALID_PARAMETER;
  m_Upload.append(static_cast<const char*>(data), size);
  curl_easy_pause(m_pEasy.get(), CURLPAUSE_CONT);
  // A server may answer before it has heard all.
  return Drive([this] { return m_Uploaded == m_Upload.size() || m_bHeadFinal; },
               [this] { return m_SendMs; });
}

DWORD HostTransfer::Receive() {
  if (!IsOpen()) return ERROR_WINHTTP_INCORRECT_HANDLE_STATE;
  const DWORD code = Drive([this] { return m_bHeadFinal; }, [this] { return m_ReceiveMs; });
  if (code != ERROR_SUCCESS) return code;
  return m_Head.IsComplete() ? ERROR_SUCCESS : ERROR_WINHTTP_INVALID_SERVER_RESPONSE;
}

DWORD HostTransfer::AwaitData(DWORD* available) {
  *available = 0;
  if (!m_bHeadFinal) return ERROR_WINHTTP_INCORRECT_HANDLE_STATE;
  const auto holds = [this] { return m_Read < m_Body.size(); };
  if (!holds() && !m_bEnded) {
    if (!IsOpen()) return ERROR_WINHTTP_TIMEOUT;
    curl_easy_pause(m_pEasy.get(), CURLPAUSE_CONT);
    if (const DWORD code = Drive(holds, [this] { return m_ReceiveMs; }); code != ERROR_SUCCESS)
      return code;
  }
  *available = static_cast<DWORD>(m_Body.size() - m_Read);
  return *available == 0 ? CodeOfEnd() : ERROR_SUCCESS;
}

DWORD HostTransfer::Read(void* buffer, DWORD size, DWORD* read) {
  *read = 0;
  DWORD available = 0;
  if (const DWORD code = AwaitData(&available); code != ERROR_SUCCESS) return code;
  *read = std::min(size, available);
  std::memcpy(buffer, m_Body.data() + m_Read, *read);
  m_Read += *read;
  return ERROR_SUCCESS;
}

}  // namespace corvane::platform::linux_host
