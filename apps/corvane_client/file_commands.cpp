// Commands that send what stands in a file: access point lists and weights.

#include "corvane_client/adapter_state.h"
#include "corvane_client/client_commands.h"
#include "corvane_client/client_error.h"
#include "corvane_client/json_check.h"
#include "corvane_client/json_writer.h"
#include "corvane_client/text_table.h"
#include "foundation/text.h"
#include "platform/text_file.h"
#include "store/json_text.h"
#include "store/registry.h"
#include "store/value_names.h"

namespace corvane::client {

namespace {

struct Weight {
  const char* name;
  std::uint32_t fallback;
};
constexpr Weight kWeights[] = {{"Internet", 20}, {"SQMax", 30},      {"PNMax", 1},
                               {"MUMIMOMax", 5}, {"MBPSBumpMax", 5}, {"QBSSBumpMax", 10},
                               {"NOISEMax", 10}};

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
// A longer value reads as if it were not there.
constexpr std::size_t kLongestValue = kLongestTextBytes / sizeof(char16_t);

std::string ReadChecked(const std::string& file,
                        const std::function<std::string(std::string_view)>& check) {
  std::string text;
  try {
    text = platform::ReadTextFile(file);
  } catch (const std::runtime_error& error) {
    throw ClientError(kBadCall, error.what());
  }
  if (text.starts_with(kByteOrderMark)) text.erase(0, kByteOrderMark.size());
  const std::string wrong = check(text);
  if (!wrong.empty()) throw ClientError(kBadCall, file + ":" + wrong);
  return text;
}

void WriteText(const Call& call, const AdapterState& adapter, WStringView name,
               const std::string& text) {
  if (Utf8ToWide(text).size() > kLongestValue) {
    throw ClientError(kBadCall, "the text is too long: the service keeps " +
                                    std::to_string(kLongestValue) + " characters");
  }
  CJsonWriter json;
  json.Begin().Name("cmd").String("WriteRegString").Name("guid").String(adapter.guid);
  json.Name("name").String(Narrow(name)).Name("value").String(text).End();
  AskAndCheck(call, json.Text());
}

// One row a line; a text that is no list stands as it is.
void ShowList(const Call& call, const std::string& text) {
  if (call.options.json) {
    call.output.Line(text.empty() ? "[]" : text);
    return;
  }
  rapidjson::Document document;
  ParseJson(text, &document);
  std::vector<Row> rows;
  if (!document.HasParseError() && document.IsArray()) {
    for (const auto& row : document.GetArray()) {
      if (!row.IsArray()) continue;
      Row& cells = rows.emplace_back();
      for (const auto& cell : row.GetArray()) {
        if (cell.IsString()) cells.push_back(Printable(JsonText(cell)));
        if (cell.IsUint()) cells.push_back(std::to_string(cell.GetUint()));
      }
    }
  } else if (!text.empty()) {
    call.output.Line(Printable(text));
    return;
  }
  if (rows.empty()) call.output.Line("the list is empty");
  for (const std::string& line : TableLines(rows)) call.output.Line(line);
}

// A file, which the service reads when it starts.
int PreferredList(const Call& call, const std::string& act, const std::string& text) {
  const std::string path = call.service.ProgramFolder() + "/preferred_ap.json";
  try {
    if (act == "show") {
      ShowList(call, platform::FileExists(path) ? platform::ReadTextFile(path) : "");
      return kDone;
    }
    if (act == "clear") {
      platform::RemoveFile(path);
    } else {
      platform::TextFileWriter file(path);
      file.Write(text);
      file.Commit();
    }
  } catch (const ClientError&) {
    throw;
  } catch (const std::runtime_error& error) {
    throw ClientError(kRefused, error.what());
  }
  if (call.options.json) {
    call.output.Line(CJsonWriter().Begin().Name("file").String(path).End().Text());
  } else {
    call.output.Line(path + " counts from the service's next start on");
  }
  return kDone;
}

}  // namespace

int ListCommand(const Call& call) {
  NeedWords(call, 1, 3);
  const auto& words = call.options.words;
  const std::string& list = words[0];
  const std::string act = words.size() > 1 ? words[1] : "show";
  if (list != "deny" && list != "allow" && list != "preferred") {
    throw ClientError(kBadCall, "there are the lists deny, allow and preferred");
  }
  NeedWords(call, act == "set" ? 3 : 1, act == "set" ? 3 : 2);
  if (act != "show" && act != "set" && act != "clear") {
    throw ClientError(kBadCall, "list takes show, set FILE or clear");
  }
  const ListKind kind = list == "deny"    ? ListKind::kDeny
                        : list == "allow" ? ListKind::kAllow
                                          : ListKind::kPreferred;
  const std::string text =
      act == "set" ? ReadChecked(words[2], [&](auto json) { return CheckApList(json, kind); })
                   : "[]";
  if (kind == ListKind::kPreferred) return PreferredList(call, act, text);
  // The service writes a list to all adapters, whichever is named.
  const auto adapters = ChooseAdapters(ReadAdapters(call.service), call.options);
  if (adapters.empty()) throw ClientError(kRefused, "the service has no adapter");
  const WStringView name =
      list == "deny" ? WStringView(value::kDenylistJson) : WStringView(value::kAllowlistJson);
  if (act == "show") {
    call.service.CheckIsServed();
    ShowList(call, adapters[0].Text(name));
  } else {
    WriteText(call, adapters[0], name, text);
  }
  return kDone;
}

int WeightsCommand(const Call& call) {
  NeedWords(call, 0, 2);
  const auto& words = call.options.words;
  const std::string act = words.empty() ? "show" : words[0];
  NeedWords(call, act == "set" ? 2 : 0, act == "set" ? 2 : 1);
  if (act == "set") {
    const std::string text = ReadChecked(words[1], &CheckWeights);
    WriteText(call, ChooseAdapter(call.service, call.options), value::kScoreCfgJson, text);
    return kDone;
  }
  if (act != "show") throw ClientError(kBadCall, "weights takes show or set FILE");
  call.service.CheckIsServed();
  rapidjson::Document document;
  ParseJson(ChooseAdapter(call.service, call.options).Text(value::kScoreCfgJson), &document);
  const bool readable = !document.HasParseError() && document.IsObject();
  CJsonWriter json;
  json.Begin();
  std::vector<Row> rows;
  for (const Weight& weight : kWeights) {
    std::uint32_t value = weight.fallback;
    if (readable) {
      const rapidjson::Value& weights = document;
      const auto found = weights.FindMember(weight.name);
      if (found != weights.MemberEnd() && found->value.IsUint()) value = found->value.GetUint();
    }
    json.Name(weight.name).Uint(value);
    rows.push_back({weight.name, std::to_string(value)});
  }
  json.End();
  if (call.options.json) {
    call.output.Line(json.Text());
  } else {
    for (const std::string& line : TableLines(rows, {1})) call.output.Line(line);
  }
  return kDone;
}

}  // namespace corvane::client
