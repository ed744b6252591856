#include "record/recording.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>
#include <tuple>
#include <type_traits>
#include <utility>

#include "foundation/text.h"
#include "record/recording_form.h"
#include "record/recording_items.h"
#include "record/recording_writer.h"
#include "store/base64_text.h"
#include "store/json_text.h"

namespace corvane {

namespace {

using namespace recording;

constexpr std::uint64_t kMostMs = 366ull * 24 * 3600 * 1000;
// A recording that begins so soon after the start shows the start; before another one there is time
// for one.
constexpr std::uint64_t kStartMs = 60'000, kLeadMs = 3000;
constexpr std::size_t kMostElementBytes = 16 * 1024;

class Reader {
 public:
  void Read(const RecordingPart& part) {
    std::string broken;  // what the line before was, had it to be whole
    std::string_view text = part.text;
    for (std::uint64_t number = 1; !text.empty(); ++number) {
      const std::size_t end = std::min(text.find('\n'), text.size());
      const std::string_view line = text.substr(0, end);
      text.remove_prefix(std::min(end + 1, text.size()));
      if (line.empty()) continue;
      rapidjson::Document json;
      ParseJson(line, &json);
      if (!broken.empty() && !IsBegin(json)) throw std::runtime_error(broken);
      if (!broken.empty()) NoteUnfinished();
      const std::string place = part.name + ":" + std::to_string(number) + ": ";
      broken = json.HasParseError() ? place + "the line is no JSON" : "";
      if (!broken.empty()) continue;
      try {
        Take(json);
      } catch (const Fault& fault) {
        throw std::runtime_error(place + fault.what());
      }
    }
    if (!broken.empty()) NoteUnfinished();
  }

  std::vector<Recording> Runs() { return std::move(m_Runs); }

 private:
  struct Listed {
    std::vector<std::size_t> elements;  // of m_Elements
  };
  using Taker = void (Reader::*)(const Json& what);

  static bool IsBegin(const Json& json) {
    return json.IsObject() && json.FindMember(kBegin.data()) != json.MemberEnd();
  }

  Recording& Run() { return m_Runs.back(); }
  const Recording& Run() const { return m_Runs.back(); }
  void NoteUnfinished() {
    if (!m_Runs.empty()) ++Run().unfinished;
  }

  void Take(const Json& json) {
    static constexpr std::array<std::pair<std::string_view, Taker>, 18> kTakers = {{
        {kBegin, &Reader::TakeBegin},
        {kAdapter, &Reader::TakeAdapter},
        {kValues, &Reader::TakeValues},
        {kElement, &Reader::TakeElement},
        {kAccessPoint, &Reader::TakeAccessPoint},
        {kHeard, &Reader::TakeHeard},
        {kNetworks, &Reader::TakeNetworks},
        {kKnown, &Reader::TakeKnown},
        {kFilters, &Reader::TakeFilters},
        {kLink, &Reader::TakeLink},
        {kTraffic, &Reader::TakeTraffic},
        {kMachine, &Reader::TakeMachine},
        {kMains, &Reader::TakeMains},
        {kRound, &Reader::TakeRound},
        {kTook, &Reader::TakeTook},
        {kOutside, &Reader::TakeOutside},
        {kOrder, &Reader::TakeOrder},
        {kLost, &Reader::TakeLost},
    }};
    if (!json.IsObject()) Fail("the line is no object");
    const auto time = json.FindMember("t");
    if (time == json.MemberEnd() || !time->value.IsUint64() || time->value.GetUint64() > kMostMs)
      Fail("\"t\" is missing, or no time in ms");
    m_Time = time->value.GetUint64();
    if (m_Runs.empty() && !IsBegin(json)) Fail("a recording starts with \"begin\"");
    for (auto member = json.MemberBegin(); member != json.MemberEnd(); ++member) {
      const std::string_view name = JsonText(member->name);
      if (name == "t") continue;
      const auto taker = std::ranges::find(kTakers, name, &decltype(kTakers)::value_type::first);
      if (taker == kTakers.end()) Fail("\"" + std::string(name) + "\" is nothing that is known");
      (this->*taker->second)(member->value);
    }
    Run().lengthMs = std::max(Run().lengthMs, Ms());
  }

  std::uint64_t Ms() const { return m_Time - std::min(m_Time, m_First) + Run().beginMs; }

