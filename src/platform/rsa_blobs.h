#pragma once
// RSA keys in the blobs of Windows' two families of functions. Pure.

#include <optional>
#include <string>
#include <string_view>

#include "platform/rsa_key.h"

namespace corvane::platform {

// PRIVATEKEYBLOB of the older family (wincrypt.h): a BLOBHEADER, an RSAPUBKEY and the numbers,
// little-endian, each in the room that the modulus gives it. Empty for a key that has no room
// there: a public exponent of more than 32 bits, primes of unequal length.
std::string ToCapiPrivateBlob(const RsaPrivateKey& key);
std::optional<RsaPrivateKey> FromCapiPrivateBlob(std::string_view blob);

// BCRYPT_RSAPRIVATE_BLOB and BCRYPT_RSAPUBLIC_BLOB (bcrypt.h): a BCRYPT_RSAKEY_BLOB and the
// numbers, big-endian; of the private ones, the primes.
std::string ToCngPrivateBlob(const RsaPrivateKey& key);
std::string ToCngPublicBlob(const RsaPublicKey& key);
// BCRYPT_RSAFULLPRIVATE_BLOB, which has all of them.
std::optional<RsaPrivateKey> FromCngFullPrivateBlob(std::string_view blob);

}  // namespace corvane::platform
