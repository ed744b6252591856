#include "corvane_client/candidate_rows.h"

#include <algorithm>

#include "corvane_client/json_writer.h"
#include "corvane_client/text_table.h"
#include "foundation/text.h"

namespace corvane::client {

namespace {

constexpr std::string CandidateRow::*kFields[] = {
    &CandidateRow::ssid,        &CandidateRow::bssid,     &CandidateRow::band,
    &CandidateRow::score,       &CandidateRow::quality,   &CandidateRow::category,
    &CandidateRow::autoConnect, &CandidateRow::scanState, &CandidateRow::load,
    &CandidateRow::channel,     &CandidateRow::standards, &CandidateRow::auth,
    &CandidateRow::muMimo,      &CandidateRow::widths,    nullptr,  // reserved
    &CandidateRow::occupancy};

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t at = 0;;) {
    const std::size_t end = std::min(text.find(separator, at), text.size());
    parts.emplace_back(text.substr(at, end - at));
    if (end == text.size()) return parts;
    at = end + 1;
  }
}

// A heading by the field that it stands for.
struct Column {
  const char* heading;
  std::string CandidateRow::*field;
};
constexpr Column kJsonColumns[] = {
    {"ssid", &CandidateRow::ssid},           {"bssid", &CandidateRow::bssid},
    {"band", &CandidateRow::band},           {"channel", &CandidateRow::channel},
    {"score", &CandidateRow::score},         {"quality", &CandidateRow::quality},
    {"load", &CandidateRow::load},           {"standard", &CandidateRow::standards},
    {"widths", &CandidateRow::widths},       {"mumimo", &CandidateRow::muMimo},
    {"auth", &CandidateRow::auth},           {"category", &CandidateRow::category},
    {"auto", &CandidateRow::autoConnect},    {"scan", &CandidateRow::scanState},
    {"on_channel", &CandidateRow::occupancy}};

}  // namespace

std::vector<CandidateRow> ParseCandidates(std::string_view csv) {
  std::vector<CandidateRow> rows;
  for (const std::string& line : Split(csv, '\t')) {
    const std::vector<std::string> fields = Split(line, '\v');
    if (fields.size() < std::size(kFields)) continue;
    CandidateRow& row = rows.emplace_back();
    for (std::size_t i = 0; i < std::size(kFields); ++i) {
      if (kFields[i]) row.*kFields[i] = fields[i];
    }
  }
  return rows;
}

std::string AuthName(const std::string& number) {
  static constexpr const char* kNames[] = {"",         "open",     "shared", "WPA",
                                           "WPA-PSK",  "WPA-none", "WPA2",   "WPA2-PSK",
                                           "WPA3-192", "WPA3-SAE", "OWE",    "WPA3"};
  for (std::size_t i = 1; i < std::size(kNames); ++i) {
    if (number == std::to_string(i)) return kNames[i];
  }
  return number;
}

std::vector<std::string> CandidateLines(const std::vector<CandidateRow>& rows,
                                        const std::string& connectedBssid) {
  std::vector<Row> cells = {{"", "SSID", "BSSID", "SCORE", "QUALITY", "BAND", "CHANNEL", "LOAD",
                             "STANDARD", "SECURITY", "NETWORK", "SEEN"}};
  for (const CandidateRow& row : rows) {
    const bool connected = !connectedBssid.empty() && row.bssid == NormalBssid(connectedBssid);
    cells.push_back({connected ? "*" : "", Printable(row.ssid), row.bssid, row.score, row.quality,
                     row.band, row.channel, row.load + "%", row.standards, AuthName(row.auth),
                     row.category, row.scanState});
  }
  constexpr std::size_t kScore = 3, kQuality = 4, kChannel = 6, kLoad = 7;
  return TableLines(cells, {kScore, kQuality, kChannel, kLoad});
}

std::string CandidatesJson(const std::vector<CandidateRow>& rows,
                           const std::string& connectedBssid) {
  CJsonWriter json;
  json.BeginArray();
  for (const CandidateRow& row : rows) {
    json.Begin();
    for (const Column& column : kJsonColumns) {
      json.Name(column.heading);
      if (column.field == &CandidateRow::ssid) {
        json.String(row.ssid);  // also one of digits
      } else {
        json.Value(row.*column.field);
      }
    }
    json.Name("connected").Bool(row.bssid == NormalBssid(connectedBssid)).End();
  }
  return json.EndArray().Text();
}

std::string NormalBssid(std::string bssid) {
  std::ranges::replace(bssid, ':', '-');
  return ToLower(std::string_view(bssid));
}

}  // namespace corvane::client
