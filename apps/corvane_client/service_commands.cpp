// Commands that fetch a text from the service.

#include "corvane_client/client_commands.h"
#include "corvane_client/client_error.h"
#include "corvane_client/json_writer.h"
#include "corvane_client/service_reply.h"
#include "corvane_client/text_table.h"
#include "store/base64_text.h"
#include "store/json_text.h"

namespace corvane::client {

namespace {

constexpr std::string_view kLogStart = "\"log\":\"";

std::string Text(const rapidjson::Value& object, const char* name) {
  const auto found = object.FindMember(name);
  return found != object.MemberEnd() && found->value.IsString()
             ? std::string(JsonText(found->value))
             : std::string();
}

}  // namespace

// A failed diagnosis has its findings, too.
int DiagCommand(const Call& call) {
  NeedWords(call, 0, 0);
  const std::string reply = call.service.Ask(R"({"cmd":"MiscCommand","name":"Diag1","value":0})");
  rapidjson::Document document;
  ParseJson(reply, &document);
  const bool readable = !document.HasParseError() && document.IsObject();
  const auto diag = readable ? document.FindMember("diag") : rapidjson::Value::MemberIterator();
  if (readable && diag != document.MemberEnd() && diag->value.IsObject()) {
    if (call.options.json) {
      call.output.Line(reply);
    } else {
      const rapidjson::Value& found = diag->value;
      const std::vector<Row> rows = {{"Status", Printable(Text(found, "status"))},
                                     {"Link rate by probe", Printable(Text(found, "blast"))},
                                     {"Score", Printable(Text(found, "apscore"))},
                                     {"Adapter", Printable(Text(found, "adapterclass"))},
                                     {"Access point", Printable(Text(found, "apclass"))}};
      for (const std::string& line : TableLines(rows)) call.output.Line(line);
    }
  }
  CheckReply(reply);
  return kDone;
}

// A log that is longer than a message arrives cut: what has come is shown.
int LogCommand(const Call& call) {
  NeedWords(call, 0, 0);
  const std::string reply = call.service.Ask(R"({"cmd":"AppLog"})");
  CheckReply(reply);
  const std::size_t at = reply.find(kLogStart);
  if (at == reply.npos) throw ClientError(kRefused, "the service's reply is not understood");
  const std::size_t start = at + kLogStart.size();
  const std::string log = Base64Decode(reply.substr(start, reply.find('"', start) - start));
  if (call.options.json) {
    call.output.Line(CJsonWriter().Begin().Name("log").String(log).End().Text());
  } else {
    call.output.write(log);
    if (!log.empty() && log.back() != '\n') call.output.write("\n");
  }
  return kDone;
}

int RawCommand(const Call& call) {
  NeedWords(call, 1, 1);
  const std::string reply = call.service.Ask(call.options.words[0]);
  call.output.Line(reply);
  CheckReply(reply);
  return kDone;
}

}  // namespace corvane::client
