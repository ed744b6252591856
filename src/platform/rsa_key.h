#pragma once
// RSA keys as numbers, and as the texts and bytes in which they are kept. Pure.

#include <optional>
#include <string>
#include <string_view>

namespace corvane::platform {

// Numbers are big-endian, without zero bytes before them.
struct RsaPublicKey {
  std::string modulus;
  std::string exponent;
  friend bool operator==(const RsaPublicKey&, const RsaPublicKey&) = default;
};
// The secret numbers are wiped at the end of each object. (Moves are copies.)
struct RsaPrivateKey : RsaPublicKey {
  RsaPrivateKey() = default;
  RsaPrivateKey(const RsaPrivateKey&) = default;
  RsaPrivateKey& operator=(const RsaPrivateKey&) = default;
  ~RsaPrivateKey();

  std::string privateExponent;
  std::string prime1;
  std::string prime2;
  std::string exponent1;    // of prime1
  std::string exponent2;    // of prime2
  std::string coefficient;  // the inverse of prime2 modulo prime1
  friend bool operator==(const RsaPrivateKey&, const RsaPrivateKey&) = default;
};

// RSAPrivateKey of two primes (RFC 8017, A.1.2), in DER. None for what is not exactly one.
std::string EncodePrivateKey(const RsaPrivateKey& key);
std::optional<RsaPrivateKey> DecodePrivateKey(std::string_view der);

// SubjectPublicKeyInfo with the algorithm rsaEncryption (RFC 5280, 4.1; RFC 3279, 2.3.1), in DER.
std::string EncodePublicKey(const RsaPublicKey& key);
std::optional<RsaPublicKey> DecodePublicKey(std::string_view der);

// Lines of 64 characters between "-----BEGIN label-----" and "-----END label-----" (RFC 7468).
std::string ToPem(std::string_view label, std::string_view der);

}  // namespace corvane::platform
