// The file of a made world.

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <algorithm>
#include <set>
#include <type_traits>

#include "corvane_lab/made_draft.h"
#include "foundation/format.h"

namespace corvane::lab {

namespace {

using JsonWriter = rapidjson::PrettyWriter<rapidjson::StringBuffer>;
using LineWriter = rapidjson::Writer<rapidjson::StringBuffer>;

constexpr char kKey[] = "open sesame";
constexpr char kIp[] = R"({"unicast": ["10.1.0.57/16"], "gateways": ["10.1.0.1"]})";
constexpr int kPlaces = 2;  // behind the point of a number

template <class Json>
void PutText(Json& json, const char* name, const std::string& text) {
  json.Key(name);
  json.String(text.c_str());
}

template <class Json>
void PutNumber(Json& json, const char* name, std::int64_t number) {
  json.Key(name);
  json.Int64(number);
}

template <class Json>
void PutReal(Json& json, const char* name, double number) {
  json.Key(name);
  json.Double(number);
}

template <class Json>
void PutPlace(Json& json, const char* name, const Point& at) {
  json.Key(name);
  json.StartArray();
  json.Double(at.x);
  json.Double(at.y);
  json.EndArray();
}

// An object on a line of its own: `fill` writes its members.
template <class Fill>
void PutLine(JsonWriter& json, Fill&& fill) {
  rapidjson::StringBuffer buffer;
  LineWriter line(buffer);
  line.SetMaxDecimalPlaces(kPlaces);
  line.StartObject();
  fill(line);
  line.EndObject();
  json.RawValue(buffer.GetString(), buffer.GetSize(), rapidjson::kObjectType);
}

// Arrays of pairs: times in ms with numbers.
template <class Json, class Pairs>
void PutPairs(Json& json, const char* name, const Pairs& pairs) {
  json.Key(name);
  json.StartArray();
  for (const auto& [ms, other] : pairs) {
    json.StartArray();
    json.Uint64(ms);
    if constexpr (std::is_same_v<std::decay_t<decltype(other)>, double>) {
      json.Double(other);
    } else {
      json.Uint64(other);
    }
    json.EndArray();
  }
  json.EndArray();
}

}  // namespace

template <class Json>
void MadeDraft::WriteAp(Json& json, std::size_t number) const {
  const MadeAp& ap = m_Aps[number];
  PutText(json, "ssid", ap.ssid);
  PutText(json, "bssid", Bssid(number));
  PutNumber(json, ap.band == MadeBand::k6 ? "channel6GHz" : "channel", ap.channel);
  PutText(json, "phy", ap.phy);
  PutNumber(json, "widthMHz", ap.widthMHz);
  PutNumber(json, "streams", ap.streams);
  PutText(json, "security", ap.band == MadeBand::k6 && m_Security == "wpa2" ? "wpa3" : m_Security);
  PutText(json, "key", kKey);
  if (m_Domain >= 0 && m_Own[number]) PutNumber(json, "mobilityDomain", m_Domain);
  if (ap.load >= 0) {
    json.Key("load");
    json.StartObject();
    PutNumber(json, "stations", ap.load / 8);
    PutNumber(json, "utilisation", ap.load);
    json.EndObject();
  }
  if (ap.track.empty()) {
    PutPlace(json, "at", ap.at);
    PutReal(json, "txPowerDbm", ap.power);
  } else {
    PutPairs(json, "signal", ap.track);
  }
  if (!ap.alive.empty()) PutPairs(json, "alive", ap.alive);
}

template <class Json>
void MadeDraft::WriteAdapter(Json& json, int number, std::size_t start) const {
  PutText(json, "description", number == 0 ? "Vantor Wi-Fi 6 AX200" : "Kestrel AC1200 USB");
  PutText(json, "connectionName", number == 0 ? "Wi-Fi" : "Wi-Fi 2");
  if (m_b6GHz) {
    json.Key("bands");
    json.StartArray();
    for (const int band : {2, 5, 6}) json.Int(band);
    json.EndArray();
  }
  if (!m_Options.cold && number == 0) PutText(json, "connectedTo", Bssid(start));
  if (!m_Options.roamingDriver) return;
  json.Key("roaming");
  json.StartObject();
  PutNumber(json, "belowDbm", -75);
  PutNumber(json, "marginDb", 8);
  json.EndObject();
}

template <class Json>
void MadeDraft::WriteProfiles(Json& json) const {
  std::set<std::string> own;
  for (std::size_t i = 0; i < m_Aps.size(); ++i) {
    if (m_Own[i]) own.insert(m_Aps[i].ssid);
  }
  json.Key("profiles");
  json.StartArray();
  for (const std::string& ssid : own) {
    PutLine(json, [&](LineWriter& line) {
      PutText(line, "ssid", ssid);
      PutText(line, "security", m_Security);
      PutText(line, "key", kKey);
    });
  }
  json.EndArray();
  json.Key("networks");
  json.StartArray();
  for (const std::string& ssid : own) {
    PutLine(json, [&](LineWriter& line) {
      PutText(line, "name", ssid);
      PutText(line, "ssid", ssid);
      PutText(line, "category", "private");
      line.Key("ip");
      line.RawValue(kIp, sizeof kIp - 1, rapidjson::kObjectType);
    });
  }
  json.EndArray();
}

template <class Json>
void MadeDraft::WriteWay(Json& json) const {
  json.Key("machine");
  json.StartObject();
  json.SetFormatOptions(rapidjson::kFormatSingleLineArray);
  PutPlace(json, "at", m_Start);
  json.SetFormatOptions(rapidjson::kFormatDefault);
  json.Key("walk");
  json.StartArray();
  for (const Leg& leg : m_Legs) {
    PutLine(json, [&](LineWriter& line) {
      PutNumber(line, "from", static_cast<std::int64_t>(leg.fromMs));
      PutPlace(line, "to", leg.to);
      PutReal(line, "speed", leg.speed);
    });
  }
  json.EndArray();
  json.EndObject();
  json.Key("traffic");
  json.StartArray();
  for (const Flow& flow : m_Flows) {
    PutLine(json, [&](LineWriter& line) {
      PutNumber(line, "adapter", flow.adapter);
      PutNumber(line, "from", static_cast<std::int64_t>(flow.fromMs));
      PutNumber(line, "to", static_cast<std::int64_t>(flow.toMs));
      PutReal(line, "inMbps", flow.in);
      PutReal(line, "outMbps", flow.out);
    });
  }
  json.EndArray();
}

template <class Json>
void MadeDraft::WriteTimeline(Json& json) {
  for (int i = 0; i < Adapters(); ++i) {
    At(8000,
       FormatA(R"("do": "registry", "adapter": %i, "name": "PassiveSuggestMode", "dword": 0)", i));
  }
  std::ranges::stable_sort(m_Events, {}, &Event::ms);
  json.Key("timeline");
  json.StartArray();
  for (const Event& event : m_Events) {
    const std::string text = FormatA(R"({"at": %llu, %s})", event.ms, event.members);
    json.RawValue(text.c_str(), text.size(), rapidjson::kObjectType);
  }
  json.EndArray();
}

std::string MadeDraft::Text() {
  rapidjson::StringBuffer buffer;
  JsonWriter json(buffer);
  json.SetIndent(' ', 1);
  json.SetMaxDecimalPlaces(kPlaces);
  json.StartObject();
  PutText(json, "name", FormatA("%s-%llu", m_Kind, m_Seed));
  PutText(json, "description", m_Description);
  PutNumber(json, "duration", static_cast<std::int64_t>(m_DurationMs));
  const std::size_t start = StartAp();
  json.Key("adapters");
  json.StartArray();
  for (int i = 0; i < Adapters(); ++i)
    PutLine(json, [&](LineWriter& line) { WriteAdapter(line, i, start); });
  json.EndArray();
  json.Key("accessPoints");
  json.StartArray();
  for (std::size_t i = 0; i < m_Aps.size(); ++i)
    PutLine(json, [&](LineWriter& line) { WriteAp(line, i); });
  json.EndArray();
  WriteProfiles(json);
  json.Key("air");
  json.StartObject();
  PutReal(json, "shadowingDb", m_ShadowingDb);
  PutReal(json, "pathLossExponent", m_Exponent);
  json.EndObject();
  WriteWay(json);
  WriteTimeline(json);
  json.EndObject();
  return std::string(buffer.GetString()) + "\n";
}

}  // namespace corvane::lab
