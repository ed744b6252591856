#pragma once
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::platform {

// A TOKEN_USER with its SID behind it, as GetTokenInformation lays it out: S-1-authority-parts.
std::vector<std::uint8_t> MakeTokenUser(std::uint8_t authority,
                                        std::initializer_list<std::uint32_t> parts);
// The SID of a TOKEN_USER that MakeTokenUser made, as text; none when it is not well formed.
std::optional<std::u16string> SidText(const void* tokenUser);

// Whether an SDDL text has a well formed list of access rights, and a label list at most.
bool IsSecurityText(std::u16string_view sddl);

}  // namespace corvane::platform
