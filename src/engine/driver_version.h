#pragma once
#include <cstdint>

#include "foundation/text.h"

namespace corvane {

// The version of the machine's Intel wireless driver, four numbers with the first in the top byte;
// 0 when there is none, or when its text is none.
std::uint32_t ReadWlanDriverVersion();

// Of a text of four numbers up to 255 with dots between them; 0 for every other text.
std::uint32_t PackedVersion(WStringView text);

// Wireless drivers before this one do not bear being steered.
inline constexpr std::uint32_t kFirstGoodDriver = 0x14500000;  // 20.80.0.0

}  // namespace corvane
