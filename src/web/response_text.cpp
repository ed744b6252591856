#include "web/response_text.h"

#include "platform/http_api.h"
#include "platform/platform.h"

namespace corvane {

namespace {

constexpr WStringView kCharset = u"charset=";
constexpr WStringView kUtf8 = u"utf-8";

bool Convert(const std::string& body, unsigned codePage, platform::DWORD flags, WString* text) {
  auto& http = Os().http;
  const int size = static_cast<int>(body.size());
  const int length = http.MultiByteToWideChar(codePage, flags, body.data(), size, nullptr, 0);
  if (length <= 0) return false;
  text->resize(static_cast<std::size_t>(length));
  const int written =
      http.MultiByteToWideChar(codePage, flags, body.data(), size, text->data(), length);
  text->resize(written > 0 && written <= length ? static_cast<std::size_t>(written) : 0);
  return written > 0;
}

}  // namespace

WString CharsetOf(WStringView contentType) {
  const std::size_t at = contentType.find(kCharset);
  return at == contentType.npos ? WString(kUtf8)
                                : ToLower(contentType.substr(at + kCharset.size()));
}

WString TextOfBody(const std::string& body, WStringView charset) {
  WString text;
  if (body.empty()) return text;
  const bool utf8 = charset.find(kUtf8) != charset.npos;
  if (utf8 && Convert(body, platform::CP_UTF8, 0, &text)) return text;
  Convert(body, platform::CP_ACP, platform::MB_PRECOMPOSED, &text);
  return text;
}

bool IsIncompletePage(WStringView text) {
  return text.find(u"<html>") != text.npos && text.find(u"</html>") == text.npos;
}

}  // namespace corvane
