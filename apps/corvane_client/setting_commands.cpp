// Commands that change one setting or ask for one act.

#include "corvane_client/adapter_state.h"
#include "corvane_client/client_commands.h"
#include "corvane_client/client_error.h"
#include "corvane_client/json_writer.h"
#include "corvane_client/lb_state.h"
#include "corvane_client/setting_names.h"
#include "corvane_client/text_table.h"
#include "foundation/text.h"
#include "platform/text_file.h"
#include "platform/types.h"
#include "store/policy_profile_kind.h"
#include "store/value_names.h"

namespace corvane::client {

namespace {

void Write(const Call& call, const char* command, const std::string& name, std::uint32_t value,
           const AdapterState* adapter = nullptr) {
  CJsonWriter json;
  json.Begin().Name("cmd").String(command);
  if (adapter) json.Name("guid").String(adapter->guid).Name("idx").Uint(adapter->index);
  json.Name("name").String(name).Name("value").Uint(value).End();
  AskAndCheck(call, json.Text());
}

// The adapter that is named, or the service as a whole.
int SwitchOnOrOff(const Call& call, std::uint32_t value) {
  NeedWords(call, 0, 0);
  if (call.options.adapter) {
    const AdapterState adapter = ChooseAdapter(call.service, call.options);
    Write(call, "WriteRegDW", Narrow(value::kEnabled), value, &adapter);
  } else {
    Write(call, "MiscCommand", Narrow(value::kServiceEnable), value);
  }
  return kDone;
}

void ShowSettings(const Call& call) {
  call.service.CheckIsServed();
  const Values service = call.service.Settings();
  const auto adapters = ChooseAdapters(ReadAdapters(call.service), call.options);
  std::vector<Row> rows = {{"NAME", "VALUE", "OF", "TAKES"}};
  CJsonWriter json;
  json.Begin();
  const auto add = [&](const SettingName& setting, const Values& values, const std::string& of) {
    const auto found = values.find(setting.name);
    rows.push_back({setting.name, found == values.end() ? "-" : found->second, of, setting.range});
  };
  for (const AdapterState& one : adapters) {
    for (const SettingName& setting : SettingNames()) {
      if (setting.ofAdapter) {
        add(setting, one.values, "adapter " + std::to_string(one.index));
      }
    }
  }
  for (const SettingName& setting : SettingNames()) {
    if (!setting.ofAdapter) add(setting, service, "service");
  }
  if (!call.options.json) {
    for (const std::string& line : TableLines(rows)) call.output.Line(line);
    return;
  }
  std::string of;
  for (std::size_t i = 1; i < rows.size(); ++i) {
    if (rows[i][2] != of) {
      if (!of.empty()) json.End();
      of = rows[i][2];
      json.Name(of).Begin();
    }
    if (rows[i][1] != "-") json.Name(rows[i][0]).Value(rows[i][1]);
  }
  if (!of.empty()) json.End();
  call.output.Line(json.End().Text());
}

int ShowLb(const Call& call) {
  call.service.CheckIsServed();
  const Values service = call.service.Settings();
  if (call.options.json) {
    call.output.Line(LbJson(service));
  } else {
    for (const std::string& line : LbLines(service)) call.output.Line(line);
  }
  return kDone;
}

}  // namespace

int AcceptCommand(const Call& call) {
  NeedWords(call, 0, 0);
  const AdapterState adapter = ChooseAdapter(call.service, call.options);
  // The service would note it all the same, and take it for the next suggestion.
  if (adapter.Text(value::kSuggestedNetwork).empty()) {
    throw ClientError(kRefused, "nothing is suggested to " + Printable(adapter.Name()));
  }
  Write(call, "UICommand", "AcceptAPSuggestion", 1, &adapter);
  return kDone;
}

int ModeCommand(const Call& call) {
  NeedWords(call, 1, 1);
  const std::string& mode = call.options.words[0];
  for (std::uint32_t value = 0; value <= 2; ++value) {
    if (mode != ModeName(std::to_string(value))) continue;
    const AdapterState adapter = ChooseAdapter(call.service, call.options);
    Write(call, "WriteRegDW", Narrow(value::kPassiveSuggestMode), value, &adapter);
    return kDone;
  }
  throw ClientError(kBadCall, "\"" + mode + "\" is no mode; there are autoswitch, event and popup");
}

int ProfileCommand(const Call& call) {
  NeedWords(call, 0, 1);
  if (call.options.words.empty()) {
    call.service.CheckIsServed();
    const Values service = call.service.Settings();
    const auto found = service.find(Narrow(value::kPolicyProfile));
    const auto value = found == service.end() ? std::nullopt : ParseNumber(found->second);
    const std::string name = NameOf(PolicyProfileOf(value.value_or(0)));
    CJsonWriter json;
    call.output.Line(call.options.json ? json.Begin().Name("profile").String(name).End().Text()
                                       : name);
    return kDone;
  }
  const auto kind = PolicyProfileNamed(call.options.words[0]);
  if (!kind) {
    throw ClientError(kBadCall, "\"" + call.options.words[0] +
                                    "\" is no profile; there are classic and balanced");
  }
  Write(call, "MiscCommand", Narrow(value::kPolicyProfile), static_cast<std::uint32_t>(*kind));
  return kDone;
}

namespace {

constexpr std::uint32_t kRecordMB = 100, kMostRecordMB = 1000;

std::uint64_t BytesOf(const std::string& path) { return platform::FileSize(path).value_or(0); }

void ShowRecording(const Call& call) {
  call.service.CheckIsServed();
  const Values service = call.service.Settings();
  const auto found = service.find(Narrow(value::kRecordAirMB));
  const std::uint32_t limit = found == service.end() ? 0 : ParseNumber(found->second).value_or(0);
  const std::string folder = call.service.DataFolder() + Narrow({&platform::kPathSeparator, 1});
  const std::string file = folder + "air.jsonl";
  const std::uint64_t bytes = BytesOf(file) + BytesOf(folder + "air.1.jsonl");
  if (call.options.json) {
    CJsonWriter json;
    json.Begin().Name("megabytes").Uint(limit).Name("file").String(file);
    call.output.Line(json.Name("bytes").Uint64(bytes).End().Text());
    return;
  }
  call.output.Line(limit == 0 ? "off" : "on, at most " + std::to_string(limit) + " million bytes");
  if (bytes != 0) call.output.Line(file + ", " + std::to_string(bytes) + " bytes");
}

}  // namespace

int RecordCommand(const Call& call) {
  NeedWords(call, 1, 2);
  const auto& words = call.options.words;
  if (words[0] == "status" && words.size() == 1) {
    ShowRecording(call);
    return kDone;
  }
  if (words[0] == "off" && words.size() == 1) {
    Write(call, "MiscCommand", Narrow(value::kRecordAirMB), 0);
    return kDone;
  }
  if (words[0] != "on") throw ClientError(kBadCall, "record takes on, off or status");
  const auto limit = words.size() == 1 ? std::optional(kRecordMB) : ParseNumber(words[1]);
  if (!limit || *limit == 0 || *limit > kMostRecordMB) {
    throw ClientError(kBadCall, "\"" + words[1] + "\" is no size from 1 to " +
                                    std::to_string(kMostRecordMB) + " million bytes");
  }
  Write(call, "MiscCommand", Narrow(value::kRecordAirMB), *limit);
  return kDone;
}

int EnableCommand(const Call& call) { return SwitchOnOrOff(call, 1); }
int DisableCommand(const Call& call) { return SwitchOnOrOff(call, 0); }

int SetCommand(const Call& call) {
  if (call.options.words.empty()) {
    ShowSettings(call);
    return kDone;
  }
  NeedWords(call, 2, 2);
  const std::string& name = call.options.words[0];
  const SettingName* setting = FindSetting(name);
  if (!setting) {
    throw ClientError(kBadCall, "\"" + name + "\" is no setting; \"set\" alone lists them");
  }
  const auto value = ParseNumber(call.options.words[1], true);
  if (!value) {
    throw ClientError(kBadCall, setting->name + " takes " + setting->range + ", not \"" +
                                    call.options.words[1] + "\"");
  }
  if (setting->ofAdapter) {
    const AdapterState adapter = ChooseAdapter(call.service, call.options);
    Write(call, "WriteRegDW", setting->name, *value, &adapter);
  } else if (call.options.adapter) {
    throw ClientError(kBadCall, setting->name + " is the service's, not an adapter's");
  } else {
    Write(call, "MiscCommand", setting->name, *value);
  }
  return kDone;
}

int LbCommand(const Call& call) {
  NeedWords(call, 1, 2);
  const std::string& act = call.options.words[0];
  const bool hasValue = call.options.words.size() == 2;
  // 0, which is no mode, for what is no number.
  const std::uint32_t value = hasValue ? ParseNumber(call.options.words[1]).value_or(0) : 0;
  const bool takesMode = act == "weight" || act == "on";
  if (hasValue && (!takesMode || value < 1 || value > 2)) {
    throw ClientError(kBadCall, takesMode ? "the weight mode is 1 or 2" : act + " takes no value");
  }
  if (act == "status") return ShowLb(call);
  if (act == "on") {
    Write(call, "LBCommand", "EnableLBEngine", value);  // 0 keeps the mode in force
  } else if (act == "off") {
    Write(call, "LBCommand", "DisableLBEngine", 0);
  } else if (act == "pause" || act == "resume") {
    Write(call, "LBCommand", "SetLBPaused", act == "pause" ? 1 : 0);
  } else if (act == "weight" && hasValue) {
    Write(call, "LBCommand", "SetLBWeightMode", value);
  } else {
    throw ClientError(kBadCall, "lb takes status, on, off, pause, resume or weight MODE");
  }
  return kDone;
}

}  // namespace corvane::client
