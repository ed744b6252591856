// What the Windows host's crypto makes of the system's answers.

#include <gtest/gtest.h>

#include <cstring>

#include "any_host/host_kernel.h"
#include "any_host/rsa_vectors.h"
#include "platform/base64.h"
#include "platform/rsa_blobs.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_crypto.h"

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
::BOOL WINAPI DecodeFaulting(::DWORD, const char*, const ::BYTE*, ::DWORD, ::DWORD,
                             CRYPT_DECODE_PARA*, void*, ::DWORD*) {
  return *static_cast<volatile ::BOOL*>(reinterpret_cast<void*>(0x10));
}

void* Knowing(const char* function) {
  return std::strcmp(function, "CryptDecodeObjectEx") == 0 ? reinterpret_cast<void*>(&Decode)
                                                           : nullptr;
}
void* Faulting(const char*) { return reinterpret_cast<void*>(&DecodeFaulting); }
void* Nothing(const char*) { return nullptr; }

}  // namespace

class WindowsCryptoTest : public testing::Test, protected HostKernel {
 protected:
  static BOOL DecodeBy(WindowsCrypto& crypto, const BYTE* bytes, DWORD size, void* info,
                       DWORD* infoSize) {
    return crypto.CryptDecodeObjectEx(0x10001, kPrivateKeyStruct, bytes, size, 7, info, infoSize);
  }

  const SystemLibrary knowing{&Knowing};
  const SystemLibrary faulting{&Faulting};
  const SystemLibrary nothing{&Nothing};
};

TEST_F(WindowsCryptoTest, TakesTheSystemsBlobWhereThereIsOne) {
  WindowsCrypto crypto(nothing, knowing);
  DWORD size = 0;
  BYTE info[3] = {};
  EXPECT_TRUE(DecodeBy(crypto, reinterpret_cast<const BYTE*>("abc"), 3, info, &size));
  EXPECT_EQ(size, 3u);
  EXPECT_EQ(info[2], 'c');
  EXPECT_FALSE(DecodeBy(crypto, info, 0, info, &size));
  EXPECT_EQ(threads.GetLastError(), static_cast<DWORD>(CRYPT_E_ASN1_EOD));
  EXPECT_FALSE(crypto.CryptDecodeObjectEx(1, "another", info, 3, 0, nullptr, &size));
}

TEST_F(WindowsCryptoTest, AFaultIsAFailureOfThatOneOperation) {
  WindowsCrypto crypto(nothing, faulting);
  DWORD size = 0;
  EXPECT_THROW(DecodeBy(crypto, nullptr, 0, nullptr, &size), PlatformFault);
}

TEST_F(WindowsCryptoTest, SaysThatTheSystemLacksTheLibrary) {
  WindowsCrypto crypto(nothing, nothing);
  DWORD size = 0;
  EXPECT_FALSE(crypto.CryptStringToBinaryA("text", 0, 0, nullptr, &size));
  EXPECT_EQ(threads.GetLastError(), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
  threads.SetLastError(0);
  EXPECT_FALSE(DecodeBy(crypto, nullptr, 0, nullptr, &size));
  EXPECT_EQ(threads.GetLastError(), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
  void* handle = nullptr;
  EXPECT_EQ(crypto.BCryptOpenAlgorithmProvider(&handle, u"RSA"), STATUS_NOT_IMPLEMENTED);
  EXPECT_EQ(crypto.BCryptImportKeyPair(nullptr, CAPIPRIVATEBLOB, &handle, nullptr, 0),
            STATUS_NOT_IMPLEMENTED);
  EXPECT_EQ(crypto.BCryptDecrypt(nullptr, nullptr, 0, nullptr, 0, &size, 2),
            STATUS_NOT_IMPLEMENTED);
  EXPECT_EQ(crypto.BCryptDestroyKey(nullptr), STATUS_NOT_IMPLEMENTED);
  EXPECT_EQ(crypto.BCryptCloseAlgorithmProvider(nullptr), STATUS_NOT_IMPLEMENTED);
  std::string text;
  EXPECT_EQ(crypto.ReadClientKey(&text), DWORD{ERROR_FILE_NOT_FOUND});  // no home was told
}

}  // namespace corvane::test
