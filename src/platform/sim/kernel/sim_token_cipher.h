#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace corvane::platform::sim {

// Stands for RSA of 2,048 bits: blocks of 256 bytes with the padding of PKCS#1 v1.5, under a key
// that both sides know. No secret is safe in it; a block that was touched fails as in life.
namespace token_cipher {

inline constexpr std::size_t kBlockSize = 256;
inline constexpr std::size_t kMostPlain = kBlockSize - 11;

// None when the plain text is too long.
std::optional<std::string> Encrypt(std::string_view plain, std::string_view key);
// None when it is no block or its padding is not that of a block of this key.
std::optional<std::string> Decrypt(std::string_view block, std::string_view key);

}  // namespace token_cipher

}  // namespace corvane::platform::sim
