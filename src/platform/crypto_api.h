#pragma once
#include "platform/types.h"

namespace corvane::platform {

// Random numbers of the system.
class CryptoApi {
 public:
  virtual ~CryptoApi() = default;
  virtual HRESULT CoCreateGuid(GUID* guid);
};

}  // namespace corvane::platform
