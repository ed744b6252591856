#pragma once
#include "platform/crypto_api.h"

namespace corvane::platform::linux_host {

// Random numbers of the kernel.
class HostCrypto final : public CryptoApi {
 public:
  HRESULT CoCreateGuid(GUID* guid) override;
};

}  // namespace corvane::platform::linux_host
