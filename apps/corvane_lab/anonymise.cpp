#include "corvane_lab/anonymise.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "foundation/format.h"
#include "foundation/text.h"
#include "record/recording_form.h"
#include "store/address_text.h"
#include "store/base64_text.h"
#include "store/json_text.h"

namespace corvane::lab {

namespace {

using Json = rapidjson::Value;
using rapidjson::SizeType;

constexpr std::size_t kMacBytes = 6;
constexpr std::size_t kMacText = 17;  // characters of "aa-bb-cc-dd-ee-ff"

// A name without the number that the system puts behind the second of that name, and that number.
std::pair<std::string, std::string> SplitNumber(const std::string& name) {
  std::size_t end = name.size();
  while (end > 0 && std::isdigit(static_cast<unsigned char>(name[end - 1])) != 0) --end;
  if (end == name.size() || end < 2 || name[end - 1] != ' ') return {name, ""};
  return {name.substr(0, end - 1), name.substr(end - 1)};
}

// The address in this text at this place; nothing where there is none.
std::optional<MacAddress> MacAt(std::string_view text, std::size_t at) {
  constexpr std::size_t kPair = 3;  // with what is between two
  if (at + kMacText > text.size()) return std::nullopt;
  std::string word(text.substr(at, kMacText));
  const char between = word[2];
  if (between != '-' && between != ':') return std::nullopt;
  for (std::size_t i = 0; i < word.size(); ++i) {
    const bool fits = i % kPair == 2 ? word[i] == between
                                     : std::isxdigit(static_cast<unsigned char>(word[i])) != 0;
    if (!fits) return std::nullopt;
  }
  std::ranges::replace(word, between, '-');
  MacAddress mac;
  return MacStringToBinary(u'-', Widen(word), &mac) ? std::optional(mac) : std::nullopt;
}

// What stands in the place of each name and address. All are told before the first is asked for.
class NewNames {
 public:
  void TellName(const std::string& name) {
    if (!name.empty()) m_Names.insert(SplitNumber(name).first);
  }
  void TellMac(const MacAddress& mac) { m_MacGroups.emplace(GroupOf(mac), 0); }
  void TellAdapter(const std::string& name) {
    if (!name.empty()) m_Adapters.emplace(name, "");
  }
  // By order, so that what was sorted by names and addresses still is.
  void Number() {
    std::size_t number = 0;
    for (const std::string& name : m_Names) {
      const bool guest = ToLower(name).find("guest") != std::string::npos;
      m_NewNames[name] =
          FormatA("net-%03u%s", static_cast<unsigned>(number++), guest ? "-guest" : "");
    }
    unsigned group = 0;
    for (auto& [bytes, to] : m_MacGroups) to = group++;
    unsigned adapter = 0;
    for (auto& [name, to] : m_Adapters) to = FormatA("adapter-%u", adapter++);
  }

  std::string Name(const std::string& name) const {
    const auto [base, number] = SplitNumber(name);
    const auto at = m_NewNames.find(base);
    return at == m_NewNames.end() ? name : at->second + number;
  }
  MacAddress Mac(const MacAddress& mac) const {
    constexpr std::uint8_t kLocal = 0x02, kMark = 0xA0;
    const auto at = m_MacGroups.find(GroupOf(mac));
    if (at == m_MacGroups.end() || IsZero(mac)) return mac;
    return {kLocal,
            kMark,
            0,
            static_cast<std::uint8_t>(at->second >> 8),
            static_cast<std::uint8_t>(at->second & 0xFF),
            mac[kMacBytes - 1]};
  }
  // A whole text: a name, or one with addresses in it.
  std::string Text(const std::string& text) const {
    if (const auto at = m_Adapters.find(text); at != m_Adapters.end()) return at->second;
    if (m_NewNames.contains(SplitNumber(text).first)) return Name(text);
    std::string out;
    for (std::size_t i = 0; i < text.size();) {
      const auto mac = MacAt(text, i);
      if (!mac) {
        out += text[i++];
        continue;
      }
      std::string word = MacTextA(Mac(*mac));
      std::ranges::replace(word, '-', text[i + 2]);
      out += word;
      i += kMacText;
    }
    return WithoutLongNames(std::move(out));
  }

 private:
  using Group = std::array<std::uint8_t, kMacBytes - 1>;
  static Group GroupOf(const MacAddress& mac) { return {mac[0], mac[1], mac[2], mac[3], mac[4]}; }

  // Names that stand within a longer text; a short one may be part of any word.
  std::string WithoutLongNames(std::string text) const {
    constexpr std::size_t kLong = 6;
    const auto replace = [&text](const std::string& name, const std::string& to) {
      if (name.size() < kLong) return;
      for (std::size_t at = 0; (at = text.find(name, at)) != std::string::npos; at += to.size())
        text.replace(at, name.size(), to);
    };
    for (const auto& [name, to] : m_NewNames) replace(name, to);
    for (const auto& [name, to] : m_Adapters) replace(name, to);
    return text;
  }

