#pragma once
#include <string>

namespace corvane::platform::windows {

// Whether this process has the rights of an administrator, elevated.
bool IsAdministrator();

// The folders of an installation, made where they are missing:
//
//   <root>\OstrelNetworks\Corvane          logs, history, public key: the system and administrators
//                                          write, users read
//   <root>\OstrelNetworks\Corvane\private  the private key: the system and whoever runs the service
//
// <root> is %ProgramData%. Rights of folders that exist are set anew, and those of what is in the
// private one; folders of other accounts, and links, are refused.
class WindowsHome {
 public:
  // `root` in UTF-8; empty for %ProgramData%. Throws WindowsError with the folder and the reason.
  explicit WindowsHome(const std::string& root);

  const std::u16string& Root() const { return m_Root; }
  const std::u16string& Path() const { return m_Path; }  // without a separator at its end
  std::u16string PrivatePath() const { return m_Path + u"\\private"; }

  // The folder of the installation without making or touching any, for clients. Empty when the
  // system does not tell.
  static std::u16string Locate(const std::string& root);

  // Removes that folder with all that is in it, and the maker's when nothing else is there. Links
  // inside go without what they lead to; a folder that is a link or another account's stays. Throws
  // WindowsError with the path and the reason.
  static void Remove(const std::string& root);

 private:
  std::u16string m_Root;
  std::u16string m_Path;
};

}  // namespace corvane::platform::windows
