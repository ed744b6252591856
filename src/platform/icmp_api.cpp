#include "platform/icmp_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

HANDLE IcmpApi::IcmpCreateFile() {
  SetNotImplemented();
  return nullptr;
}

HANDLE IcmpApi::Icmp6CreateFile() {
  SetNotImplemented();
  return nullptr;
}

BOOL IcmpApi::IcmpCloseHandle(HANDLE) {
  SetNotImplemented();
  return FALSE;
}

DWORD IcmpApi::IcmpSendEcho(HANDLE, DWORD, const void*, WORD, const IP_OPTION_INFORMATION*, void*,
                            DWORD, DWORD) {
  SetNotImplemented();
  return 0;
}

DWORD IcmpApi::Icmp6SendEcho2(HANDLE, const SOCKADDR_IN6*, const SOCKADDR_IN6*, const void*, WORD,
                              const IP_OPTION_INFORMATION*, void*, DWORD, DWORD) {
  SetNotImplemented();
  return 0;
}

}  // namespace corvane::platform
