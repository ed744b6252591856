#pragma once
#include <string>

#include "platform/linux/openssl_objects.h"

namespace corvane::test {

// What a client does with the public half of the key.
class ClientTokenMaker {
 public:
  explicit ClientTokenMaker(const std::string& publicKeyPath);

  // One block; `padding` is OpenSSL's. Empty on failure.
  std::string Encrypt(const std::string& plain, int padding) const;

 private:
  platform::linux_host::EvpKey m_Key;
};

}  // namespace corvane::test
