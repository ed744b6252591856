// Settings of one adapter, as its registry key keeps them.

#include <algorithm>
#include <array>

#include "foundation/log_lines.h"
#include "pipe/commands.h"
#include "pipe/reply_text.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"

namespace corvane::commands {

namespace {

struct NumberSetting {
  const char16_t* name = nullptr;
  bool quietWhenZero = false;  // 0 neither opens a window nor wakes
};

constexpr std::array<NumberSetting, 9> kNumberSettings = {{
    {value::kEnabled, true},
    {value::kPreferPrivateNetwork},
    {value::kForceAutoConnect},
    {value::kAPScoreThreshold},
    {value::kScanInterval},
    {value::kLQCThreshold},
    {value::kLatchToPrivate},
    {value::kGatewayRoaming},
    {value::kPassiveSuggestMode},
}};

// The lists hold for the whole service: they go to the first two adapters, whichever was named.
WString WriteList(const CClientRequest& request, CQUAYInterfaceConfig& named, WStringView name,
                  WStringView list, WStringView failure) {
  auto& global = CGlobalConfigContainer::GetInstance();
  OpenFirstWindows();
  if (const auto second = global.FindIFConfig(1); second && !second->SetString(name, list))
    LOG_DEBUG(DBG(5) | DBG(6), u"CNamedPipeListenerJson::HandleJsonCommand: %s", failure);
  const auto first = global.FindIFConfig(0);
  if (!first || !first->SetString(name, list)) return FailureReply(kReplyFailed, request.GetText());
  named.SignalMainLoopSemaphore();
  return EchoReply(request.GetText());
}

}  // namespace

WString WriteRegDW(const CClientRequest& request) {
  CSmartPointer<CQUAYInterfaceConfig> config;
  if (const std::uint32_t code = FindAdapter(request, &config); code != kReplyOk)
    return FailureReply(code, request.GetText());
  WString name;
  std::uint32_t number = 0;
  if (!request.GetString("name", &name) || !request.GetUint("value", &number))
    return FailureReply(kReplyNoNameOrValue, request.GetText());
  const auto setting = std::find_if(kNumberSettings.begin(), kNumberSettings.end(),
                                    [&](const NumberSetting& row) { return name == row.name; });
  if (setting == kNumberSettings.end()) return FailureReply(kReplyUnknownName, request.GetText());
  const bool isQuiet = setting->quietWhenZero && number == 0;
  if (!isQuiet) config->OpenNoDelay(kNoDelayMs);
  if (!config->SetDWORD(setting->name, number))
    return FailureReply(kReplyFailed, request.GetText());
  if (!isQuiet) config->SignalMainLoopSemaphore();
  return EchoReply(request.GetText());
}

WString WriteRegString(const CClientRequest& request) {
  CSmartPointer<CQUAYInterfaceConfig> config;
  if (const std::uint32_t code = FindAdapter(request, &config); code != kReplyOk)
    return FailureReply(code, request.GetText());
  WString name, text;
  if (!request.GetString("name", &name) || !request.GetString("value", &text))
    return FailureReply(kReplyNoNameOrValue, request.GetText());
  if (name == value::kDenylistJson) {
    return WriteList(request, *config, name, text,
                     u"SetRegistry_DenylistJson() failed for CFG-index 1");
  }
  if (name == value::kAllowlistJson) {
    return WriteList(request, *config, name, text,
                     u"SetRegistry_AllowlistJson() failed for index 1");
  }
  if (name != value::kScoreCfgJson) return FailureReply(kReplyUnknownName, request.GetText());
  if (!config->SetString(name, text)) return FailureReply(kReplyFailed, request.GetText());
  config->SignalMainLoopSemaphore();
  return EchoReply(request.GetText());
}

std::uint32_t FindAdapter(const CClientRequest& request,
                          CSmartPointer<CQUAYInterfaceConfig>* config) {
  WString guid;
  if (!request.GetString("guid", &guid)) return kReplyBadRequest;
  *config = CGlobalConfigContainer::GetInstance().GetIFConfigByGuid(guid);
  return *config ? kReplyOk : kReplyUnknownAdapter;
}

void OpenFirstWindows() {
  for (const int index : {0, 1}) {
    if (const auto config = CGlobalConfigContainer::GetInstance().FindIFConfig(index))
      config->OpenNoDelay(kNoDelayMs);
  }
}

}  // namespace corvane::commands
