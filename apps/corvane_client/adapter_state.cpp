#include "corvane_client/adapter_state.h"

#include <algorithm>

#include "corvane_client/client_error.h"
#include "corvane_client/json_writer.h"
#include "corvane_client/text_table.h"
#include "foundation/text.h"
#include "store/value_names.h"

namespace corvane::client {

namespace {

constexpr std::uint32_t kMostAdapters = 10;  // the home key has a value for each, "0" to "9"

bool Means(const std::string& word, const AdapterState& adapter) {
  const std::string lower = ToLower(std::string_view(word));
  const auto same = [&](const std::string& text) {
    return !text.empty() && ToLower(std::string_view(text)) == lower;
  };
  return word == std::to_string(adapter.index) || same(adapter.guid) ||
         same(adapter.Text(value::kAdapterName)) || same(adapter.Text(value::kAdapterDescription));
}

std::string Listing(const std::vector<AdapterState>& adapters) {
  std::string text;
  for (const AdapterState& one : adapters) {
    text += "\n  " + std::to_string(one.index) + "  " + one.guid + "  " + one.Name();
  }
  return text;
}

}  // namespace

std::string ValueOr(const Values& values, WStringView name, const std::string& absent) {
  const auto found = values.find(Narrow(name));
  return found == values.end() ? absent : found->second;
}

std::string AdapterState::Text(WStringView name) const { return ValueOr(values, name, ""); }

std::string AdapterState::Name() const {
  const std::string description = Text(value::kAdapterDescription);
  return Printable(description.empty() ? Text(value::kAdapterName) : description);
}

std::vector<CandidateRow> AdapterState::Candidates(bool others) const {
  return ParseCandidates(
      Text(others ? WStringView(value::kNONCandidatesCSV) : value::kCandidatesCSV));
}

std::vector<AdapterState> ReadAdapters(IServiceAccess& service) {
  const Values home = service.Settings();
  const std::uint32_t count =
      std::min(ParseNumber(ValueOr(home, value::kNumWifiAdapters, "")).value_or(kMostAdapters),
               kMostAdapters);
  std::vector<AdapterState> adapters;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::string guid = ValueOr(home, Widen(std::to_string(i)), "");
    if (!guid.empty()) adapters.push_back({i, guid, service.Settings(guid)});
  }
  return adapters;
}

std::vector<AdapterState> ChooseAdapters(std::vector<AdapterState> adapters,
                                         const ClientOptions& options) {
  if (!options.adapter) return adapters;
  std::vector<AdapterState> chosen;
  for (const AdapterState& one : adapters) {
    if (Means(*options.adapter, one)) chosen.push_back(one);
  }
  if (chosen.empty()) {
    throw ClientError(kBadCall, "no adapter is \"" + *options.adapter + "\"; there " +
                                    (adapters.empty() ? "is none" : "are:" + Listing(adapters)));
  }
  return chosen;
}

AdapterState ChooseAdapter(IServiceAccess& service, const ClientOptions& options) {
  const std::vector<AdapterState> chosen = ChooseAdapters(ReadAdapters(service), options);
  if (chosen.empty()) throw ClientError(kRefused, "the service has no adapter");
  if (chosen.size() > 1) {
    throw ClientError(kBadCall, "which adapter? Name one with --adapter:" + Listing(chosen));
  }
  return chosen[0];
}

std::string ModeName(const std::string& mode) {
  return mode == "0" ? "autoswitch" : mode == "1" ? "event" : mode == "2" ? "popup" : "unknown";
}

std::vector<std::string> HoldingStill(const Values& service, const AdapterState& adapter) {
  std::vector<std::string> reasons;
  if (ValueOr(service, value::kServiceEnable, "1") == "0")
    reasons.push_back("the service is disabled");
  if (ValueOr(adapter.values, value::kEnabled, "1") == "0") reasons.push_back("switched off here");
  if (ValueOr(adapter.values, value::kAdapterEnabled, "1") == "0") {
    reasons.push_back("the adapter is disabled");
  }
  if (adapter.Text(value::kVPNInhibited) == "1") reasons.push_back("a VPN is up");
  if (adapter.Text(value::kRadioInhibited) == "1") reasons.push_back("the radio is off");
  if (adapter.Text(value::kAirplaneInhibited) == "1") reasons.push_back("airplane mode");
  const std::string message = Printable(adapter.Text(value::kStatusMessage));
  if (!message.empty()) reasons.push_back(message);
  return reasons;
}

std::string ConnectedScore(const AdapterState& adapter) {
  const std::string bssid = NormalBssid(adapter.Text(value::kConnectedBssid));
  if (bssid.empty()) return {};
  for (const bool others : {false, true}) {
    for (const CandidateRow& row : adapter.Candidates(others)) {
      if (row.bssid == bssid) return row.score;
    }
  }
  return {};
}

std::vector<std::string> StatusLines(const Values& service, const AdapterState& adapter) {
  std::vector<Row> rows = {
      {"Adapter " + std::to_string(adapter.index), adapter.Name() + "  " + adapter.guid}};
  if (adapter.IsConnected()) {
    rows.push_back({"  Connection", Printable(adapter.Text(value::kConnectedNetwork)) + "  " +
                                        adapter.Text(value::kConnectedBssid)});
    const std::string score = ConnectedScore(adapter);
    rows.push_back({"  Score", score.empty() ? "unknown" : score});
  } else {
    rows.push_back({"  Connection", "none"});
  }
  const std::string status = adapter.Text(value::kConnectStatus);
  if (!status.empty()) rows.push_back({"  Last request", status});
  rows.push_back({"  Mode", ModeName(adapter.Text(value::kPassiveSuggestMode))});
  const std::string suggestion = adapter.Text(value::kSuggestedNetwork);
  if (!suggestion.empty()) rows.push_back({"  Suggests", Printable(suggestion)});
  std::string still;
  for (const std::string& reason : HoldingStill(service, adapter)) {
    still += (still.empty() ? "" : "; ") + reason;
  }
  rows.push_back({"  Holds still", still.empty() ? "no" : still});
  return TableLines(rows);
}

std::string StatusJson(const Values& service, const AdapterState& adapter, bool candidates) {
  CJsonWriter json;
  json.Begin().Name("index").Uint(adapter.index).Name("guid").String(adapter.guid);
  json.Name("description").String(adapter.Text(value::kAdapterDescription));
  json.Name("connected").Bool(adapter.IsConnected());
  json.Name("ssid").String(adapter.Text(value::kConnectedSsid));
  json.Name("bssid").String(adapter.Text(value::kConnectedBssid));
  json.Name("score").Value(ConnectedScore(adapter));
  json.Name("connect_status").String(adapter.Text(value::kConnectStatus));
  json.Name("mode").String(ModeName(adapter.Text(value::kPassiveSuggestMode)));
  json.Name("holds_still").BeginArray();
  for (const std::string& reason : HoldingStill(service, adapter)) json.String(reason);
  json.EndArray();
  json.Name("suggested_ssid").String(adapter.Text(value::kSuggestedNetworkSSID));
  json.Name("suggested_bssid").String(adapter.Text(value::kSuggestedNetworkBSSID));
  if (candidates) {
    json.Name("candidates");
    json.Raw(CandidatesJson(adapter.Candidates(), adapter.Text(value::kConnectedBssid)));
  }
  return json.End().Text();
}

}  // namespace corvane::client
