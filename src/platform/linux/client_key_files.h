#pragma once
#include <string>

#include "platform/types.h"

namespace corvane::platform::linux_host {

// The key of an installation, an RSA key of 2,048 bits, below its home directory:
//
//   private/client_key.pem   the private half (PKCS#1, 0600, in a folder of 0700)
//   private/client_key.made  tells that there has been a key
//   client_key.pub.pem       the public half, for clients (0644)
//
// The private half is made once. When it goes missing later it is not made anew, as that would lock
// out every client without a word; the public half is made from it whenever it is missing or
// another key's.
class ClientKeyFiles {
 public:
  explicit ClientKeyFiles(std::string home) : m_Home(std::move(home)) {}

  // The text of the private half; otherwise a system error code. One caller at a time, also among
  // the processes that share a home directory.
  DWORD Read(std::string* text) const;

 private:
  DWORD ReadPrivate(std::string* text) const;
  DWORD Make(std::string* text) const;
  DWORD WritePublic(const std::string& privateText) const;
  DWORD KeepPublic(const std::string& privateText) const;

  std::string Folder() const { return m_Home + "/private"; }
  std::string Private() const { return Folder() + "/client_key.pem"; }
  std::string Marker() const { return Folder() + "/client_key.made"; }
  std::string Public() const { return m_Home + "/client_key.pub.pem"; }

  const std::string m_Home;
};

}  // namespace corvane::platform::linux_host
