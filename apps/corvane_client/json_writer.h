#pragma once
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>
#include <string_view>

namespace corvane::client {

// Builds a JSON text in one line. Members come in pairs of Name and a value.
class CJsonWriter {
 public:
  CJsonWriter& Name(std::string_view name) { return String(name); }
  CJsonWriter& String(std::string_view text);  // what is no UTF-8 becomes U+FFFD
  // A number where the text is one, such as "-70" or "9.80", else a string.
  CJsonWriter& Value(const std::string& text);
  CJsonWriter& Uint64(std::uint64_t number) { return m_Writer.Uint64(number), *this; }
  CJsonWriter& Uint(std::uint32_t number) { return m_Writer.Uint(number), *this; }
  CJsonWriter& Bool(bool value) { return m_Writer.Bool(value), *this; }
  CJsonWriter& Begin() { return m_Writer.StartObject(), *this; }
  CJsonWriter& End() { return m_Writer.EndObject(), *this; }
  CJsonWriter& BeginArray() { return m_Writer.StartArray(), *this; }
  CJsonWriter& EndArray() { return m_Writer.EndArray(), *this; }
  CJsonWriter& Raw(std::string_view json) {  // a whole value
    m_Writer.RawValue(json.data(), json.size(), rapidjson::kNullType);
    return *this;
  }
  std::string Text() const { return m_Buffer.GetString(); }

 private:
  rapidjson::StringBuffer m_Buffer;
  rapidjson::Writer<rapidjson::StringBuffer> m_Writer{m_Buffer};
};

}  // namespace corvane::client
