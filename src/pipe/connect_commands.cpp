// Orders to connect, and the removal of profiles.

#include "foundation/ignored.h"
#include "foundation/log_lines.h"
#include "pipe/commands.h"
#include "pipe/connect_rules.h"
#include "pipe/reply_text.h"
#include "settings/global_config_container.h"
#include "store/address_text.h"
#include "store/base64_text.h"
#include "store/value_names.h"
#include "wlan/wifi_client_container.h"

namespace corvane::commands {

namespace {

constexpr std::uint32_t kConnectWindowMs = 20'000;

ConnectObstacles ObstaclesOf(const CQUAYInterfaceConfig& config) {
  std::uint32_t enabled = 1;
  config.GetDWORD(value::kAdapterEnabled, &enabled);
  return {config.m_VPNInhibited, config.m_RadioInhibited, config.m_AirplaneInhibited, enabled == 0};
}

// One line for every reason; the reply has the right one.
void LogRefusal(const CClientRequest& request) {
  WString ssid, bssid;
  if (!request.GetString("ssid", &ssid) || !request.GetString("bssid", &bssid)) ssid.clear();
  LOG_DEBUG(kClientLog,
            u"CNamedPipeListenerJson::HandleJsonCommand:[ConnectAP][%s][%s] REJECT due to VPN "
            u"INHIBITION\n",
            ssid, bssid);
}

// Takes over what comes with the order. False for a profile that decodes to nothing.
bool TakeProfile(const CClientRequest& request, CQUAYInterfaceConfig& config) {
  std::string_view base64;
  if (request.GetBytes("path", &base64)) {
    Ignored(
        CGlobalConfigContainer::GetInstance().SetClientDir(WideFromBytes(Base64Decode(base64))));
  }
  config.SetUIConnectProfile({});
  if (request.GetBytes("profile", &base64) && !base64.empty()) {
    const std::string xml = Base64Decode(base64);
    if (xml.empty()) return false;
    config.SetUIConnectProfile(WideFromBytes(xml));
  }
  bool save = false;
  request.GetBool("save_profile", &save);
  config.SetUIConnectSave(save);
  return true;
}

}  // namespace

WString ConnectAP(const CClientRequest& request) {
  CSmartPointer<CQUAYInterfaceConfig> config;
  if (const std::uint32_t code = FindAdapter(request, &config); code != kReplyOk)
    return FailureReply(code, request.GetText());
  if (const WStringView reason = RefusalFor(ObstaclesOf(*config)); !reason.empty()) {
    LogRefusal(request);
    return RefusalReply(reason, request.GetText());
  }
  if (!TakeProfile(request, *config)) return FailureReply(kReplyEmptyProfile, request.GetText());
  WString ssid, bssid;
  if (!request.GetString("ssid", &ssid) || !request.GetString("bssid", &bssid))
    return FailureReply(kReplyNoNameOrValue, request.GetText());
  if (bssid.empty()) return FailureReply(kReplyNoTarget, request.GetText());
  config->OpenNoDelay(kConnectWindowMs);
  config->SetUIConnectTarget(ssid, NormalBssid(bssid));
  config->SetString(value::kConnectStatus, u"pending");
  config->SignalMainLoopSemaphore();
  return EchoReply(request.GetText());
}

WString DeleteProfile(const CClientRequest& request) {
  CSmartPointer<CQUAYInterfaceConfig> config;
  if (const std::uint32_t code = FindAdapter(request, &config); code != kReplyOk)
    return FailureReply(code, request.GetText());
  WString ssid;
  request.GetString("ssid", &ssid);
  platform::GUID guid;
  if (!GuidFromText(config->GetGuidText(), &guid))
    return FailureReply(kReplyFailed, request.GetText());
  const auto adapter = CWifiClientContainer::GetInstance().GetInterfaceByGuid(guid);
  if (!adapter || !adapter->DeleteWlanProfile(ssid))
    return FailureReply(kReplyFailed, request.GetText());
  return EchoReply(request.GetText());
}

}  // namespace corvane::commands
