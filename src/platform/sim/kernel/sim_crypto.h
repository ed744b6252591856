#pragma once
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/crypto_api.h"
#include "platform/sim/kernel/seeded_random.h"

namespace corvane::platform::sim {

class Scheduler;
class SeamGate;

// Random numbers of the simulated PC, a function of the seed, and its clients' key. The key is the
// same on every simulated PC and stands for RSA of 2,048 bits (sim_token_cipher.h).
class SimCrypto final : public CryptoApi {
 public:
  SimCrypto(Scheduler& scheduler, SeamGate& gate, std::uint64_t seed)
      : m_Scheduler(scheduler), m_Gate(gate), m_Random(seed) {}

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

  // What a client puts into its request: the encrypted token in base64. A plain text that is too
  // long for a block gives "".
  static std::string EncryptToken(std::string_view plain);
  // The key's text from now on; none: it is missing.
  void SetClientKey(std::optional<std::string> text) { m_KeyText = std::move(text); }
  std::size_t OpenHandles() const { return m_Objects.size(); }  // algorithms and keys

 private:
  bool Passes(const char* operation, DWORD ordinary);
  BOOL Fail(DWORD code);
  void* Open(std::string key);

  Scheduler& m_Scheduler;
  SeamGate& m_Gate;
  SeededRandom m_Random;
  std::optional<std::string> m_KeyText = ClientKeyText();
  std::uintptr_t m_LastHandle = 0xA00000;
  std::map<void*, std::string> m_Objects;  // the blob of a key; empty for an algorithm

  static std::string ClientKeyText();
};

}  // namespace corvane::platform::sim
