#include "launch/user_environment.h"

#include <rapidjson/document.h>

#include <array>

#include "foundation/log_lines.h"
#include "launch/launcher.h"
#include "platform/platform.h"
#include "platform/session_api.h"

namespace corvane {

namespace {

constexpr std::size_t kMaxPath = 260;
constexpr char16_t kRule[] =
    u"--------------------------------------------------------------------------------";

std::string TextOf(const rapidjson::Document& json, const char* key) {
  const auto member = json.FindMember(key);
  if (member == json.MemberEnd() || !member->value.IsString()) return {};
  return {member->value.GetString(), member->value.GetStringLength()};
}

std::optional<UserEnvironment> AskOwnEnvironment(ProxyProbe probe) {
  std::array<char, kMaxPath> buffer{};
  const platform::DWORD length =
      Os().session.GetTempPathA(static_cast<platform::DWORD>(buffer.size()), buffer.data());
  if (length == 0 || length >= buffer.size()) return std::nullopt;
  UserEnvironment environment;
  environment.tempPath.assign(buffer.data(), length);
  LOG_INFO(u"APPLICATION: USER TEMP PATH:\n[%S]\n", environment.tempPath);
  environment.proxyPresent = probe(&environment.proxyConfig);
  if (environment.proxyPresent) {
    LOG_INFO(u"APPLICATION: Proxy is PRESENT [%s]\n", environment.proxyConfig);
  } else {
    environment.proxyConfig.clear();
    LOG_INFO(u"APPLICATION: Proxy is NOT present\n");
  }
  return environment;
}

std::optional<UserEnvironment> AskUsersSession() {
  std::string json;
  if (!InvokeSelfFromServiceToGetUserTempPath(&json)) {
    LOG_ERROR(u"InvokeSelfFromServiceToGetUserTempPath() FAILED!\n");
    return std::nullopt;
  }
  auto environment = ParseUserEnvironment(json);
  if (!environment) {
    LOG_ERROR(u"InvokeSelfFromServiceToGetUserTempPath() FAILED! - json parse error\n%s\n%S\n%s\n",
              kRule, json, kRule);
    return std::nullopt;
  }
  LOG_INFO(u"SERVICE: USER TEMP PATH:\n[%S]\n", environment->tempPath);
  LOG_INFO(u"SERVICE: PROXYPRESENT:\n[%i]\n\n", environment->proxyPresent);
  return environment;
}

}  // namespace

std::optional<UserEnvironment> ParseUserEnvironment(const std::string& text) {
  rapidjson::Document json;
  json.Parse(text.c_str());
  if (json.HasParseError() || !json.IsObject()) return std::nullopt;
  UserEnvironment environment;
  environment.tempPath = TextOf(json, "path");
  environment.proxyPresent = TextOf(json, "proxy") == "yes";
  if (environment.proxyPresent) environment.proxyConfig = Widen(TextOf(json, "proxy_cfg"));
  return environment;
}

std::optional<UserEnvironment> RefreshUserEnvironment(bool runningAsService, ProxyProbe probe) {
  return runningAsService ? AskUsersSession() : AskOwnEnvironment(probe);
}

}  // namespace corvane
