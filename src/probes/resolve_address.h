#pragma once
#include <optional>

#include "monitors/ip_address.h"
#include "platform/socket_api.h"

namespace corvane {

// The first address that getaddrinfo gives for the name, of the family; asks 4 times, 100 ms apart.
// A null name with AI_PASSIVE gives the address to bind to.
std::optional<platform::SOCKADDR_INET> ResolveAddress(int flags, const char* name,
                                                      const char* service, platform::WORD family);

// The address itself of a socket address of that family.
Ip4Address Ip4Of(const platform::SOCKADDR_INET& address);
Ip6Address Ip6Of(const platform::SOCKADDR_INET& address);
// Bytes that the family's socket address takes.
int SizeOf(const platform::SOCKADDR_INET& address);

}  // namespace corvane
