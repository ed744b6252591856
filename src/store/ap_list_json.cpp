#include "store/ap_list_json.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <set>

#include "store/json_text.h"

namespace corvane {

namespace {

using rapidjson::Value;

constexpr char16_t kMacSeparator = u'-';

bool IsAny(std::string_view text) { return ToLower(text) == "any"; }

bool ReadMac(std::string_view text, MacAddress* mac) {
  return MacStringToBinary(kMacSeparator, Widen(text), mac);
}

ApListRow Row(std::string_view ssid, std::string_view bssid, const MacAddress& mac) {
  return {Utf8ToWide(ssid), std::string(bssid), mac};
}

// The text of an element; nothing when there is none there.
std::optional<std::string_view> TextAt(const Value& row, rapidjson::SizeType index) {
  if (index >= row.Size() || !row[index].IsString()) return std::nullopt;
  return JsonText(row[index]);
}

// The low 32 bits of a number, of its whole part where it has a fraction.
std::optional<std::uint32_t> NumberAt(const Value& row, rapidjson::SizeType index) {
  if (index >= row.Size() || !row[index].IsNumber()) return std::nullopt;
  const Value& number = row[index];
  if (number.IsUint64()) return static_cast<std::uint32_t>(number.GetUint64());
  if (number.IsInt64()) return static_cast<std::uint32_t>(number.GetInt64());
  constexpr double kLimit = 9.2e18;  // within 64 bits
  const double value = number.GetDouble();
  if (!(value > -kLimit && value < kLimit)) return std::nullopt;
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(value));
}

std::optional<ApListRow> DenyRow(const Value& row) {
  const auto ssid = TextAt(row, 0), bssid = TextAt(row, 1);
  if (!ssid || !bssid) return std::nullopt;
  MacAddress mac{};
  if (!ReadMac(*bssid, &mac)) mac = IsAny(*bssid) ? kAnyMac : MacAddress{};
  return Row(*ssid, *bssid, mac);
}

// The two elements may stand in either order: whichever can be read as a BSSID is the BSSID.
std::optional<ApListRow> AllowRow(const Value& row) {
  const auto a = TextAt(row, 0);
  if (!a) return std::nullopt;
  if (row.Size() == 1) return Row(*a, "any", kAnyMac);
  const auto b = TextAt(row, 1);
  if (!b) return std::nullopt;
  MacAddress mac{};
  if (IsAny(*b)) return Row(*a, *b, kAnyMac);
  if (ReadMac(*b, &mac)) return Row(*a, *b, mac);
  if (IsAny(*a)) return Row(*b, *a, kAnyMac);
  if (ReadMac(*a, &mac)) return Row(*b, *a, mac);
  return Row(*a, *b, kAnyMac);
}

std::optional<PreferredApRow> PreferredRow(const Value& row) {
  auto base = DenyRow(row);
  const auto min_lq = NumberAt(row, 2);
  if (!base || !min_lq) return std::nullopt;
  return PreferredApRow{std::move(*base), *min_lq};
}

// Calls take(row) with each row of the text that make() can read; true when there was one.
template <class Make, class Take>
bool ForEachRow(std::string_view json, Make&& make, Take&& take) {
  rapidjson::Document document;
  ParseJson(json, &document);
  if (document.HasParseError() || !document.IsArray()) return false;
  bool any = false;
  for (const Value& element : document.GetArray()) {
    if (!element.IsArray()) continue;
    auto row = make(element);
    if (!row) continue;
    any = true;
    take(std::move(*row));
  }
  return any;
}

template <class Make>
bool Merge(std::string_view json, Make&& make, ApListRows* rows) {
  // An equal BSSID text means an equal address, so the address alone tells rows apart.
  std::set<std::pair<WStringView, MacAddress>> known;
  for (const ApListRow& row : *rows) known.emplace(row.ssid, row.mac);
  return ForEachRow(json, make, [&](ApListRow&& row) {
    if (known.contains({row.ssid, row.mac})) return;
    const ApListRow& kept = rows->emplace_back(std::move(row));
    known.emplace(kept.ssid, kept.mac);
  });
}

}  // namespace

bool IsListed(const ApListRows& rows, WStringView ssid, const MacAddress& mac) {
  for (const ApListRow& row : rows) {
    if (row.NamesBssid(mac) && EqualsIgnoreCase(row.ssid, ssid)) return true;
  }
  return false;
}

ApListIndex::ApListIndex(const ApListRows& rows) {
  m_Rows.reserve(rows.size());
  for (const ApListRow& row : rows) m_Rows.emplace(row.ssid, &row);
}

bool ApListIndex::IsListed(WStringView ssid, const MacAddress& mac) const {
  if (m_Rows.empty()) return false;
  const auto [first, last] = m_Rows.equal_range(ssid);
  return std::any_of(first, last, [&mac](const auto& row) { return row.second->NamesBssid(mac); });
}

// FNV-1a over the units, ASCII letters in lower case.
std::size_t ApListIndex::FoldedHash::operator()(WStringView ssid) const {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char16_t unit : ssid) {
    hash ^= unit >= u'A' && unit <= u'Z' ? unit + 32u : unit;
    hash *= 0x100000001B3;
  }
  return hash;
}

bool ReadDenyRows(std::string_view json, ApListRows* rows) { return Merge(json, DenyRow, rows); }

bool ReadAllowRows(std::string_view json, ApListRows* rows) { return Merge(json, AllowRow, rows); }

bool ReadPreferredRows(std::string_view json, PreferredApRows* rows) {
  return ForEachRow(json, PreferredRow,
                    [rows](PreferredApRow&& row) { rows->push_back(std::move(row)); });
}

std::string ApListJson(const ApListRows& rows) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  writer.StartArray();
  const auto write = [&writer](const std::string& text) {
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
  };
  for (const ApListRow& row : rows) {
    writer.StartArray();
    write(WideToUtf8(row.ssid));
    write(row.bssid);
    writer.EndArray();
  }
  writer.EndArray();
  return std::string(buffer.GetString(), buffer.GetSize());
}

}  // namespace corvane
