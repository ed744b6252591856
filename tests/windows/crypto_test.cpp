// What the Windows host's crypto makes of the system's answers.

#include <gtest/gtest.h>

#include <cstring>

#include "any_host/host_kernel.h"
#include "any_host/rsa_vectors.h"
#include "platform/base64.h"
#include "platform/rsa_blobs.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_crypto.h"
#include "windows/faulty_library.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;

namespace {

constexpr char kPrivateKeyStruct[] = "PKCS_RSA_PRIVATE_KEY";

// A crypt32.dll that knows private keys.
::BOOL WINAPI Decode(::DWORD encoding, const char* type, const ::BYTE* encoded, ::DWORD size,
                     ::DWORD flags, CRYPT_DECODE_PARA* parameters, void* info, ::DWORD* infoSize) {
  EXPECT_EQ(encoding, 0x10001u);
  EXPECT_EQ(type, PKCS_RSA_PRIVATE_KEY);
  EXPECT_EQ(flags, 7u);
  EXPECT_EQ(parameters, nullptr);
  if (size == 0) {
    ::SetLastError(static_cast<::DWORD>(CRYPT_E_ASN1_EOD));
    return FALSE;
  }
  if (info) std::memcpy(info, encoded, 3);
  *infoSize = 3;
  return TRUE;
}
void* Knowing(const char* function) {
  return std::strcmp(function, "CryptDecodeObjectEx") == 0 ? reinterpret_cast<void*>(&Decode)
                                                           : nullptr;
}

std::vector<Operation<CryptoApi>> Operations() {
  static DWORD size;
  static BYTE byte;
  return {
      {"CryptStringToBinaryA",
       [](auto& it) { return CodeOf(it.CryptStringToBinaryA("a", 0, 0, nullptr, &size)); }},
      {"CryptDecodeObjectEx",
       [](auto& it) {
         return CodeOf(it.CryptDecodeObjectEx(1, kPrivateKeyStruct, &byte, 1, 0, nullptr, &size));
       }},
  };
}

// Those that answer by a status.
std::vector<Operation<CryptoApi>> StatusOperations() {
  static DWORD size;
  static void* handle;
  static BYTE byte;
  static const std::string blob =
      ToCapiPrivateBlob(*DecodePrivateKey(*FromBase64WithHeaders(kVectorKey)));
  return {
      {"BCryptOpenAlgorithmProvider",
       [](auto& it) { return it.BCryptOpenAlgorithmProvider(&handle, u"RSA"); }},
      {"BCryptImportKeyPair",
       [](auto& it) {
         return it.BCryptImportKeyPair(nullptr, CAPIPRIVATEBLOB, &handle,
                                       reinterpret_cast<const BYTE*>(blob.data()),
                                       static_cast<DWORD>(blob.size()));
       }},
      {"BCryptDecrypt",
       [](auto& it) { return it.BCryptDecrypt(nullptr, &byte, 1, &byte, 1, &size, 2); }},
      {"BCryptDestroyKey", [](auto& it) { return it.BCryptDestroyKey(nullptr); }},
      {"BCryptCloseAlgorithmProvider",
       [](auto& it) { return it.BCryptCloseAlgorithmProvider(nullptr); }},
  };
}

}  // namespace

class WindowsCryptoTest : public testing::Test, protected HostKernel {
 protected:
  static BOOL DecodeBy(WindowsCrypto& crypto, const BYTE* bytes, DWORD size, void* info,
                       DWORD* infoSize) {
    return crypto.CryptDecodeObjectEx(0x10001, kPrivateKeyStruct, bytes, size, 7, info, infoSize);
  }

  const SystemLibrary knowing{&Knowing};
};

TEST_F(WindowsCryptoTest, TakesTheSystemsBlobWhereThereIsOne) {
  WindowsCrypto crypto(kMissing, knowing);
  DWORD size = 0;
  BYTE info[3] = {};
  EXPECT_TRUE(DecodeBy(crypto, reinterpret_cast<const BYTE*>("abc"), 3, info, &size));
  EXPECT_EQ(size, 3u);
  EXPECT_EQ(info[2], 'c');
  EXPECT_FALSE(DecodeBy(crypto, info, 0, info, &size));
  EXPECT_EQ(threads.GetLastError(), static_cast<DWORD>(CRYPT_E_ASN1_EOD));
  EXPECT_FALSE(crypto.CryptDecodeObjectEx(1, "another", info, 3, 0, nullptr, &size));
}

TEST_F(WindowsCryptoTest, AFaultOrAMissingLibraryIsTheFailureOfOneOperation) {
  WindowsCrypto missing(kMissing, kMissing), faulting(kFaulting, kFaulting);
  ExpectFailures<CryptoApi>(Operations(), missing, faulting);
  ExpectFailures<CryptoApi>(StatusOperations(), missing, faulting, STATUS_NOT_IMPLEMENTED);
  std::string text;
  EXPECT_EQ(missing.ReadClientKey(&text), DWORD{ERROR_FILE_NOT_FOUND});  // no home was told
}

}  // namespace corvane::test
