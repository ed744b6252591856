#pragma once
// Strict reading of JSON: every complaint names the file, the JSON path (RFC 6901) and the reason.

#include <rapidjson/document.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/sim/world/world.h"

namespace corvane::platform::sim {

// A JSON text, kept while its nodes are read.
class JsonText {
 public:
  // Throws WorldError for what is no JSON, with line and column, counted from 1.
  JsonText(const std::string& text, std::string fileName);

  const rapidjson::Value& Root() const { return m_Document; }
  const std::string& FileName() const { return m_FileName; }

 private:
  rapidjson::Document m_Document;
  std::string m_FileName;
};

// One value of it, with its place.
class JsonNode {
 public:
  explicit JsonNode(const JsonText& text) : m_pText(&text), m_pValue(&text.Root()) {}

  [[noreturn]] void Fail(const std::string& reason) const;  // throws WorldError

  const rapidjson::Value& Value() const { return *m_pValue; }
  JsonNode Item(rapidjson::SizeType index) const;
  JsonNode Member(const char* name, const rapidjson::Value& value) const;
  std::vector<JsonNode> Items() const;  // of an array

  std::string Text() const;  // UTF-8
  bool Flag() const;
  std::int64_t Integer(std::int64_t least, std::int64_t most) const;
  double Number(double least, double most) const;
  std::uint64_t Duration() const;  // a text with units, or a whole number of milliseconds
  Mac MacAddress() const;
  IpAddress Address() const;
  Point Place() const;       // [x, y]
  std::string Ssid() const;  // at most 32 bytes

  // The value that the table gives to this word.
  template <class Word, std::size_t Count>
  auto Choice(const Word (&table)[Count]) const {
    const std::string text = Text();
    std::string known;
    for (const Word& word : table) {
      if (text == word.name) return word.value;
      known += known.empty() ? "" : ", ";
      known += word.name;
    }
    Fail("\"" + text + "\" is not one of " + known);
  }

 private:
  JsonNode(const JsonNode& parent, const rapidjson::Value& value, const std::string& step)
      : m_pText(parent.m_pText), m_pValue(&value), m_Path(parent.m_Path + "/" + step) {}

  const JsonText* m_pText;
  const rapidjson::Value* m_pValue;
  std::string m_Path;
};

// The members of one object. Each that is there must be asked for before Finish.
class JsonFields {
 public:
  explicit JsonFields(const JsonNode& node);  // fails unless it is an object with no name twice

  const JsonNode& Node() const { return m_Node; }
  bool Has(const char* name) const;
  std::optional<JsonNode> Find(const char* name);
  JsonNode Need(const char* name);
  void Finish();  // refuses the first member that nobody asked for

  // Each leaves the output as it is when the member is not there.
  void Text(const char* name, std::u16string* out);
  void Text(const char* name, std::string* out);
  void Flag(const char* name, bool* out);
  void Duration(const char* name, std::uint64_t* out);
  void Duration(const char* name, DWORD* out);
  void Number(const char* name, double least, double most, double* out);
  template <class Whole>
  void Integer(const char* name, std::int64_t least, std::int64_t most, Whole* out) {
    if (const auto node = Find(name)) *out = static_cast<Whole>(node->Integer(least, most));
  }
  // Calls `read` for every item of an array.
  template <class Read>
  void Each(const char* name, const Read& read) {
    if (const auto node = Find(name)) {
      for (const JsonNode& item : node->Items()) read(item);
    }
  }

 private:
  JsonNode m_Node;
  std::vector<bool> m_Asked;  // by position of the member
};

}  // namespace corvane::platform::sim
