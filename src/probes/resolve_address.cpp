#include "probes/resolve_address.h"

#include <algorithm>
#include <cstring>

#include "foundation/guarded.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

namespace {

constexpr int kTries = 4;
constexpr std::uint32_t kPauseMs = 100;

std::optional<platform::SOCKADDR_INET> Ask(const char* name, const char* service,
                                           const platform::ADDRINFO& hints) {
  platform::ADDRINFO* list = nullptr;
  if (Os().sockets.getaddrinfo(name, service, &hints, &list) != 0) return std::nullopt;
  std::optional<platform::SOCKADDR_INET> found;
  for (const platform::ADDRINFO* one = list; one && !found; one = one->ai_next) {
    if (one->ai_family != hints.ai_family || !one->ai_addr) continue;
    found.emplace();
    std::memcpy(static_cast<void*>(&*found), one->ai_addr,
                std::min(one->ai_addrlen, sizeof *found));
  }
  GiveBack("CUtils", "freeaddrinfo", [list] { Os().sockets.freeaddrinfo(list); });
  return found;
}

}  // namespace

std::optional<platform::SOCKADDR_INET> ResolveAddress(int flags, const char* name,
                                                      const char* service, platform::WORD family) {
  platform::ADDRINFO hints;
  hints.ai_flags = flags;
  hints.ai_family = family;
  hints.ai_socktype = platform::SOCK_STREAM;
  for (int tries = 0; tries < kTries; ++tries) {
    if (tries > 0) Os().threads.Sleep(kPauseMs);
    auto found = Guarded("CUtils", "ResolveAddress", std::optional<platform::SOCKADDR_INET>(),
                         [&] { return Ask(name, service, hints); });
    if (found) return found;
  }
  return std::nullopt;
}

Ip4Address Ip4Of(const platform::SOCKADDR_INET& address) {
  platform::SOCKADDR_IN in;
  std::memcpy(static_cast<void*>(&in), &address, sizeof in);
  Ip4Address result;
  std::memcpy(&result, in.sin_addr, sizeof result);
  return result;
}

Ip6Address Ip6Of(const platform::SOCKADDR_INET& address) {
  platform::SOCKADDR_IN6 in;
  std::memcpy(static_cast<void*>(&in), &address, sizeof in);
  Ip6Address result;
  std::copy_n(in.sin6_addr, result.size(), result.begin());
  return result;
}

int SizeOf(const platform::SOCKADDR_INET& address) {
  return address.si_family == platform::AF_INET6 ? sizeof(platform::SOCKADDR_IN6)
                                                 : sizeof(platform::SOCKADDR_IN);
}

}  // namespace corvane
