#include "corvane_client/json_writer.h"

#include <charconv>

#include "foundation/text.h"

namespace corvane::client {

CJsonWriter& CJsonWriter::String(std::string_view text) {
  const std::string whole = WideToUtf8(Utf8ToWide(text));
  m_Writer.String(whole.data(), static_cast<rapidjson::SizeType>(whole.size()));
  return *this;
}

CJsonWriter& CJsonWriter::Value(const std::string& text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return String(text);
  m_Writer.Int64(number);
  return *this;
}

}  // namespace corvane::client
