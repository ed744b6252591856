#include "platform/linux/host_crypto.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <sys/random.h>

#include <array>
#include <cstring>
#include <utility>

#include "platform/base64.h"
#include "platform/linux/openssl_objects.h"
#include "platform/sim/kernel/seam_gate.h"
#include "platform/thread_api.h"
#include "platform/wipe.h"

namespace corvane::platform::linux_host {

namespace {

constexpr DWORD kBadAsn = 0x8009310B;  // CRYPT_E_ASN1_BADTAG
constexpr auto kInvalidHandle = static_cast<NTSTATUS>(0xC0000008);
constexpr auto kInvalidParameter = static_cast<NTSTATUS>(0xC000000D);
constexpr auto kBufferTooSmall = static_cast<NTSTATUS>(0xC0000023);
constexpr auto kNotFound = static_cast<NTSTATUS>(0xC0000225);
constexpr DWORD kPadding = 11;  // bytes of a block that PKCS#1 v1.5 takes at least
constexpr std::size_t kMostBlock = 2048;

// The private key blob of an RSA private key in DER; empty when the bytes are none.
std::string BlobOf(const BYTE* der, DWORD size) {
  const unsigned char* at = der;
  const EvpKey key(d2i_PrivateKey(EVP_PKEY_RSA, nullptr, &at, static_cast<long>(size)));
  std::string blob;
  if (key && at == der + size) {
    const Bio memory(BIO_new(BIO_s_secmem()));
    char* data = nullptr;
    if (memory && i2b_PrivateKey_bio(memory.get(), key.get()) > 0) {
      const long length = BIO_get_mem_data(memory.get(), &data);
      blob.assign(data, static_cast<std::size_t>(length));
    }
  }
  ERR_clear_error();
  return blob;
}

// Bad padding is to be a failure: newer versions answer it with bytes of their own otherwise, and
// older ones do not know the option.
void ForbidInventedBytes(EVP_PKEY_CTX* context) {
  EVP_PKEY_CTX_ctrl_str(context, "rsa_pkcs1_implicit_rejection", "0");
  ERR_clear_error();
}

}  // namespace

struct HostCrypto::Key {
  EvpKey key;
  EvpContext context;  // made once, to decrypt
};

HostCrypto::HostCrypto(sim::SeamGate& gate, ThreadApi& threads, const std::string& home)
    : m_Gate(gate), m_Threads(threads), m_KeyFiles(home) {}
HostCrypto::~HostCrypto() = default;

BOOL HostCrypto::Fail(DWORD code) {
  m_Threads.SetLastError(code);
  return FALSE;
}

// A version 4 UUID (RFC 4122, 4.4).
HRESULT HostCrypto::CoCreateGuid(GUID* guid) {
  if (getrandom(guid, sizeof(*guid), 0) != sizeof(*guid)) return E_FAIL;
  guid->Data3 = static_cast<std::uint16_t>((guid->Data3 & 0x0FFF) | 0x4000);
  guid->Data4[0] = static_cast<std::uint8_t>((guid->Data4[0] & 0x3F) | 0x80);
  return S_OK;
}

DWORD HostCrypto::ReadClientKey(std::string* text) {
  m_Gate.Enter("ReadClientKey");
  return m_KeyFiles.Read(text);
}

// ---- from the key's text to its blob --------------------------------------------------------

BOOL HostCrypto::GiveBytes(std::string_view bytes, void* target, DWORD* size) {
  const DWORD room = *size;
  *size = static_cast<DWORD>(bytes.size());
  if (!target) return TRUE;
  if (room < bytes.size()) return Fail(ERROR_MORE_DATA);
  std::memcpy(target, bytes.data(), bytes.size());
  return TRUE;
}

BOOL HostCrypto::CryptStringToBinaryA(const char* text, DWORD length, DWORD flags, BYTE* data,
                                      DWORD* size) {
  m_Gate.Enter("CryptStringToBinaryA");
  if (flags != CRYPT_STRING_BASE64HEADER) return Fail(ERROR_NOT_SUPPORTED);
  const auto bytes = FromBase64WithHeaders({text, length != 0 ? length : std::strlen(text)});
  return bytes ? GiveBytes(*bytes, data, size) : Fail(ERROR_INVALID_DATA);
}

BOOL HostCrypto::CryptDecodeObjectEx(DWORD, const char* structType, const BYTE* encoded,
                                     DWORD encodedSize, DWORD, void* info, DWORD* infoSize) {
  m_Gate.Enter("CryptDecodeObjectEx");
  if (std::string_view(structType) != PKCS_RSA_PRIVATE_KEY) return Fail(ERROR_FILE_NOT_FOUND);
  const std::string blob = BlobOf(encoded, encodedSize);
  return blob.empty() ? Fail(kBadAsn) : GiveBytes(blob, info, infoSize);
}

// ---- keys -----------------------------------------------------------------------------------

void* HostCrypto::Open(std::shared_ptr<Key> key) {
  const std::lock_guard lock(m_Mutex);
  void* const handle = reinterpret_cast<void*>(m_LastHandle += 4);
  m_Objects.emplace(handle, std::move(key));
  return handle;
}

std::shared_ptr<HostCrypto::Key> HostCrypto::FindKey(BCRYPT_KEY_HANDLE key) const {
  const std::lock_guard lock(m_Mutex);
  const auto found = m_Objects.find(key);
  return found == m_Objects.end() ? nullptr : found->second;
}

NTSTATUS HostCrypto::Close(void* handle) {
  const std::lock_guard lock(m_Mutex);
  return m_Objects.erase(handle) ? NTSTATUS{ERROR_SUCCESS} : kInvalidHandle;
}

NTSTATUS HostCrypto::BCryptOpenAlgorithmProvider(BCRYPT_ALG_HANDLE* algorithm, LPCWSTR name) {
  m_Gate.Enter("BCryptOpenAlgorithmProvider");
  if (std::u16string_view(name) != BCRYPT_RSA_ALGORITHM) return kNotFound;
  *algorithm = Open(nullptr);
  return ERROR_SUCCESS;
}

NTSTATUS HostCrypto::BCryptImportKeyPair(BCRYPT_ALG_HANDLE algorithm, LPCWSTR blobType,
                                         BCRYPT_KEY_HANDLE* key, const BYTE* blob, DWORD size) {
  m_Gate.Enter("BCryptImportKeyPair");
  {
    const std::lock_guard lock(m_Mutex);
    if (!m_Objects.contains(algorithm)) return kInvalidHandle;
  }
  if (std::u16string_view(blobType) != CAPIPRIVATEBLOB) return kInvalidParameter;
  const Bio memory(BIO_new_mem_buf(blob, static_cast<int>(size)));
  auto made = std::make_shared<Key>();
  if (memory) made->key.reset(b2i_PrivateKey_bio(memory.get()));
  if (made->key) made->context.reset(EVP_PKEY_CTX_new(made->key.get(), nullptr));
  EVP_PKEY_CTX* const context = made->context.get();
  const bool usable = context && EVP_PKEY_decrypt_init(context) > 0 &&
                      EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_PADDING) > 0;
  ERR_clear_error();
  if (!usable) return kInvalidParameter;
  ForbidInventedBytes(context);
  *key = Open(std::move(made));
  return ERROR_SUCCESS;
}