  void TakeBegin(const Json& begin) {
    if (!begin.IsObject()) Fail("\"begin\" is no object");
    const auto form = begin.FindMember("form");
    if (form == begin.MemberEnd() || !form->value.IsInt() || form->value.GetInt() != kForm)
      Fail("the recording is of another form than " + std::to_string(kForm));
    const bool goesOn = FlagOf(begin, "goes_on");
    std::string utc = TextOf(begin, "utc");
    const auto up = begin.FindMember("up");
    if (up == begin.MemberEnd() || !up->value.IsUint64())
      Fail("\"up\" is missing, or no time in ms");
    if (!goesOn || m_Runs.empty()) {
      m_Runs.emplace_back();
      Run().utc = std::move(utc);
      Run().goesOn = goesOn;
      const std::uint64_t upMs = up->value.GetUint64();
      Run().beginMs = upMs <= kStartMs ? upMs : kLeadMs;
      m_First = m_Time;
      m_Bodies.clear();
      m_Of.clear();
    }
    m_Elements.clear();
    m_Numbers.clear();
    m_Listed.clear();
    m_Scores.clear();
  }

  void TakeAdapter(const Json& json) {
    if (!json.IsObject()) Fail("\"adapter\" is no object");
    const auto index = json.FindMember("a");
    if (index == json.MemberEnd() || !index->value.IsInt() || index->value.GetInt() < 0 ||
        index->value.GetInt() > kMostAdapter)
      Fail("an adapter has no number");
    Recording::Adapter adapter{index->value.GetInt(), TextOf(json, "guid"),
                               TextOf(json, "name"),  TextOf(json, "description"),
                               TextOf(json, "mac"),   TextOf(json, "class")};
    const auto at = std::ranges::find(Run().adapters, adapter.index, &Recording::Adapter::index);
    if (at == Run().adapters.end()) {
      Run().adapters.push_back(std::move(adapter));
    } else {
      *at = std::move(adapter);
    }
  }

  void TakeValues(const Json& json) {
    Items items(json);
    const int key = items.Num<int>(kHomeValues, kMostAdapter);
    const Json& values = items.Next();
    items.End();
    if (!values.IsObject()) Fail("values are no object");
    for (auto value = values.MemberBegin(); value != values.MemberEnd(); ++value) {
      Recording::Value taken{Ms(), key, std::string(JsonText(value->name)), 0u};
      if (value->value.IsUint()) {
        taken.what = value->value.GetUint();
      } else if (value->value.IsString()) {
        taken.what = std::string(JsonText(value->value));
      } else {
        Fail("a value is neither a number nor a text");
      }
      Run().values.push_back(std::move(taken));
    }
  }

  void TakeElement(const Json& json) {
    Items items(json);
    if (items.Num<std::size_t>() != m_Elements.size()) Fail("an element has not the next number");
    const std::string text = items.Text();
    items.End();
    m_Elements.push_back(Base64Decode(text));
    if (text.empty() || Base64Encode(m_Elements.back()) != text)
      Fail("an element is not in base64");
  }

  std::size_t ElementNumber(Items* items) {
    const auto number = items->Num<std::size_t>();
    if (number >= m_Elements.size()) Fail("an element has not been told");
    return number;
  }

  std::vector<std::size_t> ElementNumbers(Items items) {
    std::vector<std::size_t> numbers;
    while (!items.AtEnd()) numbers.push_back(ElementNumber(&items));
    return numbers;
  }

  std::size_t BytesOf(const std::vector<std::size_t>& elements) {
    std::string bytes;
    for (const std::size_t number : elements) {
      bytes += m_Elements[number];
      if (bytes.size() > kMostElementBytes) Fail("an access point has too many elements");
    }
    const auto [at, isNew] = m_Bodies.try_emplace(std::move(bytes), Run().elementBytes.size());
    if (isNew) Run().elementBytes.push_back(at->first);
    return at->second;
  }

  void TakeAccessPoint(const Json& json) {
    Items items(json);
    if (items.Num<std::size_t>() != m_Numbers.size())
      Fail("an access point has not the next number");
    Recording::AccessPoint ap;
    ap.adapter = items.Adapter();
    ap.bssid = items.Mac();
    ap.ssid = items.Hex();
    if (ap.ssid.size() > kLongestSsid) Fail("an SSID is too long");
    ap.frequencyKhz = items.Num<std::uint32_t>();
    ap.phy = items.Num<std::int32_t>();
    ap.type = items.Num<std::int32_t>();
    ap.capability = items.Num<std::uint16_t>();
    ap.beaconPeriod = items.Num<std::uint16_t>();
    Listed listed{ElementNumbers(items.Array())};
    items.End();
    // The same one as in the part before, if it was heard there.
    auto key = std::tuple(ap.adapter, ap.bssid, ap.ssid, ap.frequencyKhz, ap.phy, ap.type,
                          ap.capability, ap.beaconPeriod);
    const auto [at, isNew] = m_Of.try_emplace(std::move(key), Run().accessPoints.size());
    if (isNew) Run().accessPoints.push_back(std::move(ap));
    m_Numbers.push_back(at->second);
    m_Listed.push_back(std::move(listed));
  }

