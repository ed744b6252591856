#pragma once
#include "platform/crypto_api.h"

namespace corvane::platform::windows {

// Random numbers, the key of this installation and RSA by CNG (bcrypt.dll, crypt32.dll).
class WindowsCrypto final : public CryptoApi {
 public:
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
};

}  // namespace corvane::platform::windows
