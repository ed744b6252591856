#pragma once
#include "platform/icmp_api.h"
#include "platform/windows/system_library.h"

namespace corvane::platform::windows {

// Echo requests over iphlpapi.dll.
class WindowsIcmp final : public IcmpApi {
 public:
  explicit WindowsIcmp(const SystemLibrary& library = kLibrary) : m_Library(library) {}

  HANDLE IcmpCreateFile() override;
  HANDLE Icmp6CreateFile() override;
  BOOL IcmpCloseHandle(HANDLE icmp) override;
  DWORD IcmpSendEcho(HANDLE icmp, DWORD destination, const void* data, WORD size,
                     const IP_OPTION_INFORMATION* options, void* reply, DWORD replySize,
                     DWORD timeoutMs) override;
  DWORD Icmp6SendEcho2(HANDLE icmp, const SOCKADDR_IN6* source, const SOCKADDR_IN6* destination,
                       const void* data, WORD size, const IP_OPTION_INFORMATION* options,
                       void* reply, DWORD replySize, DWORD timeoutMs) override;

 private:
  static inline constinit const SystemLibrary kLibrary{L"iphlpapi.dll"};

  const SystemLibrary& m_Library;
};

}  // namespace corvane::platform::windows
