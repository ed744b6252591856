#include "platform/linux/host_proxies.h"

#include <algorithm>

namespace corvane::platform::linux_host {

namespace {

std::string_view ValueOf(Environment environment, const char* name, const char* other) {
  const char* value = environment(name);
  if ((!value || !*value) && other) value = environment(other);
  return value ? value : "";
}

// "a, .b" as "a;*.b".
std::string BypassOf(std::string_view list) {
  std::string out;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find_first_of(", \t"), list.size());
    const std::string_view entry = list.substr(0, end);
    list.remove_prefix(std::min(end + 1, list.size()));
    if (entry.empty()) continue;
    if (!out.empty()) out += ';';
    if (entry.starts_with('.')) out += '*';
    out += entry;
  }
  return out;
}

}  // namespace

HostProxy ReadProxy(std::string_view text) {
  constexpr std::string_view kHttp = "http://", kScheme = "://";
  HostProxy proxy;
  if (text.starts_with(kHttp)) text.remove_prefix(kHttp.size());
  std::string_view scheme;
  if (const std::size_t at = text.find(kScheme); at != text.npos) {
    scheme = text.substr(0, at + kScheme.size());
    text.remove_prefix(scheme.size());
  }
  text = text.substr(0, text.find('/'));
  if (const std::size_t at = text.rfind('@'); at != text.npos) {
    proxy.credentials = text.substr(0, at);
    text.remove_prefix(at + 1);
  }
  if (!text.empty()) proxy.name.append(scheme).append(text);
  return proxy;
}

std::string HostProxies::Setting() const {
  if (http.name == https.name) return http.name;
  std::string setting;
  if (!http.name.empty()) setting = "http=" + http.name;
  if (!https.name.empty()) {
    if (!setting.empty()) setting += ';';
    setting += "https=" + https.name;
  }
  return setting;
}

HostProxies ReadHostProxies(Environment environment) {
  HostProxies proxies;
  proxies.http = ReadProxy(ValueOf(environment, "http_proxy", nullptr));
  proxies.https = ReadProxy(ValueOf(environment, "https_proxy", "HTTPS_PROXY"));
  proxies.bypass = BypassOf(ValueOf(environment, "no_proxy", "NO_PROXY"));
  return proxies;
}

std::string ProxyFor(std::string_view setting, std::string_view scheme) {
  while (!setting.empty()) {
    const std::size_t end = std::min(setting.find_first_of("; "), setting.size());
    const std::string_view entry = setting.substr(0, end);
    setting.remove_prefix(std::min(end + 1, setting.size()));
    const std::size_t equals = entry.find('=');
    if (equals == entry.npos && !entry.empty()) return std::string(entry);
    if (equals != entry.npos && entry.substr(0, equals) == scheme)
      return std::string(entry.substr(equals + 1));
  }
  return {};
}

}  // namespace corvane::platform::linux_host
