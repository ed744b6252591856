#include "record/recording_writer.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <utility>

#include "foundation/format.h"
#include "policy/round_watch.h"
#include "record/recording_form.h"
#include "store/base64_text.h"
#include "store/json_text.h"

namespace corvane {

namespace {

using namespace platform;

class Json {
 public:
  Json& Open() { return m_Json.StartArray(), *this; }
  Json& Close() { return m_Json.EndArray(), *this; }
  Json& OpenObject() { return m_Json.StartObject(), *this; }
  Json& CloseObject() { return m_Json.EndObject(), *this; }
  Json& Name(std::string_view name) {
    return m_Json.Key(name.data(), static_cast<rapidjson::SizeType>(name.size())), *this;
  }
  Json& Text(std::string_view text) {
    return m_Json.String(text.data(), static_cast<rapidjson::SizeType>(text.size())), *this;
  }
  template <class Number>
  Json& Num(Number number) {
    if constexpr (std::is_signed_v<Number>) {
      m_Json.Int64(number);
    } else {
      m_Json.Uint64(number);
    }
    return *this;
  }
  Json& Flag(bool flag) { return m_Json.Bool(flag), *this; }
  Json& Raw(std::string_view json) {
    return m_Json.RawValue(json.data(), json.size(), rapidjson::kObjectType), *this;
  }
  std::string Done() const { return {m_Buffer.GetString(), m_Buffer.GetSize()}; }

