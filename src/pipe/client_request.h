#pragma once
#include <rapidjson/document.h>

#include <cstdint>
#include <string_view>

#include "foundation/text.h"

namespace corvane {

// A client's request: its text as it came, and its members, none of which need be there. A root
// that is no object has none. Lives as long as the document and the text that it looks at.
class CClientRequest {
 public:
  CClientRequest(const rapidjson::Document& json, WStringView text) : m_Json(json), m_Text(text) {}

  WStringView GetText() const { return m_Text; }

  // False, with *out as it was, when the member is missing or has another type.
  bool GetString(const char* name, WString* out) const;
  bool GetBytes(const char* name, std::string_view* out) const;  // of a string, in UTF-8
  bool GetUint(const char* name, std::uint32_t* out) const;
  bool GetInt(const char* name, std::int32_t* out) const;
  bool GetBool(const char* name, bool* out) const;
  // The members of an object among the members; nothing is read from a value of another type.
  const rapidjson::Value* FindObject(const char* name) const;  // null: missing or no object

 private:
  const rapidjson::Value* Find(const char* name) const;

  const rapidjson::Document& m_Json;
  WStringView m_Text;
};

// The text of decoded base64: UTF-8, or one character a byte where it is none.
WString WideFromBytes(std::string_view bytes);

}  // namespace corvane
