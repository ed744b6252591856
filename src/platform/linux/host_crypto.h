#pragma once
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/crypto_api.h"
#include "platform/linux/client_key_files.h"

namespace corvane::platform {
class ThreadApi;
}
namespace corvane::platform::sim {
class SeamGate;
}

namespace corvane::platform::linux_host {

// Random numbers of the kernel, the installation's key in files, and RSA by OpenSSL.
class HostCrypto final : public CryptoApi {
 public:
  // `home` is where the key is kept; `threads` keeps the calling thread's last error.
  HostCrypto(sim::SeamGate& gate, ThreadApi& threads, const std::string& home);
  ~HostCrypto() override;

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

  std::size_t OpenHandles() const;

 private:
  struct Key;  // null in the table: the algorithm

  BOOL Fail(DWORD code);
  BOOL GiveBytes(std::string_view bytes, void* target, DWORD* size);
  void* Open(std::shared_ptr<Key> key);
  std::shared_ptr<Key> FindKey(BCRYPT_KEY_HANDLE key) const;
  NTSTATUS Close(void* handle);

  sim::SeamGate& m_Gate;
  ThreadApi& m_Threads;
  const ClientKeyFiles m_KeyFiles;
  mutable std::mutex m_Mutex;  // guards what follows
  std::map<void*, std::shared_ptr<Key>> m_Objects;
  std::uintptr_t m_LastHandle = 0xA00000;
};

}  // namespace corvane::platform::linux_host