  std::size_t AccessPointNumber(Items* items) {
    const auto number = items->Num<std::size_t>();
    if (number >= m_Numbers.size()) Fail("an access point has not been told");
    return number;
  }

  void TakeHeard(const Json& json) {
    Items items(json);
    Recording::Reading reading{Ms(), items.Adapter(), items.Flag(), {}, {}};
    for (Items heard = items.Array(); !heard.AtEnd();) {
      Items row = heard.Array();
      const std::size_t number = AccessPointNumber(&row);
      constexpr std::int32_t kWeakest = -1000, kStrongest = 1000;
      constexpr std::uint32_t kBest = 100;
      const auto rssi = row.Num<std::int32_t>(kWeakest, kStrongest);
      const auto quality = row.Num<std::uint32_t>(0, kBest);
      if (!row.AtEnd()) TakeSwaps(&row, &m_Listed[number].elements);
      row.End();
      reading.heard.push_back(
          {m_Numbers[number], rssi, quality, BytesOf(m_Listed[number].elements)});
    }
    for (Items gone = items.Array(); !gone.AtEnd();)
      reading.gone.push_back(m_Numbers[AccessPointNumber(&gone)]);
    items.End();
    Run().readings.push_back(std::move(reading));
  }

  // Pairs of a place and the element that stands there now; or no pairs, and all elements.
  void TakeSwaps(Items* row, std::vector<std::size_t>* elements) {
    for (Items swaps = row->Array(); !swaps.AtEnd();) {
      const auto place = swaps.Num<std::size_t>();
      if (place >= elements->size()) Fail("an access point has no such element");
      (*elements)[place] = ElementNumber(&swaps);
    }
    if (!row->AtEnd()) *elements = ElementNumbers(row->Array());
  }

  void TakeNetworks(const Json& json) {
    Items items(json);
    Recording::Networks networks{Ms(), items.Adapter(), {}};
    for (Items rows = items.Array(); !rows.AtEnd();) {
      Items row = rows.Array();
      Recording::Network network;
      network.ssid = row.Hex();
      if (network.ssid.size() > kLongestSsid) Fail("an SSID is too long");
      network.secured = row.Flag();
      network.auth = row.Num<std::int32_t>();
      network.cipher = row.Num<std::int32_t>();
      network.refusal = row.Num<std::uint32_t>();
      if (!row.AtEnd()) {
        network.profile = Recording::Profile();
        network.profile->name = row.Text();
        network.profile->autoConnect = row.Flag();
        network.profile->nonBroadcast = row.Flag();
        network.profile->grantedAccess = row.Num<std::uint32_t>();
      }
      row.End();
      networks.networks.push_back(std::move(network));
    }
    items.End();
    Run().networks.push_back(std::move(networks));
  }

  void TakeKnown(const Json& json) {
    Recording::Known known{Ms(), {}};
    for (Items items(json); !items.AtEnd();) {
      Items row = items.Array();
      Recording::KnownNetwork network;
      network.name = row.Text();
      network.category = row.Num<std::int32_t>();
      network.connectivity = row.Num<std::uint32_t>();
      row.End();
      known.networks.push_back(std::move(network));
    }
    Run().known.push_back(std::move(known));
  }

  void TakeFilters(const Json& json) {
    Recording::Filters filters{Ms(), {}};
    for (Items items(json); !items.AtEnd();) {
      Items row = items.Array();
      std::string ssid = row.Text();
      filters.bySsid[std::move(ssid)] = row.Num<std::uint32_t>();
      row.End();
    }
    Run().filters.push_back(std::move(filters));
  }

  void TakeLink(const Json& json) {
    Items items(json);
    Recording::Link link;
    link.ms = Ms();
    link.adapter = items.Adapter();
    link.connected = !items.AtEnd();
    if (link.connected) {
      link.bssid = items.Mac();
      link.ssid = items.Hex();
      link.quality = items.Num<std::uint32_t>();
      link.rxKbps = items.Num<std::uint32_t>();
      link.txKbps = items.Num<std::uint32_t>();
      link.own = items.Flag();
    }
    items.End();
    Run().links.push_back(std::move(link));
  }