 private:
  rapidjson::StringBuffer m_Buffer;
  rapidjson::Writer<rapidjson::StringBuffer> m_Json{m_Buffer};
};

// The fixed part of a list of the platform; null when the bytes are too few for what it says.
template <class List>
const List* ListIn(const std::vector<std::uint8_t>& bytes, std::size_t firstAt,
                   std::size_t recordSize) {
  if (bytes.size() < firstAt) return nullptr;
  const auto* list = reinterpret_cast<const List*>(bytes.data());
  return list->dwNumberOfItems <= (bytes.size() - firstAt) / recordSize ? list : nullptr;
}

std::string_view ElementsOf(const std::vector<std::uint8_t>& list, std::size_t recordAt,
                            const WLAN_BSS_ENTRY& bss) {
  const std::uint64_t first = std::uint64_t{recordAt} + bss.ulIeOffset;
  if (first + bss.ulIeSize > list.size()) return {};
  return {reinterpret_cast<const char*>(list.data()) + first, bss.ulIeSize};
}

}  // namespace

std::size_t SizeOf(const AirFact& fact) {
  const auto size = [](const auto& what) -> std::size_t {
    using What = std::remove_cvref_t<decltype(what)>;
    if constexpr (std::is_same_v<What, ListFacts>) {
      return what.networks.size() + what.entries.size();
    } else if constexpr (std::is_same_v<What, RoundFacts>) {
      return what.steps.size() * sizeof(RoundFacts::Step) +
             what.scores.size() * sizeof(RoundFacts::Score);
    } else if constexpr (std::is_same_v<What, OrderFacts>) {
      return what.text.size();
    } else if constexpr (std::is_same_v<What, OutsideFacts>) {
      return what.ssid.size();
    } else {
      return 0;
    }
  };
  return sizeof fact + std::visit(size, fact.what);
}

std::string RecordingWriter::Begin(std::uint64_t tick, std::uint64_t upMs, std::string_view utc,
                                   bool goesOn) {
  const std::uint64_t start = goesOn ? m_Start : tick;
  *this = RecordingWriter();
  m_Start = start;
  m_Now = tick - m_Start;
  Json json;
  json.OpenObject().Name("form").Num(recording::kForm).Name("utc").Text(utc);
  json.Name("up").Num(upMs);
  json.Name("goes_on").Flag(goesOn).CloseObject();
  Line(recording::kBegin, json.Done());
  return std::exchange(m_Lines, {});
}

std::string RecordingWriter::Lines(const AirFact& fact) {
  m_Now = std::max(fact.tick, m_Start) - m_Start;
  std::visit([this](const auto& what) { Take(what); }, fact.what);
  return std::exchange(m_Lines, {});
}

std::string RecordingWriter::Values(std::uint64_t tick, int adapter, const RecordedValues& values) {
  m_Now = std::max(tick, m_Start) - m_Start;
  RecordedValues& told = m_Values[adapter];
  Json json;
  json.Open().Num(adapter).OpenObject();
  bool news = false;
  for (const auto& [name, value] : values) {
    const auto at = told.find(name);
    if (at != told.end() && at->second == value) continue;
    json.Name(name).Raw(value);
    news = true;
  }
  if (!news) return {};
  for (const auto& [name, value] : values) told[name] = value;
  Line(recording::kValues, json.CloseObject().Close().Done());
  return std::exchange(m_Lines, {});
}

std::string RecordingWriter::Power(std::uint64_t tick, bool mains) {
  if (m_Mains == mains) return {};
  m_Mains = mains;
  m_Now = std::max(tick, m_Start) - m_Start;
  Line(recording::kMains, mains ? "true" : "false");
  return std::exchange(m_Lines, {});
}

std::string RecordingWriter::Lost(std::uint64_t tick, std::uint64_t facts) {
  m_Now = std::max(tick, m_Start) - m_Start;
  Line(recording::kLost, std::to_string(facts));
  return std::exchange(m_Lines, {});
}

void RecordingWriter::Line(std::string_view name, std::string_view json) {
  m_Lines += "{\"t\":" + std::to_string(m_Now) + ",\"";
  m_Lines.append(name).append("\":").append(json).append("}\n");
}

void RecordingWriter::Take(const ListFacts& facts) {
  TakeKnown(facts);
  TakeNetworks(facts);
  TakeEntries(facts);
}

void RecordingWriter::TakeKnown(const ListFacts& facts) {
  if (facts.known) {
    Json json;
    json.Open();
    for (const auto& [name, network] : *facts.known)
      json.Open().Text(WideToUtf8(name)).Num(network.category).Num(network.connectivity).Close();
    if (std::string known = json.Close().Done(); known != m_Known) {
      Line(recording::kKnown, known);
      m_Known = std::move(known);
    }
  }
  if (facts.filters) {
    Json json;
    json.Open();
    for (const auto& [ssid, filter] : *facts.filters)
      json.Open().Text(WideToUtf8(ssid)).Num(filter).Close();
    if (std::string filters = json.Close().Done(); filters != m_Filters) {
      Line(recording::kFilters, filters);
      m_Filters = std::move(filters);
    }
  }
}

void RecordingWriter::TakeNetworks(const ListFacts& facts) {
  constexpr std::size_t kFirst = offsetof(WLAN_AVAILABLE_NETWORK_LIST, Network);
  const auto* list =
      ListIn<WLAN_AVAILABLE_NETWORK_LIST>(facts.networks, kFirst, sizeof(WLAN_AVAILABLE_NETWORK));
  if (!list) return;
  const WLAN_AVAILABLE_NETWORK* const records = list->Network;
  std::size_t named = 0;
  for (DWORD i = 0; i < list->dwNumberOfItems; ++i) named += records[i].dot11Ssid.uSSIDLength != 0;
  const bool paired = named == facts.profiles.size();
  Json json;
  json.Open().Num(facts.adapter).Open();
  std::size_t place = 0;
  for (DWORD i = 0; i < list->dwNumberOfItems; ++i) {
    const WLAN_AVAILABLE_NETWORK& record = records[i];
    if (record.dot11Ssid.uSSIDLength == 0) continue;
    const WStringView name(record.strProfileName);
    json.Open().Text(recording::ToHex(SsidView(record.dot11Ssid)));
    json.Flag(record.bSecurityEnabled != 0).Num(record.dot11DefaultAuthAlgorithm);
    json.Num(record.dot11DefaultCipherAlgorithm).Num(record.wlanNotConnectableReason);
    if (const auto* profile = paired ? &facts.profiles[place] : nullptr;
        profile && profile->isThere) {
      json.Text(WideToUtf8(name)).Flag(profile->autoConnect).Flag(profile->nonBroadcast);
      json.Num(profile->grantedAccess);
    }
    json.Close();
    ++place;
  }
  std::string networks = json.Close().Close().Done();
  Told& told = m_Told[facts.adapter];
  if (told.networks == networks) return;
  Line(recording::kNetworks, networks);
  told.networks = std::move(networks);
}

void RecordingWriter::TakeEntries(const ListFacts& facts) {
  constexpr std::size_t kFirst = offsetof(WLAN_BSS_LIST, wlanBssEntries);
  const auto* list = ListIn<WLAN_BSS_LIST>(facts.entries, kFirst, sizeof(WLAN_BSS_ENTRY));
  if (!list) return;
  const std::size_t knownBefore = m_Heard.size();
  std::vector<bool> listed(knownBefore);
  Json json;
  json.Open().Num(facts.adapter).Flag(facts.scanned).Open();
  bool news = facts.scanned;
  const WLAN_BSS_ENTRY* const records = list->wlanBssEntries;
  for (DWORD i = 0; i < list->dwNumberOfItems; ++i) {
    const WLAN_BSS_ENTRY& bss = records[i];
    const std::string_view bytes =
        ElementsOf(facts.entries, kFirst + i * sizeof(WLAN_BSS_ENTRY), bss);
    const int number = NumberOf(bss, facts.adapter, bytes);
    if (static_cast<std::size_t>(number) < knownBefore)
      listed[static_cast<std::size_t>(number)] = true;
    Heard& heard = m_Heard[static_cast<std::size_t>(number)];
    const bool same = heard.listed && heard.stamp == bss.ullTimestamp && heard.rssi == bss.lRssi &&
                      heard.quality == bss.uLinkQuality && heard.bytes == bytes;
    if (same) continue;
    news = true;
    json.Open().Num(number).Num(bss.lRssi).Num(bss.uLinkQuality);
    if (heard.bytes != bytes) {
      const std::vector<int> elements = ElementNumbers(bytes);
      json.Open();
      if (elements.size() == heard.elements.size()) {
        for (std::size_t k = 0; k < elements.size(); ++k)
          if (elements[k] != heard.elements[k]) json.Num(k).Num(elements[k]);
        json.Close();
      } else {
        json.Close().Open();
        for (const int element : elements) json.Num(element);
        json.Close();
      }
      heard.elements = elements;
      heard.bytes = bytes;
    }
    json.Close();
    heard.stamp = bss.ullTimestamp;
    heard.rssi = bss.lRssi;
    heard.quality = bss.uLinkQuality;
    heard.listed = true;
  }
  json.Close().Open();
  for (std::size_t n = 0; n < knownBefore; ++n) {
    if (m_Heard[n].adapter != facts.adapter || !m_Heard[n].listed || listed[n]) continue;
    m_Heard[n].listed = false;
    json.Num(n);
    news = true;
  }
  if (news) Line(recording::kHeard, json.Close().Close().Done());
}

int RecordingWriter::NumberOf(const WLAN_BSS_ENTRY& bss, int adapter, std::string_view bytes) {
  Identity identity(adapter, ToMac(bss.dot11Bssid), SsidBytes(bss.dot11Ssid),
                    bss.ulChCenterFrequency, bss.dot11BssPhyType, bss.dot11BssType,
                    bss.usCapabilityInformation, bss.usBeaconPeriod);
  const auto [at, isNew] = m_Numbers.try_emplace(std::move(identity), 0);
  if (!isNew) return at->second;
  at->second = static_cast<int>(m_Heard.size());
  Heard heard;
  heard.adapter = adapter;
  heard.bytes = bytes;
  heard.elements = ElementNumbers(bytes);
  Json json;
  json.Open().Num(at->second).Num(adapter).Text(MacTextA(ToMac(bss.dot11Bssid)));
  json.Text(recording::ToHex(SsidView(bss.dot11Ssid))).Num(bss.ulChCenterFrequency);
  json.Num(bss.dot11BssPhyType).Num(bss.dot11BssType).Num(bss.usCapabilityInformation);
  json.Num(bss.usBeaconPeriod).Open();
  for (const int element : heard.elements) json.Num(element);
  Line(recording::kAccessPoint, json.Close().Close().Done());
  m_Heard.push_back(std::move(heard));
  return at->second;
}

// Each element by itself, header included; bytes that are no whole element are the last one.
std::vector<int> RecordingWriter::ElementNumbers(std::string_view bytes) {
  constexpr std::size_t kHeader = 2;
  std::vector<int> numbers;
  while (!bytes.empty()) {
    std::size_t size = bytes.size();
    if (size >= kHeader) size = std::min(size, kHeader + static_cast<std::uint8_t>(bytes[1]));
    const std::string_view element = bytes.substr(0, size);
    bytes.remove_prefix(size);
    auto at = m_Elements.find(element);
    if (at == m_Elements.end()) {
      at = m_Elements.emplace(element, static_cast<int>(m_Elements.size())).first;
      Json json;
      Line(recording::kElement,
           json.Open().Num(at->second).Text(Base64Encode(element)).Close().Done());
    }
    numbers.push_back(at->second);
  }
  return numbers;
}

void RecordingWriter::Take(const RoundFacts& facts) {
  const RecordedAdapter& adapter = facts.adapter;
  Told& told = m_Told[adapter.adapter];
  if (told.adapter != adapter) {
    Json json;
    json.OpenObject().Name("a").Num(adapter.adapter).Name("guid").Text(adapter.guid);
    json.Name("name").Text(adapter.name).Name("description").Text(adapter.description);
    json.Name("mac").Text(adapter.mac).Name("class").Text(adapter.phyClass).CloseObject();
    Line(recording::kAdapter, json.Done());
    told.adapter = adapter;
  }
  TakeMachine(facts);
  if (told.link != facts.link) {
    Json json;
    json.Open().Num(adapter.adapter);
    if (facts.link) {
      json.Text(MacTextA(facts.link->bssid)).Text(recording::ToHex(facts.link->ssid));
      json.Num(facts.link->quality).Num(facts.link->rxKbps).Num(facts.link->txKbps);
      json.Flag(facts.link->own);
    }
    Line(recording::kLink, json.Close().Done());
    told.link = facts.link;
  }
  if (std::string traffic = FormatA("[%i,%0.3lf]", adapter.adapter, facts.mbps);
      told.traffic != traffic) {
    Line(recording::kTraffic, traffic);
    told.traffic = std::move(traffic);
  }
  Json json;
  json.Open().Num(adapter.adapter).Num(facts.ms).Open();
  for (const RoundFacts::Step& step : facts.steps) {
    json.Open().Text(RoundStepName(step.step));
    if (!IsZero(step.bssid)) json.Text(MacTextA(step.bssid));
    json.Close();
  }
  json.Close().Open();
  std::map<MacAddress, std::int32_t> scores;
  for (const RoundFacts::Score& score : facts.scores) {
    scores[score.bssid] = score.score;
    const auto at = told.scores.find(score.bssid);
    if (at == told.scores.end() || at->second != score.score)
      json.Open().Text(MacTextA(score.bssid)).Num(score.score).Close();
  }
  if (!scores.empty()) {
    for (const auto& [bssid, score] : told.scores)
      if (!scores.contains(bssid)) json.Open().Text(MacTextA(bssid)).Close();
    told.scores = std::move(scores);
  }
  json.Close().Flag(!facts.scores.empty());
  Line(recording::kRound, json.Close().Done());
}

void RecordingWriter::TakeMachine(const RoundFacts& facts) {
  Json json;
  json.OpenObject().Name("vpn").Flag(facts.vpn).Name("audio").Flag(facts.realTimeAudio);
  std::string machine = json.CloseObject().Done();
  if (machine == m_Machine) return;
  Line(recording::kMachine, machine);
  m_Machine = std::move(machine);
}

void RecordingWriter::Take(const TookFacts& facts) {
  Json json;
  json.Open().Num(facts.adapter);
  json.Text(recording::kOperationWords[static_cast<std::size_t>(facts.kind)]).Num(facts.ms);
  Line(recording::kTook, json.Close().Done());
}

void RecordingWriter::Take(const OutsideFacts& facts) {
  Json json;
  json.Open().Num(facts.adapter);
  json.Text(recording::kOutsideWords[static_cast<std::size_t>(facts.event)]);
  if (!facts.ssid.empty()) json.Text(facts.ssid);
  Line(recording::kOutside, json.Close().Done());
}

// Without the token, and without what holds the key of a network or a folder of the user.
void RecordingWriter::Take(const OrderFacts& facts) {
  rapidjson::Document order;
  ParseJson(facts.text, &order);
  if (order.HasParseError() || !order.IsObject()) return;
  for (const char* secret : {"art", "profile", "path"}) order.RemoveMember(secret);
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> json(buffer);
  order.Accept(json);
  Line(recording::kOrder, {buffer.GetString(), buffer.GetSize()});
}

}  // namespace corvane
