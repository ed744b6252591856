#include "platform/linux/public_key.h"

#include <openssl/pem.h>
#include <openssl/rsa.h>

#include "platform/linux/host_error.h"
#include "platform/linux/openssl_objects.h"

namespace corvane::platform::linux_host {

std::string EncryptWithPublicKey(const std::string& keyFile, std::string_view plain) {
  const Bio file(BIO_new_file(keyFile.c_str(), "r"));
  if (!file) throw HostError("the service's public key " + keyFile + " cannot be read");
  const EvpKey key(PEM_read_bio_PUBKEY(file.get(), nullptr, nullptr, nullptr));
  if (!key) throw HostError(keyFile + " holds no public key");
  const EvpContext context(EVP_PKEY_CTX_new(key.get(), nullptr));
  std::string block(static_cast<std::size_t>(EVP_PKEY_get_size(key.get())), '\0');
  std::size_t size = block.size();
  if (!context || EVP_PKEY_encrypt_init(context.get()) <= 0 ||
      EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) <= 0 ||
      EVP_PKEY_encrypt(context.get(), reinterpret_cast<unsigned char*>(block.data()), &size,
                       reinterpret_cast<const unsigned char*>(plain.data()), plain.size()) <= 0) {
    throw HostError("the key in " + keyFile + " does not encrypt a token");
  }
  block.resize(size);
  return block;
}

}  // namespace corvane::platform::linux_host
