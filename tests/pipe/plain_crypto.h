#pragma once
#include <cstring>
#include <string>

#include "platform/crypto_api.h"

namespace corvane::test {

// A cipher that hides nothing, so that a test reads the token that it sends.
class PlainCrypto : public platform::CryptoApi {
 public:
  platform::DWORD ReadClientKey(std::string* text) override {
    *text = "key";
    return platform::ERROR_SUCCESS;
  }
  platform::BOOL CryptStringToBinaryA(const char*, platform::DWORD, platform::DWORD,
                                      platform::BYTE*, platform::DWORD* size) override {
    *size = 1;
    return platform::TRUE;
  }
  platform::BOOL CryptDecodeObjectEx(platform::DWORD, const char*, const platform::BYTE*,
                                     platform::DWORD, platform::DWORD, void*,
                                     platform::DWORD* size) override {
    *size = 1;
    return platform::TRUE;
  }
  platform::NTSTATUS BCryptOpenAlgorithmProvider(platform::BCRYPT_ALG_HANDLE* algorithm,
                                                 platform::LPCWSTR) override {
    *algorithm = this;
    return 0;
  }
  platform::NTSTATUS BCryptImportKeyPair(platform::BCRYPT_ALG_HANDLE, platform::LPCWSTR,
                                         platform::BCRYPT_KEY_HANDLE* key, const platform::BYTE*,
                                         platform::DWORD) override {
    *key = this;
    return 0;
  }
  platform::NTSTATUS BCryptDecrypt(platform::BCRYPT_KEY_HANDLE, const platform::BYTE* input,
                                   platform::DWORD inputSize, platform::BYTE* output,
                                   platform::DWORD, platform::DWORD* resultSize,
                                   platform::DWORD) override {
    ++decryptions;
    *resultSize = inputSize;
    if (output) std::memcpy(output, input, inputSize);
    return 0;
  }

  int decryptions = 0;  // two calls each
};

}  // namespace corvane::test
