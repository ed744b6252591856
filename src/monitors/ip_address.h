#pragma once
#include <array>
#include <cstdint>
#include <vector>

#include "foundation/text.h"
#include "store/address_text.h"

namespace corvane {

using Ip4Address =
    std::uint32_t;  // network byte order: the first byte of the address in memory first
using Ip6Address = std::array<std::uint8_t, 16>;

// As InetNtopW writes them; IPv6 in the form of RFC 5952.
WString Ip4Text(Ip4Address address);
WString Ip6Text(const Ip6Address& address);

// A MAC address as a number, whose low bytes are the address.
using MacValue = std::uint64_t;
MacAddress MacFromValue(MacValue value);
MacList MacsFromValues(const std::vector<MacValue>& values);

}  // namespace corvane
