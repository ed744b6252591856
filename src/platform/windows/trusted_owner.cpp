#include "platform/windows/trusted_owner.h"

#include <vector>

#include "platform/windows/process_user.h"
#include "platform/windows/win32.h"

namespace corvane::platform::windows {

bool HasTrustedOwner(HANDLE object) {
  ::DWORD size = 0;
  ::GetKernelObjectSecurity(object, OWNER_SECURITY_INFORMATION, nullptr, 0, &size);
  std::vector<char> descriptor(size);
  ::PSID owner = nullptr;
  ::BOOL byDefault = FALSE;
  if (size == 0 ||
      !::GetKernelObjectSecurity(object, OWNER_SECURITY_INFORMATION, descriptor.data(), size,
                                 &size) ||
      !::GetSecurityDescriptorOwner(descriptor.data(), &owner, &byDefault) || !owner) {
    return false;
  }
  if (::IsWellKnownSid(owner, WinLocalSystemSid) ||
      ::IsWellKnownSid(owner, WinBuiltinAdministratorsSid)) {
    return true;
  }
  const ProcessUser own;
  return (own.Sid() && ::EqualSid(owner, own.Sid())) ||
         (own.OwnerSid() && ::EqualSid(owner, own.OwnerSid()));
}

}  // namespace corvane::platform::windows