NTSTATUS HostCrypto::BCryptDecrypt(BCRYPT_KEY_HANDLE handle, const BYTE* input, DWORD inputSize,
                                   BYTE* output, DWORD outputSize, DWORD* resultSize, DWORD flags) {
  m_Gate.Enter("BCryptDecrypt");
  const auto key = FindKey(handle);
  if (!key) return kInvalidHandle;
  const auto block = static_cast<DWORD>(EVP_PKEY_get_size(key->key.get()));
  if (flags != BCRYPT_PAD_PKCS1 || inputSize != block || block > kMostBlock)
    return kInvalidParameter;
  if (!output) {
    *resultSize = block - kPadding;
    return ERROR_SUCCESS;
  }
  std::array<unsigned char, kMostBlock> plain{};  // OpenSSL wants room for a whole block
  const WipeAtEnd wipe(plain.data(), plain.size());
  std::size_t length = plain.size();
  const int result = EVP_PKEY_decrypt(key->context.get(), plain.data(), &length, input, inputSize);
  ERR_clear_error();
  if (result <= 0) return kInvalidParameter;
  *resultSize = static_cast<DWORD>(length);
  if (outputSize < length) return kBufferTooSmall;
  std::memcpy(output, plain.data(), length);
  return ERROR_SUCCESS;
}

NTSTATUS HostCrypto::BCryptDestroyKey(BCRYPT_KEY_HANDLE key) {
  m_Gate.Enter("BCryptDestroyKey");
  return Close(key);
}

NTSTATUS HostCrypto::BCryptCloseAlgorithmProvider(BCRYPT_ALG_HANDLE algorithm) {
  m_Gate.Enter("BCryptCloseAlgorithmProvider");
  return Close(algorithm);
}

std::size_t HostCrypto::OpenHandles() const {
  const std::lock_guard lock(m_Mutex);
  return m_Objects.size();
}

}  // namespace corvane::platform::linux_host
