// Commands that fetch a text from the service.

#include <algorithm>

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

constexpr std::size_t kRecordNumber = 7;  // digits

// Whether a record of the log begins there: "0000012<11/25/2026/T".
bool IsRecordStart(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789";
  return text.size() > kRecordNumber + 3 &&
         text.substr(0, kRecordNumber).find_first_not_of(kDigits) == text.npos &&
         text[kRecordNumber] == '<' && text[kRecordNumber + 3] == '/';
}

// Records hold names that others chose. Ends of lines and tabs stay.
std::string PrintableLines(const std::string& text) {
  std::string safe;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find_first_of("\n\t", at), text.size());
    safe += Printable(std::string_view(text).substr(at, end - at));
    if (end < text.size()) safe += text[end];
    at = end + 1;
  }
  return safe;
}

// The service keeps its records one behind the other; those that end a line themselves stay so.
std::string RecordLines(const std::string& log) {
  std::string lines;
  for (std::size_t i = 0; i < log.size(); ++i) {
    const bool starts = i > 0 && IsRecordStart(std::string_view(log).substr(i));
    if (starts && lines.back() != '\n') lines += '\n';
    lines += log[i];
  }
  if (!lines.empty() && lines.back() != '\n') lines += '\n';
  return lines;
}

}  // namespace

// A failed diagnosis has its findings, too.
int DiagCommand(const Call& call) {
  NeedWords(call, 0, 0);
  const std::string reply = call.service.Ask(R"({"cmd":"MiscCommand","name":"Diag1","value":0})");
  rapidjson::Document document;
  ParseJson(reply, &document);
  const bool readable = !document.HasParseError() && document.IsObject();
  const rapidjson::Value& members = document;
  const auto diag = readable ? members.FindMember("diag") : rapidjson::Value::ConstMemberIterator();
  if (readable && diag != members.MemberEnd() && diag->value.IsObject()) {
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
    call.output.write(PrintableLines(RecordLines(log)));
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
