#pragma once
#include <string>
#include <string_view>

namespace corvane::platform::windows {

// Encrypts a text of up to 245 bytes with the RSA key of 2,048 bits in a PEM file: one block with
// PKCS#1 v1.5 padding. Throws WindowsError with the reason.
std::string EncryptWithPublicKey(const std::u16string& keyFile, std::string_view plain);

}  // namespace corvane::platform::windows
