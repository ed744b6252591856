// Settings of the whole service, and the diagnosis.

#include <algorithm>
#include <array>

#include "foundation/log_lines.h"
#include "pipe/commands.h"
#include "pipe/diagnosis.h"
#include "pipe/reply_text.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"
#include "store/value_table.h"

namespace corvane::commands {

namespace {

// A setting that is one number of the home key; the table of values has its range.
struct GlobalSetting {
  const char16_t* name = nullptr;      // of the request and of the value
  const char16_t* constant = nullptr;  // in the log; null: a failed write is not logged
  std::uint32_t writeFailure = kReplyNotDone;
};

constexpr std::array<GlobalSetting, 16> kGlobalSettings = {{
    {value::kServiceEnable, u"REGVAL_SERVICE_ENABLE"},
    {value::kRoamingEnabled, u"REGVAL_ROAMING_ENABLED"},
    {value::kDBWMEnable, u"REGKEY_VALUE_APS_DBWM_ENABLE"},
    {value::kRTAudioModeMbps, u"REGKEY_VALUE_RE_AUDIO_MBPS", kReplyOutOfRange},
    {value::kRTAudioMode, u"REGKEY_VALUE_RT_AUDIO_MODE"},
    {value::kDBWMProbeMonthBudgetMB, nullptr, kReplyBudgetNotWritten},
    {value::kIDET, u"REGVAL_IDET"},
    {value::kIgnoreVPN, u"REGVAL_IGNOREVPN"},
    {value::kPalisadeOptimizer, u"REGVAL_PALISADE_OPTIMIZER"},
    {value::kTelemetryConnectionsCSVFileSizeMB, nullptr},
    {value::kSCOREDIFFPCT, u"REGVAL_SCOREDIFFPCT"},
    {value::kSurvey1, value::kSurvey1},
    {value::kSurvey2, value::kSurvey2},
    {value::kSurvey3, value::kSurvey3},
    {value::kPolicyProfile, value::kPolicyProfile},
    {value::kRecordAirMB, value::kRecordAirMB},
}};

bool Write(const char16_t* name, std::uint32_t number) {
  return CGlobalConfigContainer::GetInstance().SetDWORD(name, number);
}

bool WriteLogged(const char16_t* name, const char16_t* constant, std::uint32_t number) {
  if (Write(name, number)) return true;
  if (constant) {
    LOG_ERROR(u"CNamedPipeListenerJson::HandleJsonCommand: SetRegistryDWORDValue(%s, %lu) failed",
              constant, number);
  }
  return false;
}

std::uint32_t WriteSetting(const GlobalSetting& setting, std::uint32_t number) {
  const ValueRow* row = FindValue(ValueKey::kHome, setting.name);
  if (!row || !IsInRange(*row, number)) return kReplyOutOfRange;
  if (WStringView(setting.name) == value::kServiceEnable && number == 1) OpenFirstWindows();
  return WriteLogged(setting.name, setting.constant, number) ? kReplyOk : setting.writeFailure;
}

// 0 off, 1 on, 2 on and fast.
std::uint32_t WritePostMode(std::uint32_t mode) {
  constexpr std::uint32_t kFast = 2;
  if (mode > kFast) return kReplyOutOfRange;
  if (mode != kFast) Write(value::kFastPost, 0);
  if (!WriteLogged(value::kEnablePost, u"REGVAL_ENABLE_POST", mode != 0)) return kReplyNotDone;
  if (mode == kFast && !WriteLogged(value::kFastPost, u"REGVAL_FAST_STATUS_POST", 1))
    return kReplyNotDone;
  return kReplyOk;
}

}  // namespace

WString MiscCommand(const CClientRequest& request) {
  WString name;
  std::uint32_t number = 0;
  if (!request.GetString("name", &name) || !request.GetUint("value", &number))
    return FailureReply(kReplyNoNameOrValue, request.GetText());
  OpenFirstWindows();
  if (name == u"Diag1") return Diagnose();
  std::uint32_t code = kReplyUnknownName;
  if (name == u"POSTMode") {
    code = WritePostMode(number);
  } else if (const auto setting =
                 std::find_if(kGlobalSettings.begin(), kGlobalSettings.end(),
                              [&](const GlobalSetting& row) { return name == row.name; });
             setting != kGlobalSettings.end()) {
    code = WriteSetting(*setting, number);
  }
  return code == kReplyOk ? EchoReply(request.GetText()) : FailureReply(code, request.GetText());
}

}  // namespace corvane::commands
