#pragma once
// Texts that worlds are written with, and the values that they stand for. The readers give false,
// and leave the output as it was, for a text that is none of theirs.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sim/world/world.h"

namespace corvane::platform::sim {

// What is not well-formed becomes U+FFFD.
std::u16string FromUtf8(std::string_view text);

// "90s", "1m30s", "2h", "250ms", "1.5s": whole or broken numbers, each with its unit.
bool ReadDuration(std::string_view text, std::uint64_t* ms);
// "02-aa-bb-cc-dd-01", with "-" or ":" between the pairs.
bool ReadMac(std::string_view text, Mac* mac);
// "{01234567-89AB-CDEF-0123-456789ABCDEF}".
bool ReadGuid(std::string_view text, GUID* guid);
// Pairs of hexadecimal digits, nothing between them.
bool ReadHex(std::string_view text, std::string* bytes);
// "192.168.1.20/24", "fe80::1/64"; without a prefix that of the whole address.
bool ReadIpAddress(std::string_view text, IpAddress* address);

std::string MacText(const Mac& mac);  // "02-aa-bb-cc-dd-01"
std::u16string GuidText(
    const GUID& guid);  // as StringFromCLSID writes it, in braces and upper case

}  // namespace corvane::platform::sim
