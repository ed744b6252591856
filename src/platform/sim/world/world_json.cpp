#include "platform/sim/world/world_json.h"

#include <rapidjson/error/en.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/sim/world/world_loader.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {

std::string NumberText(double value) {
  const auto whole = static_cast<std::int64_t>(value);
  return static_cast<double>(whole) == value ? std::to_string(whole) : std::to_string(value);
}

std::string PlaceOf(const std::string& text, std::size_t offset) {
  const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(offset, text.size()));
  const auto line = 1 + std::count(text.begin(), end, '\n');
  const std::size_t start = offset == 0 ? std::string::npos : text.rfind('\n', offset - 1);
  const std::size_t column = start == std::string::npos ? offset + 1 : offset - start;
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// RFC 6901: "~" and "/" of a name.
std::string Escape(const char* name) {
  std::string out;
  for (; *name; ++name) {
    if (*name == '~') {
      out += "~0";
    } else if (*name == '/') {
      out += "~1";
    } else {
      out += *name;
    }
  }
  return out;
}

}  // namespace

JsonText::JsonText(const std::string& text, std::string fileName)
    : m_FileName(std::move(fileName)) {
  // Iterative, so that no depth of brackets can use up the stack.
  m_Document.Parse<rapidjson::kParseValidateEncodingFlag | rapidjson::kParseIterativeFlag |
                   rapidjson::kParseFullPrecisionFlag>(text.c_str(), text.size());
  if (!m_Document.HasParseError()) return;
  throw WorldError(m_FileName + ": " + PlaceOf(text, m_Document.GetErrorOffset()) + ": " +
                   rapidjson::GetParseError_En(m_Document.GetParseError()));
}

void JsonNode::Fail(const std::string& reason) const {
  throw WorldError(m_pText->FileName() + ": " + (m_Path.empty() ? "/" : m_Path) + ": " + reason);
}

JsonNode JsonNode::Item(rapidjson::SizeType index) const {
  return JsonNode(*this, (*m_pValue)[index], std::to_string(index));
}

JsonNode JsonNode::Member(const char* name, const rapidjson::Value& value) const {
  return JsonNode(*this, value, Escape(name));
}

std::vector<JsonNode> JsonNode::Items() const {
  if (!m_pValue->IsArray()) Fail("wants a list");
  std::vector<JsonNode> items;
  for (rapidjson::SizeType i = 0; i < m_pValue->Size(); ++i) items.push_back(Item(i));
  return items;
}

std::string JsonNode::Text() const {
  if (!m_pValue->IsString()) Fail("wants a text");
  std::string text(m_pValue->GetString(), m_pValue->GetStringLength());
  if (text.find('\0') != std::string::npos) Fail("wants a text without NUL");
  return text;
}

bool JsonNode::Flag() const {
  if (!m_pValue->IsBool()) Fail("wants true or false");
  return m_pValue->GetBool();
}

std::int64_t JsonNode::Integer(std::int64_t least, std::int64_t most) const {
  if (!m_pValue->IsInt64() || m_pValue->GetInt64() < least || m_pValue->GetInt64() > most) {
    Fail("wants a whole number from " + std::to_string(least) + " to " + std::to_string(most));
  }
  return m_pValue->GetInt64();
}

double JsonNode::Number(double least, double most) const {
  const double value = m_pValue->IsNumber() ? m_pValue->GetDouble() : NAN;
  if (!(least <= value && value <= most)) {
    Fail("wants a number from " + NumberText(least) + " to " + NumberText(most));
  }
  return value;
}

std::uint64_t JsonNode::Duration() const {
  std::uint64_t ms = 0;
  if (m_pValue->IsUint64()) return m_pValue->GetUint64();
  if (!m_pValue->IsString() || !ReadDuration(Text(), &ms)) {
    Fail("wants a time such as \"90s\", \"1m30s\" or a number of milliseconds");
  }
  return ms;
}

Mac JsonNode::MacAddress() const {
  Mac mac{};
  if (!m_pValue->IsString() || !ReadMac(Text(), &mac)) {
    Fail("wants six pairs of hexadecimal digits such as \"02-00-00-00-00-01\"");
  }
  return mac;
}

IpAddress JsonNode::Address() const {
  IpAddress address;
  if (!m_pValue->IsString() || !ReadIpAddress(Text(), &address)) {
    Fail("wants an address such as \"192.168.1.2/24\" or \"fe80::1/64\"");
  }
  return address;
}

Point JsonNode::Place() const {
  constexpr double kFarthest = 1e6;
  if (!m_pValue->IsArray() || m_pValue->Size() != 2) Fail("wants a place, [x, y] in metres");
  return {Item(0).Number(-kFarthest, kFarthest), Item(1).Number(-kFarthest, kFarthest)};
}

std::string JsonNode::Ssid() const {
  std::string ssid = Text();
  if (ssid.empty() || ssid.size() > sizeof(DOT11_SSID::ucSSID))
    Fail("wants an SSID of 1 to 32 bytes");
  return ssid;
}

JsonFields::JsonFields(const JsonNode& node) : m_Node(node) {
  const rapidjson::Value& value = node.Value();
  if (!value.IsObject()) node.Fail("wants an object");
  m_Asked.resize(value.MemberCount());
  for (auto member = value.MemberBegin(); member != value.MemberEnd(); ++member) {
    for (auto earlier = value.MemberBegin(); earlier != member; ++earlier) {
      if (earlier->name == member->name) {
        node.Member(member->name.GetString(), member->value).Fail("is given twice");
      }
    }
  }
}

bool JsonFields::Has(const char* name) const { return m_Node.Value().HasMember(name); }

std::optional<JsonNode> JsonFields::Find(const char* name) {
  const rapidjson::Value& value = m_Node.Value();
  const auto found = value.FindMember(name);
  if (found == value.MemberEnd()) return std::nullopt;
  m_Asked[static_cast<std::size_t>(found - value.MemberBegin())] = true;
  return m_Node.Member(name, found->value);
}

JsonNode JsonFields::Need(const char* name) {
  const auto node = Find(name);
  if (!node) m_Node.Fail(std::string("\"") + name + "\" is missing");
  return *node;
}

void JsonFields::Finish() {
  const rapidjson::Value& value = m_Node.Value();
  for (std::size_t i = 0; i < m_Asked.size(); ++i) {
    const auto member = value.MemberBegin() + static_cast<std::ptrdiff_t>(i);
    if (!m_Asked[i])
      m_Node.Member(member->name.GetString(), member->value)
          .Fail("is not a member that belongs here");
  }
}

void JsonFields::Text(const char* name, std::u16string* out) {
  if (const auto node = Find(name)) *out = FromUtf8(node->Text());
}

void JsonFields::Text(const char* name, std::string* out) {
  if (const auto node = Find(name)) *out = node->Text();
}

void JsonFields::Flag(const char* name, bool* out) {
  if (const auto node = Find(name)) *out = node->Flag();
}

void JsonFields::Duration(const char* name, std::uint64_t* out) {
  if (const auto node = Find(name)) *out = node->Duration();
}

void JsonFields::Duration(const char* name, DWORD* out) {
  const auto node = Find(name);
  if (!node) return;
  const std::uint64_t ms = node->Duration();
  if (ms > std::numeric_limits<DWORD>::max()) node->Fail("is too long");
  *out = static_cast<DWORD>(ms);
}

void JsonFields::Number(const char* name, double least, double most, double* out) {
  if (const auto node = Find(name)) *out = node->Number(least, most);
}

}  // namespace corvane::platform::sim
