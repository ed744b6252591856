#pragma once
#include <string>

#include "platform/types.h"

namespace corvane::platform {

using BCRYPT_ALG_HANDLE = void*;
using BCRYPT_KEY_HANDLE = void*;
using NTSTATUS = LONG;

inline constexpr NTSTATUS STATUS_NOT_IMPLEMENTED = static_cast<NTSTATUS>(0xC0000002u);

inline constexpr DWORD CRYPT_STRING_BASE64HEADER = 0;
inline constexpr DWORD X509_ASN_ENCODING = 0x1;
inline constexpr DWORD PKCS_7_ASN_ENCODING = 0x10000;
inline constexpr const char* PKCS_RSA_PRIVATE_KEY = "PKCS_RSA_PRIVATE_KEY";  // RFC 8017, A.1.2
inline constexpr LPCWSTR BCRYPT_RSA_ALGORITHM = u"RSA";
inline constexpr LPCWSTR CAPIPRIVATEBLOB = u"CAPIPRIVATEBLOB";
inline constexpr DWORD BCRYPT_PAD_PKCS1 = 2;

// Random numbers, the key by which clients prove themselves, and RSA. BOOL results leave the reason
// in ThreadApi::GetLastError(); NTSTATUS results are negative on failure. Safe for use from every
// thread; a key serves one thread at a time.
class CryptoApi {
 public:
  virtual ~CryptoApi() = default;
  virtual HRESULT CoCreateGuid(GUID* guid);

  // The private key of this installation: an RSA private key (RFC 8017, A.1.2) in base64 with
  // header lines. It is made, with its public half for clients, when there has never been one; one
  // that is missing or unreadable later is a failure. Readable by the service's account only.
  virtual DWORD ReadClientKey(std::string* text);

  // A null `data` asks for the size. `length` 0: up to the NUL.
  virtual BOOL CryptStringToBinaryA(const char* text, DWORD length, DWORD flags, BYTE* data,
                                    DWORD* size);
  // `structType` is PKCS_RSA_PRIVATE_KEY, and the result a private key blob. A null `info` asks for
  // the size.
  virtual BOOL CryptDecodeObjectEx(DWORD encoding, const char* structType, const BYTE* encoded,
                                   DWORD encodedSize, DWORD flags, void* info, DWORD* infoSize);

  virtual NTSTATUS BCryptOpenAlgorithmProvider(BCRYPT_ALG_HANDLE* algorithm, LPCWSTR name);
  virtual NTSTATUS BCryptImportKeyPair(BCRYPT_ALG_HANDLE algorithm, LPCWSTR blobType,
                                       BCRYPT_KEY_HANDLE* key, const BYTE* blob, DWORD size);
  // A null `output` asks for the greatest size that the plain text may have. A block whose padding
  // is not that of `flags` is a failure, never invented bytes.
  virtual NTSTATUS BCryptDecrypt(BCRYPT_KEY_HANDLE key, const BYTE* input, DWORD inputSize,
                                 BYTE* output, DWORD outputSize, DWORD* resultSize, DWORD flags);
  virtual NTSTATUS BCryptDestroyKey(BCRYPT_KEY_HANDLE key);
  virtual NTSTATUS BCryptCloseAlgorithmProvider(BCRYPT_ALG_HANDLE algorithm);
};

}  // namespace corvane::platform
