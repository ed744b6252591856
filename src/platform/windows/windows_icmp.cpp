#include "platform/windows/windows_icmp.h"

#include <cstring>
#include <vector>

#include "platform/windows/library_call.h"

namespace corvane::platform::windows {

namespace {

constexpr DWORD kStatusBlockBytes = 16;  // IO_STATUS_BLOCK

// Read only, though the system's declarations do not say so.
::IP_OPTION_INFORMATION* Options(const IP_OPTION_INFORMATION* options) {
  return As<::IP_OPTION_INFORMATION>(const_cast<IP_OPTION_INFORMATION*>(options));
}
::sockaddr_in6* Address(const SOCKADDR_IN6* address) {
  return As<::sockaddr_in6>(const_cast<SOCKADDR_IN6*>(address));
}

}  // namespace

HANDLE WindowsIcmp::IcmpCreateFile() {
  return NullIfInvalid(
      ForwardOrFailIfFound("IcmpCreateFile", CORVANE_FIND(m_Library, IcmpCreateFile)));
}

HANDLE WindowsIcmp::Icmp6CreateFile() {
  return NullIfInvalid(
      ForwardOrFailIfFound("Icmp6CreateFile", CORVANE_FIND(m_Library, Icmp6CreateFile)));
}

BOOL WindowsIcmp::IcmpCloseHandle(HANDLE icmp) {
  return ForwardOrFailIfFound("IcmpCloseHandle", CORVANE_FIND(m_Library, IcmpCloseHandle), icmp);
}

DWORD WindowsIcmp::IcmpSendEcho(HANDLE icmp, DWORD destination, const void* data, WORD size,
                                const IP_OPTION_INFORMATION* options, void* reply, DWORD replySize,
                                DWORD timeoutMs) {
  return ForwardOrFailIfFound("IcmpSendEcho", CORVANE_FIND(m_Library, IcmpSendEcho), icmp,
                              destination, const_cast<void*>(data), size, Options(options), reply,
                              replySize, timeoutMs);
}

// Without an event and a routine it waits, and the replies need no parsing. It wants room for a
// status block of its own besides what the replies take.
DWORD WindowsIcmp::Icmp6SendEcho2(HANDLE icmp, const SOCKADDR_IN6* source,
                                  const SOCKADDR_IN6* destination, const void* data, WORD size,
                                  const IP_OPTION_INFORMATION* options, void* reply,
                                  DWORD replySize, DWORD timeoutMs) {
  std::vector<std::uint64_t> room((replySize + kStatusBlockBytes + 7) / 8);
  const DWORD replies = ForwardOrFailIfFound(
      "Icmp6SendEcho2", CORVANE_FIND(m_Library, Icmp6SendEcho2), icmp, nullptr, nullptr, nullptr,
      Address(source), Address(destination), const_cast<void*>(data), size, Options(options),
      static_cast<void*>(room.data()), replySize + kStatusBlockBytes, timeoutMs);
  if (replies != 0) std::memcpy(reply, room.data(), replySize);
  return replies;
}

}  // namespace corvane::platform::windows
