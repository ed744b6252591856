#pragma once
#include <openssl/bio.h>
#include <openssl/evp.h>

#include <memory>

namespace corvane::platform::linux_host {

// Objects of OpenSSL, freed at the end of their scope.
struct EvpKeyFree {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
struct EvpContextFree {
  void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
};
struct BioFree {
  void operator()(BIO* bio) const { BIO_free(bio); }
};
using EvpKey = std::unique_ptr<EVP_PKEY, EvpKeyFree>;
using EvpContext = std::unique_ptr<EVP_PKEY_CTX, EvpContextFree>;
using Bio = std::unique_ptr<BIO, BioFree>;

}  // namespace corvane::platform::linux_host
