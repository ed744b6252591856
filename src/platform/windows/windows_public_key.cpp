#include "platform/windows/windows_public_key.h"

#include "platform/base64.h"
#include "platform/rsa_blobs.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/windows/crypto_libraries.h"
#include "platform/windows/whole_file.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_error.h"

namespace corvane::platform::windows {

namespace {

constexpr std::size_t kMostBytes = 65'536;

::UCHAR* Bytes(const char* bytes) { return reinterpret_cast<::UCHAR*>(const_cast<char*>(bytes)); }

// The block; empty on failure.
std::string Encrypt(const RsaPublicKey& numbers, std::string_view plain) {
  const SystemLibrary& bcrypt = BcryptLibrary();
  const auto open = CORVANE_FIND(bcrypt, BCryptOpenAlgorithmProvider);
  const auto import = CORVANE_FIND(bcrypt, BCryptImportKeyPair);
  const auto encrypt = CORVANE_FIND(bcrypt, BCryptEncrypt);
  const auto destroy = CORVANE_FIND(bcrypt, BCryptDestroyKey);
  const auto close = CORVANE_FIND(bcrypt, BCryptCloseAlgorithmProvider);
  if (!open || !import || !encrypt || !destroy || !close) return {};
  const std::string blob = ToCngPublicBlob(numbers);
  std::string block(numbers.modulus.size(), '\0');
  ::ULONG size = 0;
  ::BCRYPT_ALG_HANDLE algorithm = nullptr;
  ::BCRYPT_KEY_HANDLE key = nullptr;
  if (open(&algorithm, L"RSA", nullptr, 0) < 0) return {};
  if (import(algorithm, nullptr, BCRYPT_RSAPUBLIC_BLOB, &key, Bytes(blob.data()),
             static_cast<::ULONG>(blob.size()), 0) >= 0) {
    const auto length = static_cast<::ULONG>(plain.size());
    if (encrypt(key, Bytes(plain.data()), length, nullptr, nullptr, 0, Bytes(block.data()),
                static_cast<::ULONG>(block.size()), &size, BCRYPT_PAD_PKCS1) < 0) {
      size = 0;
    }
    destroy(key);
  }
  close(algorithm, 0);
  block.resize(size);
  return block;
}

}  // namespace

std::string EncryptWithPublicKey(const std::u16string& keyFile, std::string_view plain) {
  const std::string name = sim::ToUtf8(keyFile);
  std::string text;
  if (const DWORD code = ReadWholeFile(keyFile, kMostBytes, &text); code != ERROR_SUCCESS) {
    throw WindowsError("the service's public key " + name + " cannot be read: " + ErrorText(code));
  }
  const auto der = FromBase64WithHeaders(text);
  const auto key = der ? DecodePublicKey(*der) : std::nullopt;
  if (!key) throw WindowsError(name + " holds no public key");
  std::string block = Encrypt(*key, plain);
  if (block.empty()) throw WindowsError("the key in " + name + " does not encrypt a token");
  return block;
}

}  // namespace corvane::platform::windows
