#include "host/client_token_maker.h"

#include <openssl/pem.h>
#include <openssl/rsa.h>

namespace corvane::test {

using namespace platform::linux_host;

ClientTokenMaker::ClientTokenMaker(const std::string& publicKeyPath) {
  const Bio file(BIO_new_file(publicKeyPath.c_str(), "r"));
  if (file) m_Key.reset(PEM_read_bio_PUBKEY(file.get(), nullptr, nullptr, nullptr));
}

std::string ClientTokenMaker::Encrypt(const std::string& plain, int padding) const {
  const EvpContext context(EVP_PKEY_CTX_new(m_Key.get(), nullptr));
  std::string block(256, '\0');
  std::size_t size = block.size();
  const bool done =
      context && EVP_PKEY_encrypt_init(context.get()) > 0 &&
      EVP_PKEY_CTX_set_rsa_padding(context.get(), padding) > 0 &&
      EVP_PKEY_encrypt(context.get(), reinterpret_cast<unsigned char*>(block.data()), &size,
                       reinterpret_cast<const unsigned char*>(plain.data()), plain.size()) > 0;
  return done ? block : std::string();
}

}  // namespace corvane::test
