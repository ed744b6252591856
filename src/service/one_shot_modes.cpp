#include "service/one_shot_modes.h"

#include <array>

#include "foundation/hosts.h"
#include "foundation/log_lines.h"
#include "foundation/quiet_reports.h"
#include "launch/tray_message.h"
#include "monitors/adapters_addresses.h"
#include "monitors/network_list_manager.h"
#include "platform/console_api.h"
#include "platform/platform.h"
#include "platform/session_api.h"
#include "service/connect_and_exit.h"
#include "settings/global_config_container.h"
#include "web/statistics_post.h"
#include "web/win_http_helper.h"

namespace corvane {

namespace {

constexpr int kMissingIndexOrSsid = -1, kMissingBssid = -2;
constexpr int kFileUnread = -1, kPostFailed = -2;
constexpr int kTrayNotTold = -1;
constexpr std::size_t kMaxPath = 260;

template <typename... Args>
void Print(WStringView format, const Args&... args) {
  Os().console.WriteOutput(WideToUtf8(Format(format, args...)));
}

std::string TempPath() {
  std::array<char, kMaxPath> buffer{};
  try {
    const platform::DWORD length =
        Os().session.GetTempPathA(static_cast<platform::DWORD>(buffer.size()), buffer.data());
    return length < buffer.size() ? std::string(buffer.data(), length) : std::string();
  } catch (const platform::PlatformFault&) {
    return {};
  }
}

int TestHttp() {
  CWinHTTPHelper helper(kWebTestUrl);
  WString proxy;
  const bool found = ProxyPresent(&proxy);
  Print(found ? u"PROXY FOUND, Calling SyncSendHttpRequest\n"
              : u"NO PROXY FOUND, Calling SyncSendHttpRequest\n");
  const platform::DWORD code = helper.SyncSendHttpRequest(u"GET", false, found, nullptr, 0);
  if (code != platform::ERROR_SUCCESS) {
    Print(u"SyncSendHttpRequest() failed [rc=%lu]\n", code);
    return 0;
  }
  Print(u"SyncSendHttpRequest() succeeded.\n");
  Print(u"response headers:\n%s\n", helper.GetResponseHeaders());
  Print(u"response content:\n%s\n", helper.GetResponseText());
  return 0;
}

int PostFile(const WString& path) {
  std::string text;
  if (!ReadFileToString(path, &text)) return kFileUnread;
  WString proxy;
  return ProxySend(text, ProxyPresent(&proxy)) ? 0 : kPostFailed;
}

int Connect(const CommandLine& line) {
  g_DebugMask = 0;
  if (!line.Has(Option::kIfIndex) || line.Number(Option::kIfIndex) < 0) {
    Print(u"missing ifindex\n");
    return kMissingIndexOrSsid;
  }
  if (!line.Has(Option::kConnect)) {
    Print(u"missing connect arg\n");
    return kMissingIndexOrSsid;
  }
  if (!line.Has(Option::kBssid)) {
    Print(u"missing connect bssid\n");
    return kMissingBssid;
  }
  const WString& ssid = line.Text(Option::kConnect);
  const WString& bssid = line.Text(Option::kBssid);
  Print(u"[%s]got both connect %s and bssid %s\n", line.Program(), ssid, bssid);
  return ConnectAndExit(static_cast<std::uint32_t>(line.Number(Option::kIfIndex)), ssid, bssid);
}

}  // namespace

std::string UserEnvironmentLine() {
  const CQuietReports quiet;  // the line is all that the service wants to read
  std::string path;
  for (const char unit : TempPath()) path.append(unit == '\\' ? 2 : 1, unit);
  WString proxy;
  const bool present = ProxyPresent(&proxy);
  std::string line = "{ \"path\":\"" + path + "\", \"proxy\":\"";
  line += present ? "yes" : "no";
  line += "\", \"proxy_cfg\":\"";
  if (present) line += Narrow(proxy);
  return line + "\" }";
}

std::optional<int> RunOneShotModes(const CommandLine& line) {
  if (line.Has(Option::kUserEnv)) {
    Os().console.WriteOutput(UserEnvironmentLine());
    return 0;
  }
  if (line.Has(Option::kTestHttp)) return TestHttp();
  if (line.Has(Option::kPostFile)) return PostFile(line.Text(Option::kPostFile));
  if (line.Has(Option::kConnect) || line.Has(Option::kBssid)) return Connect(line);
  if (line.Has(Option::kNlmDebug)) {
    const int level = line.Number(Option::kNlmDebug);
    CNetworkListManager::SetDebugLevel(level);
    LOG_INFO(u"-----------------------> NLM DEBUG = %i <-----------------------\n", level);
  }
  if (line.Has(Option::kTestConnect)) {
    LOG_INFO(u"testconnect\n");
    return 0;
  }
  if (line.Has(Option::kDebugVPN)) CAdaptersAddresses::SetVPNTrace(true);
  return std::nullopt;
}

std::optional<int> RunLoggedModes(const CommandLine& line) {
  if (line.Has(Option::kNotifyMsg)) {
    const int index = line.Has(Option::kNotifyInt) ? line.Number(Option::kNotifyInt) : -1;
    return PostMsgToTrayApp(line.Number(Option::kNotifyMsg), index) ? 0 : kTrayNotTold;
  }
  if (line.Has(Option::kForceLQEtw)) {
    LOG_INFO(u"[%s] Enabling forcing of TRELLIS_N_WIFI_QUALITY/2\n\n", line.Program());
    CGlobalConfigContainer::GetInstance().m_bForceLQEtw = true;
  }
  return std::nullopt;
}

}  // namespace corvane
