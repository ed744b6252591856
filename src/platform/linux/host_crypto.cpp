#include "platform/linux/host_crypto.h"

#include <sys/random.h>

namespace corvane::platform::linux_host {

// A version 4 UUID (RFC 4122, 4.4).
HRESULT HostCrypto::CoCreateGuid(GUID* guid) {
  if (getrandom(guid, sizeof(*guid), 0) != sizeof(*guid)) return E_FAIL;
  guid->Data3 = static_cast<std::uint16_t>((guid->Data3 & 0x0FFF) | 0x4000);
  guid->Data4[0] = static_cast<std::uint8_t>((guid->Data4[0] & 0x3F) | 0x80);
  return S_OK;
}

}  // namespace corvane::platform::linux_host
