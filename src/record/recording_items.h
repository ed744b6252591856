#pragma once
// What the reader of a recording asks of a line's JSON. What is missing, or of another kind than is
// wanted, is a Fault.

#include <rapidjson/document.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "foundation/text.h"
#include "record/recording_form.h"
#include "store/address_text.h"
#include "store/json_text.h"

namespace corvane::recording {

using Json = rapidjson::Value;

struct Fault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

constexpr int kMostAdapter = 255;

[[noreturn]] inline void Fail(const std::string& what) { throw Fault(what); }

// The items of an array, one after the other; each must be there and of the kind that is asked for.
class Items {
 public:
  explicit Items(const Json& json) : m_Json(json) {
    if (!json.IsArray()) Fail("an array is wanted");
  }
  bool AtEnd() const { return m_Next == m_Json.Size(); }
  void End() const {
    if (!AtEnd()) Fail("an array has too many items");
  }
  const Json& Next() {
    if (AtEnd()) Fail("an array has too few items");
    return m_Json[m_Next++];
  }
  template <class Number>
  Number Num(Number least = std::numeric_limits<Number>::min(),
             Number most = std::numeric_limits<Number>::max()) {
    const Json& json = Next();
    if constexpr (std::is_signed_v<Number>) {
      if (!json.IsInt64() || json.GetInt64() < least || json.GetInt64() > most)
        Fail("a number is none, or out of range");
      return static_cast<Number>(json.GetInt64());
    } else {
      if (!json.IsUint64() || json.GetUint64() < least || json.GetUint64() > most)
        Fail("a number is none, or out of range");
      return static_cast<Number>(json.GetUint64());
    }
  }
  bool Flag() {
    const Json& json = Next();
    if (!json.IsBool()) Fail("true or false is wanted");
    return json.GetBool();
  }
  std::string Text() {
    const Json& json = Next();
    if (!json.IsString()) Fail("a text is wanted");
    return std::string(JsonText(json));
  }
  std::string Hex() {
    auto bytes = FromHex(Text());
    if (!bytes) Fail("a text is not in hexadecimal digits");
    return *std::move(bytes);
  }
  MacAddress Mac() {
    MacAddress mac;
    if (!MacStringToBinary(u'-', Widen(Text()), &mac)) Fail("a text is no BSSID");
    return mac;
  }
  int Adapter() { return Num<int>(0, kMostAdapter); }
  Items Array() { return Items(Next()); }

 private:
  const Json& m_Json;
  rapidjson::SizeType m_Next = 0;
};

inline std::string TextOf(const Json& object, const char* name) {
  const auto at = object.FindMember(name);
  if (at == object.MemberEnd() || !at->value.IsString())
    Fail("\"" + std::string(name) + "\" is missing, or no text");
  return std::string(JsonText(at->value));
}

inline bool FlagOf(const Json& object, const char* name) {
  const auto at = object.FindMember(name);
  if (at == object.MemberEnd() || !at->value.IsBool())
    Fail("\"" + std::string(name) + "\" is missing, or neither true nor false");
  return at->value.GetBool();
}

}  // namespace corvane::recording
