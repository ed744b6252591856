#include "corvane_client/json_writer.h"

#include <charconv>

#include "foundation/text.h"

namespace corvane::client {

namespace {

// What may stand behind the whole part of a number: nothing, or a point and digits.
bool IsFraction(std::string_view text) {
  if (text.empty()) return true;
  const std::string_view digits = text.substr(1);
  return text[0] == '.' && !digits.empty() && digits.find_first_not_of("0123456789") == digits.npos;
}

}  // namespace

CJsonWriter& CJsonWriter::String(std::string_view text) {
  const std::string whole = WideToUtf8(Utf8ToWide(text));
  m_Writer.String(whole.data(), static_cast<rapidjson::SizeType>(whole.size()));
  return *this;
}

CJsonWriter& CJsonWriter::Value(const std::string& text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const std::string_view rest(end, static_cast<std::size_t>(text.data() + text.size() - end));
  if (error != std::errc() || !IsFraction(rest)) return String(text);
  if (rest.empty()) {
    m_Writer.Int64(number);
    return *this;
  }
  // The whole part anew: JSON takes no zeros before it.
  const std::string sign = number == 0 && text[0] == '-' ? "-" : "";
  return Raw(sign + std::to_string(number) + std::string(rest));
}

}  // namespace corvane::client
