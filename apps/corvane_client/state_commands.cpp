// Commands that tell how the adapters stand.

#include "corvane_client/adapter_state.h"
#include "corvane_client/client_commands.h"
#include "corvane_client/client_error.h"
#include "corvane_client/json_writer.h"
#include "corvane_client/text_table.h"
#include "store/value_names.h"

namespace corvane::client {

int StatusCommand(const Call& call) {
  NeedWords(call, 0, 0);
  call.service.CheckIsServed();
  const Values service = call.service.Settings();
  const auto adapters = ChooseAdapters(ReadAdapters(call.service), call.options);
  if (call.options.json) {
    CJsonWriter json;
    json.BeginArray();
    for (const AdapterState& one : adapters) json.Raw(StatusJson(service, one));
    call.output.Line(json.EndArray().Text());
    return kDone;
  }
  if (adapters.empty()) call.output.Line("The service has no adapter.");
  bool first = true;
  for (const AdapterState& one : adapters) {
    if (!first) call.output.Line("");
    first = false;
    for (const std::string& line : StatusLines(service, one)) call.output.Line(line);
  }
  return kDone;
}

int CandidatesCommand(const Call& call) {
  NeedWords(call, 0, 0);
  call.service.CheckIsServed();
  const auto adapters = ChooseAdapters(ReadAdapters(call.service), call.options);
  CJsonWriter json;
  json.BeginArray();
  bool first = true;
  for (const AdapterState& one : adapters) {
    auto rows = one.Candidates();
    if (call.options.all) {
      const auto others = one.Candidates(true);
      rows.insert(rows.end(), others.begin(), others.end());
    }
    const std::string connected = one.Text(value::kConnectedBssid);
    if (call.options.json) {
      json.Begin().Name("index").Uint(one.index).Name("guid").String(one.guid);
      json.Name("candidates").Raw(CandidatesJson(rows, connected)).End();
      continue;
    }
    if (!first) call.output.Line("");
    first = false;
    if (adapters.size() > 1) {
      call.output.Line("Adapter " + std::to_string(one.index) + "  " + one.Name());
    }
    if (rows.empty()) call.output.Line("no candidates");
    if (rows.empty()) continue;
    for (const std::string& line : CandidateLines(rows, connected)) {
      call.output.Line(call.output.isTerminal ? Clip(line, call.output.columns()) : line);
    }
  }
  if (call.options.json) call.output.Line(json.EndArray().Text());
  return kDone;
}

}  // namespace corvane::client
