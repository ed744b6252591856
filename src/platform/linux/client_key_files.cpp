#include "platform/linux/client_key_files.h"

#include <fcntl.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>

#include "platform/linux/openssl_objects.h"

namespace corvane::platform::linux_host {

namespace {

constexpr int kKeyBits = 2048;
constexpr mode_t kPrivateMode = 0600;
constexpr mode_t kPublicMode = 0644;
constexpr std::size_t kMostBytes = 65'536;  // a key is about 1,700

DWORD CodeOf(int error) {
  switch (error) {
    case ENOENT:
      return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
      return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EROFS:
    case ELOOP:
      return ERROR_ACCESS_DENIED;
    default:
      return ERROR_GEN_FAILURE;
  }
}

// An open file or folder, closed at the end of its scope.
class Descriptor {
 public:
  explicit Descriptor(int value) : m_Value(value) {}
  ~Descriptor() {
    if (m_Value >= 0) close(m_Value);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  bool IsOpen() const { return m_Value >= 0; }
  int Get() const { return m_Value; }

 private:
  const int m_Value;
};

bool Exists(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0;
}

bool Lock(int file) {
  int result;
  do {
    result = flock(file, LOCK_EX);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

DWORD ReadAll(int file, std::string* text) {
  text->assign(kMostBytes, '\0');
  std::size_t size = 0;
  while (size < text->size()) {
    const ssize_t count = read(file, text->data() + size, text->size() - size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return CodeOf(errno);
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
  }
  if (size == 0 || size == text->size()) return ERROR_INVALID_DATA;
  text->resize(size);
  return ERROR_SUCCESS;
}

bool WriteAll(int file, const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t count = write(file, text.data() + done, text.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    done += static_cast<std::size_t>(count);
  }
  return true;
}

// Whole or not at all, and on the disk when it returns: by a temporary file beside it.
DWORD WriteFile(const std::string& path, const std::string& text, mode_t mode) {
  const std::string temporary = path + ".new";
  unlink(temporary.c_str());
  bool written = false;
  {
    const Descriptor file(open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!file.IsOpen()) return CodeOf(errno);
    written = fchmod(file.Get(), mode) == 0 && WriteAll(file.Get(), text) && fsync(file.Get()) == 0;
  }
  if (!written || rename(temporary.c_str(), path.c_str()) != 0) {
    const DWORD code = CodeOf(errno);
    unlink(temporary.c_str());
    return code;
  }
  const Descriptor folder(open(path.substr(0, path.rfind('/')).c_str(), O_RDONLY | O_CLOEXEC));
  if (folder.IsOpen()) fsync(folder.Get());
  return ERROR_SUCCESS;
}

std::string TextOf(BIO* memory) {
  char* data = nullptr;
  const long size = BIO_get_mem_data(memory, &data);
  return size > 0 ? std::string(data, static_cast<std::size_t>(size)) : std::string();
}

std::string MakePrivateText() {
  const EvpKey key(EVP_RSA_gen(static_cast<unsigned int>(kKeyBits)));
  const Bio memory(BIO_new(BIO_s_secmem()));
  const bool made = key && memory &&
                    PEM_write_bio_PrivateKey_traditional(memory.get(), key.get(), nullptr, nullptr,
                                                         0, nullptr, nullptr) == 1;
  return made ? TextOf(memory.get()) : std::string();
}

// Empty when the private half is no key. One with a passphrase is none: nobody is there to ask.
std::string PublicTextOf(const std::string& privateText) {
  const Bio input(BIO_new_mem_buf(privateText.data(), static_cast<int>(privateText.size())));
  const Bio output(BIO_new(BIO_s_mem()));
  if (!input || !output) return {};
  char noPassphrase = '\0';
  const EvpKey key(PEM_read_bio_PrivateKey(input.get(), nullptr, nullptr, &noPassphrase));
  const bool written = key && PEM_write_bio_PUBKEY(output.get(), key.get()) == 1;
  ERR_clear_error();
  return written ? TextOf(output.get()) : std::string();
}

}  // namespace

DWORD ClientKeyFiles::Read(std::string* text) const {
  if (mkdir(Folder().c_str(), 0700) != 0 && errno != EEXIST) return CodeOf(errno);
  const Descriptor folder(open(Folder().c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!folder.IsOpen() || fchmod(folder.Get(), 0700) != 0 || !Lock(folder.Get()))
    return CodeOf(errno);
  DWORD code = ReadPrivate(text);
  if (code == ERROR_FILE_NOT_FOUND && !Exists(Marker())) code = Make(text);
  if (code != ERROR_SUCCESS) return code;
  // Both come after the private half, so that a stop in between is made good at the next start.
  if (!Exists(Marker())) code = WriteFile(Marker(), "", kPrivateMode);
  return code == ERROR_SUCCESS ? KeepPublic(*text) : code;
}

DWORD ClientKeyFiles::ReadPrivate(std::string* text) const {
  const Descriptor file(open(Private().c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  // One that was copied here may be anybody's to read.
  if (!file.IsOpen() || fchmod(file.Get(), kPrivateMode) != 0) return CodeOf(errno);
  return ReadAll(file.Get(), text);
}

// A public half that is there belongs to no key: a private half has never been.
DWORD ClientKeyFiles::Make(std::string* text) const {
  *text = MakePrivateText();
  if (text->empty()) return ERROR_GEN_FAILURE;
  const DWORD code = WritePublic(*text);
  return code == ERROR_SUCCESS ? WriteFile(Private(), *text, kPrivateMode) : code;
}

DWORD ClientKeyFiles::WritePublic(const std::string& privateText) const {
  const std::string text = PublicTextOf(privateText);
  return text.empty() ? ERROR_INVALID_DATA : WriteFile(Public(), text, kPublicMode);
}

// Whoever puts an older private half back has clients' tokens read again. A private half that is no
// key has none, and whoever uses it finds out why.
DWORD ClientKeyFiles::KeepPublic(const std::string& privateText) const {
  const std::string text = PublicTextOf(privateText);
  if (text.empty()) return ERROR_SUCCESS;
  const Descriptor file(open(Public().c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  std::string there;
  if (file.IsOpen() && ReadAll(file.Get(), &there) == ERROR_SUCCESS && there == text)
    return ERROR_SUCCESS;
  return WriteFile(Public(), text, kPublicMode);
}

}  // namespace corvane::platform::linux_host