  std::set<std::string> m_Names;  // without their numbers
  std::map<std::string, std::string> m_NewNames;
  std::map<Group, unsigned> m_MacGroups;
  std::map<std::string, std::string> m_Adapters;
};

// One element, header included.
std::string NewElement(std::string bytes, const NewNames& names) {
  constexpr std::size_t kHeader = 2;
  constexpr std::uint8_t kSsid = 0, kVendor = 221;
  // Those that a score reads.
  static constexpr std::array<std::uint8_t, 16> kRead = {1,  2,  3,  8,  9,   11,  42,  45,
                                                         47, 48, 50, 61, 191, 192, 221, 255};
  // The WPA element, and the extensions that tell of HE (802.11ax, 9.4.2).
  constexpr std::string_view kWpa("\x00\x50\xF2\x01", 4);
  constexpr std::uint8_t kExtension = 255;
  static constexpr std::array<std::uint8_t, 3> kReadExtensions = {35, 36, 38};
  if (bytes.size() < kHeader) return bytes;
  const auto id = static_cast<std::uint8_t>(bytes[0]);
  const std::string_view body = std::string_view(bytes).substr(kHeader);
  if (id == kSsid) {
    const bool hidden = body.find_first_not_of('\0') == std::string_view::npos;
    if (hidden) return bytes;
    const std::string name = names.Name(std::string(body));
    return std::string{bytes[0], static_cast<char>(name.size())} + name;
  }
  const bool read =
      std::ranges::find(kRead, id) != kRead.end() && (id != kVendor || body.starts_with(kWpa)) &&
      (id != kExtension ||
       (!body.empty() && std::ranges::find(kReadExtensions, static_cast<std::uint8_t>(body[0])) !=
                             kReadExtensions.end()));
  if (read) return bytes;
  // Of a vendor's, who it is stays; of an extension, which.
  const std::size_t kept = id == kVendor ? 3 : id == kExtension ? 1 : 0;
  for (std::size_t i = kHeader + kept; i < bytes.size(); ++i) bytes[i] = 0;
  return bytes;
}

class Rewriter {
 public:
  explicit Rewriter(const NewNames& names) : m_Names(names) {}

  std::string Line(std::string_view line) {
    rapidjson::Document json;
    ParseJson(line, &json);
    m_pAllocator = &json.GetAllocator();
    auto member = json.MemberBegin();
    for (SizeType i = 0; i < json.MemberCount(); ++i, ++member)
      Rewrite(JsonText(member->name), &member->value);
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    json.Accept(writer);
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
  }

 private:
  void Set(Json* json, const std::string& text) {
    json->SetString(text.c_str(), static_cast<SizeType>(text.size()), *m_pAllocator);
  }
  void SetHexName(Json* json) {
    const auto name = recording::FromHex(JsonText(*json)).value_or(std::string());
    Set(json, recording::ToHex(m_Names.Name(name)));
  }

  void Rewrite(std::string_view what, Json* json) {
    constexpr SizeType kApSsid = 3, kLinkSsid = 2;
    if (what == recording::kElement) {
      Json& bytes = (*json)[1];
      Set(&bytes, Base64Encode(NewElement(Base64Decode(JsonText(bytes)), m_Names)));
    } else if (what == recording::kAccessPoint) {
      SetHexName(&(*json)[kApSsid]);
      Texts(&(*json)[2]);
    } else if (what == recording::kLink && json->Size() > kLinkSsid) {
      SetHexName(&(*json)[kLinkSsid]);
      Texts(&(*json)[1]);
    } else if (what == recording::kNetworks) {
      for (SizeType i = 0; i < (*json)[1].Size(); ++i) {
        Json& row = (*json)[1][i];
        SetHexName(&row[0]);
        for (SizeType k = 1; k < row.Size(); ++k) Texts(&row[k]);
      }
    } else if (what == recording::kAdapter) {
      for (const char* name : {"name", "mac"})
        if (json->HasMember(name)) Texts(&(*json)[name]);
    } else if (what != recording::kBegin) {
      Texts(json);
    }
  }

  // All texts in it. One that is JSON itself is taken apart.
  void Texts(Json* json) {
    if (json->IsString()) {
      Set(json, NewText(std::string(JsonText(*json))));
    } else if (json->IsArray()) {
      for (SizeType i = 0; i < json->Size(); ++i) Texts(&(*json)[i]);
    } else if (json->IsObject()) {
      auto member = json->MemberBegin();
      for (SizeType i = 0; i < json->MemberCount(); ++i, ++member) Texts(&member->value);
    }
  }

