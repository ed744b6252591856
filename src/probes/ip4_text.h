#pragma once
#include <optional>
#include <string_view>

#include "monitors/ip_address.h"

namespace corvane {

// Four decimal numbers up to 255, joined by points; nothing for any other text.
std::optional<Ip4Address> ReadIp4(std::string_view text);

}  // namespace corvane
