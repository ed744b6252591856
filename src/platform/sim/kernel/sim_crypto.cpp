#include "platform/sim/kernel/sim_crypto.h"

#include <cstring>

#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform::sim {

// A version 4 UUID (RFC 4122, 4.4), as the system makes them.
HRESULT SimCrypto::CoCreateGuid(GUID* guid) {
  if (const DWORD code = m_Gate.Enter("CoCreateGuid"); code != ERROR_SUCCESS) {
    return HRESULT_FROM_WIN32(code);
  }
  const std::uint64_t halves[2] = {m_Random.Next(), m_Random.Next()};
  guid->Data1 = static_cast<std::uint32_t>(halves[0]);
  guid->Data2 = static_cast<std::uint16_t>(halves[0] >> 32);
  guid->Data3 = static_cast<std::uint16_t>((halves[0] >> 48 & 0x0FFF) | 0x4000);
  std::memcpy(guid->Data4, &halves[1], sizeof guid->Data4);
  guid->Data4[0] = static_cast<std::uint8_t>((guid->Data4[0] & 0x3F) | 0x80);
  return S_OK;
}

}  // namespace corvane::platform::sim