  std::string NewText(const std::string& text) {
    if (!text.starts_with('[') && !text.starts_with('{')) return m_Names.Text(text);
    rapidjson::Document inner;
    ParseJson(text, &inner);
    if (inner.HasParseError()) return m_Names.Text(text);
    auto* const outer = std::exchange(m_pAllocator, &inner.GetAllocator());
    Texts(&inner);
    m_pAllocator = outer;
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    inner.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
  }

  const NewNames& m_Names;
  rapidjson::Document::AllocatorType* m_pAllocator = nullptr;
};

// Every name and address of a run, as bytes: those of networks first, then of adapters.
void ForEachName(const Recording& run, auto&& onNetwork, auto&& onAdapter) {
  for (const auto& ap : run.accessPoints) onNetwork(ap.ssid);
  for (const auto& link : run.links) onNetwork(link.ssid);
  for (const auto& list : run.networks) {
    for (const auto& network : list.networks) {
      onNetwork(network.ssid);
      if (network.profile) onNetwork(network.profile->name);
    }
  }
  for (const auto& known : run.known)
    for (const auto& network : known.networks) onNetwork(network.name);
  for (const auto& filters : run.filters)
    for (const auto& row : filters.bySsid) onNetwork(row.first);
  for (const auto& event : run.outside) onNetwork(event.ssid);
  for (const auto& adapter : run.adapters) onAdapter(adapter.name);
}

void ForEachMac(const Recording& run, auto&& onMac) {
  for (const auto& ap : run.accessPoints) onMac(ap.bssid);
  for (const auto& link : run.links)
    if (link.connected) onMac(link.bssid);
  for (const auto& adapter : run.adapters)
    if (const auto mac = MacAt(adapter.mac, 0)) onMac(*mac);
  const auto inText = [&](const std::string& text) {
    for (std::size_t i = 0; i + kMacText <= text.size(); ++i)
      if (const auto mac = MacAt(text, i)) onMac(*mac);
  };
  for (const auto& value : run.values)
    if (const auto* text = std::get_if<std::string>(&value.what)) inText(*text);
  for (const auto& order : run.orders) inText(order.json);
  for (const auto& round : run.rounds) {
    for (const auto& step : round.steps) onMac(step.bssid);
    for (const auto& score : round.scores) onMac(score.first);
  }
}

}  // namespace

std::string Anonymised(const std::vector<RecordingPart>& parts) {
  NewNames names;
  for (const Recording& run : ReadRecording(parts)) {
    ForEachName(
        run, [&](const std::string& name) { names.TellName(name); },
        [&](const std::string& name) { names.TellAdapter(name); });
    ForEachMac(run, [&](const MacAddress& mac) {
      if (!IsZero(mac)) names.TellMac(mac);
    });
  }
  names.Number();
  Rewriter rewriter(names);
  std::string out;
  for (const RecordingPart& part : parts) {
    for (std::string_view text = part.text; !text.empty();) {
      const std::size_t end = std::min(text.find('\n'), text.size());
      const std::string_view line = text.substr(0, end);
      text.remove_prefix(std::min(end + 1, text.size()));
      rapidjson::Document json;
      ParseJson(line, &json);
      if (!line.empty() && !json.HasParseError()) out += rewriter.Line(line);
    }
  }
  return out;
}

std::string FindLeftover(const std::vector<Recording>& original,
                         const std::vector<Recording>& other) {
  std::set<std::string> pieces;
  const auto takePieces = [&](const std::string& name) {
    for (std::size_t i = 0; i + kMacBytes <= name.size(); ++i)
      pieces.insert(name.substr(i, kMacBytes));
  };
  for (const Recording& run : original) {
    ForEachName(run, takePieces, takePieces);
    ForEachMac(run, [&](const MacAddress& mac) {
      if (!IsZero(mac)) pieces.insert(std::string(mac.begin(), mac.end()));
    });
  }
  std::string found;
  const auto search = [&](const std::string& bytes, const char* where) {
    for (std::size_t i = 0; found.empty() && i + kMacBytes <= bytes.size(); ++i)
      if (pieces.contains(bytes.substr(i, kMacBytes))) found = where;
  };
  for (const Recording& run : other) {
    ForEachName(
        run, [&](const std::string& name) { search(name, "the name of a network"); },
        [&](const std::string& name) { search(name, "the name of an adapter"); });
    ForEachMac(run, [&](const MacAddress& mac) {
      search(std::string(mac.begin(), mac.end()), "an address");
    });
    for (const std::string& bytes : run.elementBytes) search(bytes, "the elements");
    for (const auto& value : run.values)
      if (const auto* text = std::get_if<std::string>(&value.what)) search(*text, "a setting");
    for (const auto& order : run.orders) search(order.json, "an order");
  }
  return found;
}

}  // namespace corvane::lab
