// The JSON of a day, as the page's script reads it. Times are whole tenths of a second, each
// counted from the one before, so that a day is short.

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cmath>

#include "corvane_lab/day_record.h"
#include "foundation/text.h"

namespace corvane::lab {

namespace {

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

constexpr std::uint64_t kTickMs = 100;
constexpr double kKbpsOfMbps = 1000.0;

void Member(JsonWriter& json, const char* name, const std::string& text) {
  json.Key(name);
  json.String(text.c_str(), static_cast<rapidjson::SizeType>(text.size()));
}

void Member(JsonWriter& json, const char* name, std::int64_t number) {
  json.Key(name);
  json.Int64(number);
}

// One array of numbers: what `value` gives for each item.
template <class Items, class Value>
void Column(JsonWriter& json, const char* name, const Items& items, Value value) {
  json.Key(name);
  json.StartArray();
  for (const auto& item : items) json.Int64(static_cast<std::int64_t>(value(item)));
  json.EndArray();
}

template <class Items, class Time>
void Times(JsonWriter& json, const char* name, const Items& items, Time time) {
  std::uint64_t last = 0;
  Column(json, name, items, [&](const auto& item) {
    const std::uint64_t now = time(item) / kTickMs, step = now - last;
    last = now;
    return step;
  });
}

void WriteSeries(JsonWriter& json, int accessPoint, const DaySeries& series) {
  json.StartObject();
  Member(json, "ap", std::int64_t{accessPoint});
  const auto& points = series.Points();
  Times(json, "t", points, [](const auto& p) { return p.ms; });
  Column(json, "score", points, [](const auto& p) { return p.score; });
  Column(json, "quality", points, [](const auto& p) { return p.quality; });
  Column(json, "counter", points, [](const auto& p) { return p.counter; });
  Column(json, "reason", points, [](const auto& p) { return p.reason; });
  json.EndObject();
}

void WriteDay(JsonWriter& json, const std::string& name, const DayRecord::AdapterDay& day) {
  json.StartObject();
  Member(json, "name", name);
  json.Key("links");
  json.StartObject();
  Times(json, "t", day.links, [](const auto& link) { return link.ms; });
  Column(json, "ap", day.links, [](const auto& link) { return link.accessPoint; });
  json.EndObject();
  json.Key("series");
  json.StartArray();
  for (const auto& [accessPoint, series] : day.series) WriteSeries(json, accessPoint, series);
  json.EndArray();
  json.Key("decisions");
  json.StartObject();
  Times(json, "t", day.decisions, [](const auto& d) { return d.fromMs; });
  Column(json, "for", day.decisions, [](const auto& d) { return (d.toMs - d.fromMs) / kTickMs; });
  Column(json, "rounds", day.decisions, [](const auto& d) { return d.rounds; });
  Column(json, "step", day.decisions, [](const auto& d) { return d.step; });
  Column(json, "text", day.decisions, [](const auto& d) { return d.text; });
  json.EndObject();
  json.Key("scans");
  json.StartObject();
  Times(json, "t", day.scans, [](const auto& scan) { return scan.ms; });
  Column(json, "cause", day.scans, [](const auto& scan) { return static_cast<int>(scan.cause); });
  json.EndObject();
  json.Key("traffic");
  json.StartObject();
  Times(json, "t", day.traffic, [](const auto& t) { return t.ms; });
  Column(json, "kbps", day.traffic,
         [](const auto& t) { return std::lround(t.mbps * kKbpsOfMbps); });
  Column(json, "gate", day.traffic,
         [](const auto& t) { return std::lround(t.gateMbps * kKbpsOfMbps); });
  json.EndObject();
  json.EndObject();
}

}  // namespace

std::string DayRecord::Json(std::uint64_t seed, const std::string& compare) const {
  rapidjson::StringBuffer buffer;
  JsonWriter json(buffer);
  json.StartObject();
  Member(json, "world", m_World.name);
  Member(json, "seed", static_cast<std::int64_t>(seed));
  Member(json, "tick", std::int64_t{kTickMs});
  Member(json, "end", static_cast<std::int64_t>(m_Report.Summary().seconds * 1000 / kTickMs));
  json.Key("accessPoints");
  json.StartArray();
  for (const AccessPoint& ap : m_AccessPoints) {
    json.StartObject();
    Member(json, "ssid", ap.ssid);
    Member(json, "bssid", ap.bssid);
    Member(json, "band", std::int64_t{ap.band});
    Member(json, "channel", std::int64_t{ap.channel});
    json.EndObject();
  }
  json.EndArray();
  json.Key("texts");
  json.StartArray();
  for (const std::string& text : m_Texts) json.String(text.c_str());
  json.EndArray();
  json.Key("adapters");
  json.StartArray();
  for (std::size_t i = 0; i < m_Days.size(); ++i)
    WriteDay(json, WideToUtf8(m_World.adapters[i].description), m_Days[i]);
  json.EndArray();
  json.Key("events");
  json.StartArray();
  for (const Event& event : m_Events) {
    json.StartObject();
    Member(json, "t", static_cast<std::int64_t>(event.ms / kTickMs));
    if (event.adapter >= 0) Member(json, "adapter", std::int64_t{event.adapter});
    Member(json, "kind", event.kind);
    Member(json, "text", event.text);
    json.EndObject();
  }
  json.EndArray();
  Member(json, "eventsLeftOut", static_cast<std::int64_t>(m_EventsLeftOut));
  for (const auto& [name, value] : {std::pair{"summary", &m_Summary}, {"compare", &compare}}) {
    if (value->empty()) continue;
    json.Key(name);
    json.RawValue(value->data(), value->size(), rapidjson::kObjectType);
  }
  json.EndObject();
  return buffer.GetString();
}

}  // namespace corvane::lab