  void TakeTraffic(const Json& json) {
    Items items(json);
    const int adapter = items.Adapter();
    const Json& mbps = items.Next();
    items.End();
    if (!mbps.IsNumber() || mbps.GetDouble() < 0.0) Fail("a rate is no number, or below 0");
    Run().traffic.push_back({Ms(), adapter, mbps.GetDouble()});
  }

  void TakeMachine(const Json& json) {
    if (!json.IsObject()) Fail("\"machine\" is no object");
    Run().machine.push_back({Ms(), FlagOf(json, "vpn"), FlagOf(json, "audio")});
  }

  void TakeMains(const Json& json) {
    if (!json.IsBool()) Fail("\"mains\" is neither true nor false");
    Run().mains.push_back({Ms(), json.GetBool()});
  }

  void TakeRound(const Json& json) {
    Items items(json);
    Recording::Round round;
    round.ms = Ms();
    round.adapter = items.Adapter();
    round.tookMs = items.Num<std::uint64_t>();
    for (Items steps = items.Array(); !steps.AtEnd();) {
      Items step = steps.Array();
      Recording::Step taken{step.Text(), {}};
      if (!step.AtEnd()) taken.bssid = step.Mac();
      step.End();
      round.steps.push_back(std::move(taken));
    }
    for (Items scores = items.Array(); !scores.AtEnd();) {
      Items score = scores.Array();
      const MacAddress bssid = score.Mac();
      if (score.AtEnd()) {
        m_Scores[round.adapter].erase(bssid);
      } else {
        m_Scores[round.adapter][bssid] = score.Num<std::int32_t>();
      }
      score.End();
    }
    round.weighed = items.Flag();
    items.End();
    round.scores = m_Scores[round.adapter];
    Run().rounds.push_back(std::move(round));
  }

  void TakeTook(const Json& json) {
    Items items(json);
    Recording::Took took{Ms(), items.Adapter(), {}, 0};
    const auto word = std::ranges::find(kOperationWords, items.Text());
    if (word == kOperationWords.end()) Fail("that is no operation");
    took.kind = static_cast<WlanOperation>(word - kOperationWords.begin());
    took.tookMs = items.Num<std::uint32_t>();
    items.End();
    Run().took.push_back(took);
  }

  void TakeOutside(const Json& json) {
    Items items(json);
    Recording::Outside outside{Ms(), items.Adapter(), {}, {}};
    const auto word = std::ranges::find(kOutsideWords, items.Text());
    if (word == kOutsideWords.end()) Fail("that is nothing that others do");
    outside.event = static_cast<OutsideEvent>(word - kOutsideWords.begin());
    if (!items.AtEnd()) outside.ssid = items.Text();
    items.End();
    Run().outside.push_back(std::move(outside));
  }

  void TakeOrder(const Json& json) {
    if (!json.IsObject()) Fail("\"order\" is no object");
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    json.Accept(writer);
    Run().orders.push_back({Ms(), {buffer.GetString(), buffer.GetSize()}});
  }

  void TakeLost(const Json& json) {
    if (!json.IsUint64()) Fail("\"lost\" is no number");
    Run().lost += json.GetUint64();
  }

  static constexpr std::size_t kLongestSsid = 32;
  using Identity = std::tuple<int, MacAddress, std::string, std::uint32_t, std::int32_t,
                              std::int32_t, std::uint16_t, std::uint16_t>;

  std::uint64_t m_Time = 0, m_First = 0;  // of this line, and of the run's first one
  std::vector<Recording> m_Runs;
  // Of the run.
  std::map<std::string, std::size_t> m_Bodies;  // position in elementBytes
  std::map<Identity, std::size_t> m_Of;         // position in accessPoints
  // Of the part of it that a file holds, by the numbers there.
  std::vector<std::string> m_Elements;
  std::vector<std::size_t> m_Numbers;  // position in accessPoints
  std::vector<Listed> m_Listed;
  std::map<int, std::map<MacAddress, std::int32_t>> m_Scores;  // by adapter
};

}  // namespace

std::vector<Recording> ReadRecording(std::span<const RecordingPart> parts) {
  Reader reader;
  for (const RecordingPart& part : parts) reader.Read(part);
  std::vector<Recording> runs = reader.Runs();
  if (runs.empty()) {
    const std::string name = parts.empty() ? "no file" : parts.back().name;
    throw std::runtime_error(name + ": there is no recording in it");
  }
  return runs;
}

}  // namespace corvane
