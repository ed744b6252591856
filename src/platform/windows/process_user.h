#pragma once
#include <string>
#include <vector>

namespace corvane::platform::windows {

// The account of this process.
class ProcessUser {
 public:
  ProcessUser();

  // These are this object's; null when the system does not tell.
  void* Sid() const;
  void* OwnerSid() const;  // that of what this process makes, which may be a group

  std::wstring SidText() const;  // "S-1-...", empty likewise

 private:
  std::vector<char> m_User;   // TOKEN_USER
  std::vector<char> m_Owner;  // TOKEN_OWNER
};

}  // namespace corvane::platform::windows
