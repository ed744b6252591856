#pragma once
#include <optional>
#include <string>

#include "platform/crypto_api.h"
#include "platform/windows/crypto_libraries.h"
#include "platform/windows/windows_client_key.h"

namespace corvane::platform::windows {

// Random numbers, the key of this installation and RSA by CNG (bcrypt.dll, crypt32.dll). Blobs of
// the older family are turned into CNG's own here, so that an import is the same everywhere.
class WindowsCrypto final : public CryptoApi {
 public:
  WindowsCrypto() : WindowsCrypto(BcryptLibrary(), Crypt32Library()) {}
  // The libraries outlive it.
  WindowsCrypto(const SystemLibrary& bcrypt, const SystemLibrary& crypt32)
      : m_Bcrypt(bcrypt), m_Crypt32(crypt32) {}

  // Where the key of the installation is (WindowsHome::Path). Before that, there is none to read.
  void SetHome(std::u16string home) { m_Key.emplace(std::move(home)); }

  HRESULT CoCreateGuid(GUID* guid) override;
  DWORD ReadClientKey(std::string* text) override;
  BOOL CryptStringToBinaryA(const char* text, DWORD length, DWORD flags, BYTE* data,
                            DWORD* size) override;
  BOOL CryptDecodeObjectEx(DWORD encoding, const char* structType, const BYTE* encoded,
                           DWORD encodedSize, DWORD flags, void* info, DWORD* infoSize) override;
  NTSTATUS BCryptOpenAlgorithmProvider(BCRYPT_ALG_HANDLE* algorithm, LPCWSTR name) override;
  NTSTATUS BCryptImportKeyPair(BCRYPT_ALG_HANDLE algorithm, LPCWSTR blobType,
                               BCRYPT_KEY_HANDLE* key, const BYTE* blob, DWORD size) override;
  NTSTATUS BCryptDecrypt(BCRYPT_KEY_HANDLE key, const BYTE* input, DWORD inputSize, BYTE* output,
                         DWORD outputSize, DWORD* resultSize, DWORD flags) override;
  NTSTATUS BCryptDestroyKey(BCRYPT_KEY_HANDLE key) override;
  NTSTATUS BCryptCloseAlgorithmProvider(BCRYPT_ALG_HANDLE algorithm) override;

 private:
  static BOOL DecodeHere(const BYTE* encoded, DWORD encodedSize, void* info, DWORD* infoSize);

  const SystemLibrary& m_Bcrypt;
  const SystemLibrary& m_Crypt32;
  std::optional<WindowsClientKey> m_Key;
};

}  // namespace corvane::platform::windows
