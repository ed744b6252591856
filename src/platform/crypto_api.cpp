#include "platform/crypto_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

HRESULT CryptoApi::CoCreateGuid(GUID*) { return E_NOTIMPL; }

DWORD CryptoApi::ReadClientKey(std::string*) { return ERROR_CALL_NOT_IMPLEMENTED; }

BOOL CryptoApi::CryptStringToBinaryA(const char*, DWORD, DWORD, BYTE*, DWORD*) {
  SetNotImplemented();
  return FALSE;
}

BOOL CryptoApi::CryptDecodeObjectEx(DWORD, const char*, const BYTE*, DWORD, DWORD, void*, DWORD*) {
  SetNotImplemented();
  return FALSE;
}

NTSTATUS CryptoApi::BCryptOpenAlgorithmProvider(BCRYPT_ALG_HANDLE*, LPCWSTR) {
  return STATUS_NOT_IMPLEMENTED;
}

NTSTATUS CryptoApi::BCryptImportKeyPair(BCRYPT_ALG_HANDLE, LPCWSTR, BCRYPT_KEY_HANDLE*, const BYTE*,
                                        DWORD) {
  return STATUS_NOT_IMPLEMENTED;
}

NTSTATUS CryptoApi::BCryptDecrypt(BCRYPT_KEY_HANDLE, const BYTE*, DWORD, BYTE*, DWORD, DWORD*,
                                  DWORD) {
  return STATUS_NOT_IMPLEMENTED;
}

NTSTATUS CryptoApi::BCryptDestroyKey(BCRYPT_KEY_HANDLE) { return STATUS_NOT_IMPLEMENTED; }

NTSTATUS CryptoApi::BCryptCloseAlgorithmProvider(BCRYPT_ALG_HANDLE) {
  return STATUS_NOT_IMPLEMENTED;
}

}  // namespace corvane::platform
