#include "platform/crypto_api.h"

namespace corvane::platform {

HRESULT CryptoApi::CoCreateGuid(GUID*) { return E_NOTIMPL; }

}  // namespace corvane::platform
