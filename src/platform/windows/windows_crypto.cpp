#include "platform/windows/windows_crypto.h"

#include <cstring>

#include "platform/rsa_blobs.h"
#include "platform/windows/system_call.h"
#include "platform/wipe.h"

namespace corvane::platform::windows {

namespace {

constexpr auto kInvalidParameter = static_cast<NTSTATUS>(0xC000000D);
constexpr auto kBufferTooSmall = static_cast<NTSTATUS>(0xC0000023);
constexpr DWORD kBadAsn = 0x8009310B;  // CRYPT_E_ASN1_BADTAG
// The seam's constant, whose name is a number's here.
constexpr std::string_view kPrivateKeyStruct = "PKCS_RSA_PRIVATE_KEY";

BOOL Fail(DWORD code) {
  WindowsThreads::KeepLastError(code);
  return FALSE;
}

std::string_view BytesOf(const BYTE* bytes, DWORD size) {
  return {reinterpret_cast<const char*>(bytes), size};
}

::UCHAR* Input(const void* bytes) { return static_cast<::UCHAR*>(const_cast<void*>(bytes)); }

}  // namespace

HRESULT WindowsCrypto::CoCreateGuid(GUID* guid) {
  return Forward("CoCreateGuid", [&] { return ::CoCreateGuid(As<::GUID>(guid)); });
}

DWORD WindowsCrypto::ReadClientKey(std::string* text) {
  EnterGate("ReadClientKey");
  return m_Key ? m_Key->Read(text) : DWORD{ERROR_FILE_NOT_FOUND};
}

// ---- from the key's text to its blob --------------------------------------------------------

BOOL WindowsCrypto::CryptStringToBinaryA(const char* text, DWORD length, DWORD flags, BYTE* data,
                                         DWORD* size) {
  const auto call = CORVANE_FIND(m_Crypt32, CryptStringToBinaryA);
  if (!call) return Fail(ERROR_CALL_NOT_IMPLEMENTED);
  return ForwardOrFail("CryptStringToBinaryA", [&] {
    return call(text, length, flags, data, As32(size), nullptr, nullptr);
  });
}

// The private key blob of an RSA private key, in the words of the system's own function.
BOOL WindowsCrypto::DecodeHere(const BYTE* encoded, DWORD encodedSize, void* info,
                               DWORD* infoSize) {
  const auto key = DecodePrivateKey(BytesOf(encoded, encodedSize));
  std::string blob = key ? ToCapiPrivateBlob(*key) : std::string();
  const WipeAtEnd wipe(blob.data(), blob.size());
  if (blob.empty()) return Fail(kBadAsn);
  const DWORD room = *infoSize;
  *infoSize = static_cast<DWORD>(blob.size());
  if (!info) return TRUE;
  if (room < blob.size()) return Fail(ERROR_MORE_DATA);
  std::memcpy(info, blob.data(), blob.size());
  return TRUE;
}

// A system that does not know the structure (ERROR_FILE_NOT_FOUND) leaves it to be read here.
BOOL WindowsCrypto::CryptDecodeObjectEx(DWORD encoding, const char* structType, const BYTE* encoded,
                                        DWORD encodedSize, DWORD flags, void* info,
                                        DWORD* infoSize) {
  EnterGate("CryptDecodeObjectEx");
  const auto call = CORVANE_FIND(m_Crypt32, CryptDecodeObjectEx);
  if (!call) return Fail(ERROR_CALL_NOT_IMPLEMENTED);
  if (structType != kPrivateKeyStruct) return Fail(ERROR_FILE_NOT_FOUND);
  struct Answer {
    ::BOOL done;
    ::DWORD error;
  };
  const Answer answer = OrFault([&] {
    Answer it{call(encoding, PKCS_RSA_PRIVATE_KEY, encoded, encodedSize, flags, nullptr, info,
                   As32(infoSize)),
              0};
    it.error = ::GetLastError();
    return it;
  });
  if (answer.done) return TRUE;
  if (answer.error != ERROR_FILE_NOT_FOUND) return Fail(answer.error);
  return DecodeHere(encoded, encodedSize, info, infoSize);
}

// ---- keys -----------------------------------------------------------------------------------

NTSTATUS WindowsCrypto::BCryptOpenAlgorithmProvider(BCRYPT_ALG_HANDLE* algorithm, LPCWSTR name) {
  const auto call = CORVANE_FIND(m_Bcrypt, BCryptOpenAlgorithmProvider);
  if (!call) return STATUS_NOT_IMPLEMENTED;
  return Forward("BCryptOpenAlgorithmProvider",
                 [&] { return call(algorithm, Wide(name), nullptr, 0); });
}

NTSTATUS WindowsCrypto::BCryptImportKeyPair(BCRYPT_ALG_HANDLE algorithm, LPCWSTR blobType,
                                            BCRYPT_KEY_HANDLE* key, const BYTE* blob, DWORD size) {
  const auto call = CORVANE_FIND(m_Bcrypt, BCryptImportKeyPair);
  if (!call) return STATUS_NOT_IMPLEMENTED;
  if (std::u16string_view(blobType) != CAPIPRIVATEBLOB) return kInvalidParameter;
  const auto numbers = FromCapiPrivateBlob(BytesOf(blob, size));
  if (!numbers) return kInvalidParameter;
  std::string own = ToCngPrivateBlob(*numbers);
  const WipeAtEnd wipe(own.data(), own.size());
  return Forward("BCryptImportKeyPair", [&] {
    return call(algorithm, nullptr, BCRYPT_RSAPRIVATE_BLOB, key, Input(own.data()),
                static_cast<::ULONG>(own.size()), 0);
  });
}

NTSTATUS WindowsCrypto::BCryptDecrypt(BCRYPT_KEY_HANDLE key, const BYTE* input, DWORD inputSize,
                                      BYTE* output, DWORD outputSize, DWORD* resultSize,
                                      DWORD flags) {
  const auto call = CORVANE_FIND(m_Bcrypt, BCryptDecrypt);
  if (!call) return STATUS_NOT_IMPLEMENTED;
  const NTSTATUS status = Forward("BCryptDecrypt", [&] {
    return call(key, Input(input), inputSize, nullptr, nullptr, 0, output, outputSize,
                As32(resultSize), flags);
  });
  // Asked for the size, some systems find the buffer that is not there too small for it.
  return !output && status == kBufferTooSmall ? NTSTATUS{ERROR_SUCCESS} : status;
}

NTSTATUS WindowsCrypto::BCryptDestroyKey(BCRYPT_KEY_HANDLE key) {
  const auto call = CORVANE_FIND(m_Bcrypt, BCryptDestroyKey);
  if (!call) return STATUS_NOT_IMPLEMENTED;
  return Forward("BCryptDestroyKey", [&] { return call(key); });
}

NTSTATUS WindowsCrypto::BCryptCloseAlgorithmProvider(BCRYPT_ALG_HANDLE algorithm) {
  const auto call = CORVANE_FIND(m_Bcrypt, BCryptCloseAlgorithmProvider);
  if (!call) return STATUS_NOT_IMPLEMENTED;
  return Forward("BCryptCloseAlgorithmProvider", [&] { return call(algorithm, 0); });
}

}  // namespace corvane::platform::windows
