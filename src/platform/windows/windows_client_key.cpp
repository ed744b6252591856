#include "platform/windows/windows_client_key.h"

#include "platform/base64.h"
#include "platform/rsa_blobs.h"
#include "platform/windows/crypto_libraries.h"
#include "platform/windows/long_path.h"
#include "platform/windows/whole_file.h"
#include "platform/windows/win32.h"
#include "platform/wipe.h"

namespace corvane::platform::windows {

namespace {

constexpr ULONG kKeyBits = 2048;
constexpr std::size_t kMostBytes = 65'536;  // a key is about 2,000
constexpr std::string_view kPrivateLabel = "RSA PRIVATE KEY";
constexpr std::string_view kPublicLabel = "PUBLIC KEY";

// A lock that is gone with the process that holds it, as the file's handle is.
class FileLock {
 public:
  explicit FileLock(const std::u16string& path)
      : m_File(::CreateFileW(LongPath(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                             OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {
    ::OVERLAPPED begin{};
    if (m_File == INVALID_HANDLE_VALUE ||
        !::LockFileEx(m_File, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &begin)) {
      m_Error = ::GetLastError();
    }
  }
  // Closing would give the lock back, too, but at some later time (LockFileEx).
  ~FileLock() {
    ::OVERLAPPED begin{};
    if (m_Error == ERROR_SUCCESS) ::UnlockFileEx(m_File, 0, 1, 0, &begin);
    if (m_File != INVALID_HANDLE_VALUE) ::CloseHandle(m_File);
  }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  DWORD Error() const { return m_Error; }

 private:
  const HANDLE m_File;
  DWORD m_Error = ERROR_SUCCESS;
};

// ---- DPAPI ----------------------------------------------------------------------------------

// The result is the system's until LocalFree.
DWORD Taken(::BOOL done, ::DATA_BLOB& result, std::string* bytes) {
  if (!done) return ::GetLastError();
  bytes->assign(reinterpret_cast<const char*>(result.pbData), result.cbData);
  ::SecureZeroMemory(result.pbData, result.cbData);
  ::LocalFree(result.pbData);
  return ERROR_SUCCESS;
}

::DATA_BLOB BlobOf(const std::string& bytes) {
  return {static_cast<::DWORD>(bytes.size()),
          reinterpret_cast<::BYTE*>(const_cast<char*>(bytes.data()))};
}

// Under the machine's key, as the account that runs the service may change. No window asks anybody.
DWORD Protect(const std::string& bytes, std::string* kept) {
  const auto call = CORVANE_FIND(Crypt32Library(), CryptProtectData);
  if (!call) return ERROR_CALL_NOT_IMPLEMENTED;
  ::DATA_BLOB input = BlobOf(bytes);
  ::DATA_BLOB output{};
  const ::BOOL done = call(&input, L"corvane", nullptr, nullptr, nullptr,
                           CRYPTPROTECT_LOCAL_MACHINE | CRYPTPROTECT_UI_FORBIDDEN, &output);
  return Taken(done, output, kept);
}

DWORD Unprotect(const std::string& kept, std::string* bytes) {
  const auto call = CORVANE_FIND(Crypt32Library(), CryptUnprotectData);
  if (!call) return ERROR_CALL_NOT_IMPLEMENTED;
  ::DATA_BLOB input = BlobOf(kept);
  ::DATA_BLOB output{};
  const ::BOOL done =
      call(&input, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &output);
  return Taken(done, output, bytes);
}

// ---- the key --------------------------------------------------------------------------------

// A new key as CNG exports it; empty on failure.
std::string NewKeyBlob() {
  const SystemLibrary& bcrypt = BcryptLibrary();
  const auto open = CORVANE_FIND(bcrypt, BCryptOpenAlgorithmProvider);
  const auto generate = CORVANE_FIND(bcrypt, BCryptGenerateKeyPair);
  const auto finalize = CORVANE_FIND(bcrypt, BCryptFinalizeKeyPair);
  const auto exportKey = CORVANE_FIND(bcrypt, BCryptExportKey);
  const auto destroy = CORVANE_FIND(bcrypt, BCryptDestroyKey);
  const auto close = CORVANE_FIND(bcrypt, BCryptCloseAlgorithmProvider);
  if (!open || !generate || !finalize || !exportKey || !destroy || !close) return {};
  ::BCRYPT_ALG_HANDLE algorithm = nullptr;
  ::BCRYPT_KEY_HANDLE key = nullptr;
  std::string blob;
  if (open(&algorithm, L"RSA", nullptr, 0) < 0) return {};
  if (generate(algorithm, &key, kKeyBits, 0) >= 0) {
    ::ULONG size = 0;
    const wchar_t* const type = BCRYPT_RSAFULLPRIVATE_BLOB;
    if (finalize(key, 0) >= 0 && exportKey(key, nullptr, type, nullptr, 0, &size, 0) >= 0) {
      blob.resize(size);
      auto* const bytes = reinterpret_cast<::UCHAR*>(blob.data());
      if (exportKey(key, nullptr, type, bytes, size, &size, 0) < 0) blob.clear();
    }
    destroy(key);
  }
  close(algorithm, 0);
  return blob;
}

// Empty when the private half is no key.
std::string PublicTextOf(const std::string& privateText) {
  auto der = FromBase64WithHeaders(privateText);
  if (!der) return {};
  const auto key = DecodePrivateKey(*der);
  Wipe(&*der);
  return key ? ToPem(kPublicLabel, EncodePublicKey(*key)) : std::string();
}

}  // namespace

DWORD WindowsClientKey::Read(std::string* text) const {
  const FileLock lock(Lock());
  if (lock.Error() != ERROR_SUCCESS) return lock.Error();
  DWORD code = ReadPrivate(text);
  const bool isNew = IsFileMissing(Marker());
  if (code == ERROR_FILE_NOT_FOUND && isNew) code = Make(text);
  if (code != ERROR_SUCCESS) return code;
  // Both come after the private half, so that a stop in between is made good at the next start.
  if (isNew) code = WriteWholeFile(Marker(), "");
  return code == ERROR_SUCCESS ? KeepPublic(*text) : code;
}

DWORD WindowsClientKey::ReadPrivate(std::string* text) const {
  std::string kept;
  const DWORD code = ReadWholeFile(Private(), kMostBytes, &kept);
  return code == ERROR_SUCCESS ? Unprotect(kept, text) : code;
}

// A public half that is there belongs to no key: a private half has never been.
DWORD WindowsClientKey::Make(std::string* text) const {
  std::string blob = NewKeyBlob();
  const auto key = FromCngFullPrivateBlob(blob);
  Wipe(&blob);
  if (!key) return ERROR_GEN_FAILURE;
  std::string der = EncodePrivateKey(*key);
  *text = ToPem(kPrivateLabel, der);
  Wipe(&der);
  DWORD code = WriteWholeFile(Public(), PublicTextOf(*text));
  std::string kept;
  if (code == ERROR_SUCCESS) code = Protect(*text, &kept);
  return code == ERROR_SUCCESS ? WriteWholeFile(Private(), kept) : code;
}

// Whoever puts an older private half back has clients' tokens read again. A private half that is no
// key has none, and whoever uses it finds out why.
DWORD WindowsClientKey::KeepPublic(const std::string& privateText) const {
  const std::string text = PublicTextOf(privateText);
  if (text.empty()) return ERROR_SUCCESS;
  std::string there;
  if (ReadWholeFile(Public(), kMostBytes, &there) == ERROR_SUCCESS && there == text)
    return ERROR_SUCCESS;
  return WriteWholeFile(Public(), text);
}

}  // namespace corvane::platform::windows
