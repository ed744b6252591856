#pragma once
#include <string>

#include "platform/types.h"

namespace corvane::platform::windows {

// The key of an installation, an RSA key of 2,048 bits, below its home folder:
//
//   private\client_key.dpapi  the private half (PKCS#1 in base64, under the machine's DPAPI key)
//   private\client_key.made   tells that there has been a key
//   client_key.pub.pem        the public half, for clients
//
// The private half is made once. When it goes missing later it is not made anew, as that would lock
// out every client without a word; the public half is made from it whenever it is missing or
// another key's. The machine's key opens the private half to every account that can read the file,
// so that the folder's rights, which WindowsHome sets, are what guards it.
class WindowsClientKey {
 public:
  explicit WindowsClientKey(std::u16string home) : m_Home(std::move(home)) {}

  // The text of the private half; otherwise a system error code. One caller at a time, also among
  // the processes that share a home folder.
  DWORD Read(std::string* text) const;

 private:
  DWORD ReadPrivate(std::string* text) const;
  DWORD Make(std::string* text) const;
  DWORD KeepPublic(const std::string& privateText) const;

  std::u16string Private() const { return m_Home + u"\\private\\client_key.dpapi"; }
  std::u16string Marker() const { return m_Home + u"\\private\\client_key.made"; }
  std::u16string Lock() const { return m_Home + u"\\private\\client_key.lock"; }
  std::u16string Public() const { return m_Home + u"\\client_key.pub.pem"; }

  std::u16string m_Home;
};

}  // namespace corvane::platform::windows
