#include "corvane_client/adapter_state.h"
#include "corvane_client/client_commands.h"
#include "corvane_client/client_error.h"
#include "corvane_client/connect_progress.h"
#include "corvane_client/json_writer.h"
#include "corvane_client/service_reply.h"
#include "corvane_client/text_table.h"
#include "store/value_names.h"

namespace corvane::client {

namespace {

constexpr int kPollMs = 200;

// Follows "ConnectStatus" to its end.
int WaitForConnect(const Call& call, const std::string& guid, const std::string& bssid) {
  CConnectProgress progress(bssid);
  for (int ms = 0; ms <= call.options.timeoutSecs * 1000; ms += kPollMs) {
    if (call.service.IsInterrupted()) throw ClientError(kRefused, "interrupted");
    const Values values = call.service.Settings(guid);
    const auto text = [&](WStringView name) { return ValueOr(values, name, ""); };
    const ConnectEnd end =
        progress.Look(text(value::kConnectStatus), text(value::kConnectedBssid), ms);
    if (end == ConnectEnd::kConnected) {
      if (call.options.json) {
        CJsonWriter json;
        json.Begin().Name("connected").Bool(true).Name("ssid").String(text(value::kConnectedSsid));
        call.output.Line(json.Name("bssid").String(text(value::kConnectedBssid)).End().Text());
      } else {
        call.output.Line("connected to " + Printable(text(value::kConnectedNetwork)));
      }
      return kDone;
    }
    if (end == ConnectEnd::kFailed) throw ClientError(kRefused, "the connect failed");
    if (end == ConnectEnd::kExternal) {
      throw ClientError(kRefused, "the network has no profile; the user was asked for credentials");
    }
    call.service.Sleep(kPollMs);
  }
  throw ClientError(
      kRefused, "no end of the connect within " + std::to_string(call.options.timeoutSecs) + " s");
}

}  // namespace

int ConnectCommand(const Call& call) {
  NeedWords(call, 2, 2);
  const std::string bssid = NormalBssid(call.options.words[1]);
  if (!IsBssid(bssid)) {
    throw ClientError(
        kBadCall, "\"" + call.options.words[1] + "\" is no BSSID; an example: 02-50-00-00-01-05");
  }
  const AdapterState adapter = ChooseAdapter(call.service, call.options);
  CJsonWriter json;
  json.Begin().Name("cmd").String("ConnectAP").Name("guid").String(adapter.guid);
  json.Name("ssid").String(call.options.words[0]).Name("bssid").String(bssid).End();
  if (call.options.wait) {
    CheckReply(call.service.Ask(json.Text()));
    return WaitForConnect(call, adapter.guid, bssid);
  }
  AskAndCheck(call, json.Text());
  if (!call.options.json) call.output.Line("asked; --wait tells how it ends");
  return kDone;
}

}  // namespace corvane::client
