// Taking the response of a request.

#include <algorithm>
#include <vector>

#include "web/response_text.h"
#include "web/web_log.h"
#include "web/win_http_helper.h"

namespace corvane {

using namespace platform;

namespace {

constexpr DWORD kMaxHeaderBytes = 1024 * 1024;
// One read; a platform that claims more at a time gives it in several.
constexpr DWORD kMaxPiece = 1024 * 1024;

// A header as text; false with the last error set.
bool QueryText(HINTERNET request, DWORD infoLevel, WString* text) {
  auto& os = Os();
  text->clear();
  DWORD size = 0;
  DWORD index = 0;
  if (os.http.WinHttpQueryHeaders(request, infoLevel, nullptr, nullptr, &size, &index)) return true;
  if (os.threads.GetLastError() != ERROR_INSUFFICIENT_BUFFER) return false;
  if (size > kMaxHeaderBytes) {
    os.threads.SetLastError(ERROR_WINHTTP_HEADER_SIZE_OVERFLOW);
    return false;
  }
  text->resize(size / sizeof(char16_t) + 1);
  size = static_cast<DWORD>(text->size() * sizeof(char16_t));
  index = 0;
  if (!os.http.WinHttpQueryHeaders(request, infoLevel, nullptr, text->data(), &size, &index)) {
    text->clear();
    return false;
  }
  text->resize(std::min<std::size_t>(size / sizeof(char16_t), text->size()));
  text->resize(std::min(text->find(u'\0'), text->size()));
  return true;
}

bool QueryNumber(HINTERNET request, DWORD infoLevel, DWORD* number) {
  DWORD size = sizeof *number;
  DWORD index = 0;
  return Os().http.WinHttpQueryHeaders(request, infoLevel | WINHTTP_QUERY_FLAG_NUMBER, nullptr,
                                       number, &size, &index) != FALSE;
}

void LogQueryFailed(HINTERNET request, const char* query, DWORD code) {
  LOG_DEBUG(kWebLog,
            u"_>CWinHTTPHelper::SyncSendHttpRequest: [hInternetRequest=%p] "
            u"WinHttpQueryHeaders(%S) failed -- %lu\n",
            request, query, code);
}

}  // namespace

CWinHTTPHelper::Round CWinHTTPHelper::TakeResponse(Request* request) {
  const HINTERNET handle = request->handle;
  const auto ends = [&](const char* query) {
    request->code = LastErrorOf();
    LogQueryFailed(handle, query, request->code);
    return Round::kEnded;
  };
  const auto lacks = [&](const char* query) { LogQueryFailed(handle, query, LastErrorOf()); };
  m_StatusCode = m_ContentLength = m_BytesReceived = 0;
  m_ResponseText.clear();
  if (!QueryText(handle, WINHTTP_QUERY_RAW_HEADERS_CRLF, &m_ResponseHeaders))
    return ends("WINHTTP_QUERY_RAW_HEADERS_CRLF");
  if (!QueryNumber(handle, WINHTTP_QUERY_STATUS_CODE, &m_StatusCode))
    return ends("WINHTTP_QUERY_STATUS_CODE");
  if (!QueryNumber(handle, WINHTTP_QUERY_CONTENT_LENGTH, &m_ContentLength))
    lacks("WINHTTP_QUERY_CONTENT_LENGTH");
  WString contentType;
  if (!QueryText(handle, WINHTTP_QUERY_CONTENT_TYPE, &contentType))
    lacks("WINHTTP_QUERY_CONTENT_TYPE");
  if (!QueryText(handle, WINHTTP_QUERY_SET_COOKIE, &m_SetCookie)) lacks("WINHTTP_QUERY_SET_COOKIE");
  std::string body;
  const Round read = ReadBody(request, &body);
  if (read == Round::kDone) m_ResponseText = TextOfBody(body, CharsetOf(contentType));
  return read;
}

// A body that breaks off is taken as far as it came; one that has no end within the limit ends the
// call.
CWinHTTPHelper::Round CWinHTTPHelper::ReadBody(Request* request, std::string* body) {
  auto& http = Os().http;
  std::vector<std::string> chunks;
  std::size_t total = 0;
  for (;;) {
    DWORD available = 0;
    if (!http.WinHttpQueryDataAvailable(request->handle, &available)) {
      request->code = LastErrorOf();
      LOG_DEBUG(kWebLog,
                u"_>CWinHTTPHelper::SyncSendHttpRequest: [hInternetRequest=%p] "
                u"WinHttpQueryDataAvailable() failed -- %lu [dwSize=%lu]\n",
                request->handle, request->code, available);
      break;
    }
    if (available == 0) break;
    std::string chunk(std::min(available, kMaxPiece), '\0');
    DWORD count = 0;
    if (!http.WinHttpReadData(request->handle, chunk.data(), static_cast<DWORD>(chunk.size()),
                              &count)) {
      request->code = LastErrorOf();
      LOG_DEBUG(kWebLog,
                u"_>CWinHTTPHelper::SyncSendHttpRequest: [hInternetRequest=%p] WinHttpReadData() "
                u"failed -- %lu\n",
                request->handle, request->code);
      break;
    }
    if (count == 0) break;
    chunk.resize(std::min<std::size_t>(count, chunk.size()));
    total += chunk.size();
    if (total > kMaxBody) {
      request->code = ERROR_WINHTTP_RESPONSE_DRAIN_OVERFLOW;
      LOG_DEBUG(kWebLog,
                u"_>CWinHTTPHelper::SyncSendHttpRequest: [hInternetRequest=%p] the body has more "
                u"than %u bytes\n",
                request->handle, kMaxBody);
      return Round::kEnded;
    }
    chunks.push_back(std::move(chunk));
  }
  m_BytesReceived = static_cast<DWORD>(total);
  body->reserve(total);
  for (const std::string& chunk : chunks) body->append(chunk);
  return Round::kDone;
}

}  // namespace corvane
