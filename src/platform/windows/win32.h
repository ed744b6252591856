#pragma once
// The only door to <windows.h>. The seam's headers come first, since windows.h makes macros of
// names that they declare as constants (INFINITE, ERROR_SUCCESS); from here on such a name is the
// macro, of the same value. A type that both have (DWORD, HANDLE) is the seam's inside the
// namespace, and the system's with "::" before it.
#include "platform/clock_api.h"
#include "platform/console_api.h"
#include "platform/crypto_api.h"
#include "platform/driver_api.h"
#include "platform/event_trace_api.h"
#include "platform/file_api.h"
#include "platform/heap_api.h"
#include "platform/http_api.h"
#include "platform/icmp_api.h"
#include "platform/ip_helper_api.h"
#include "platform/network_list_api.h"
#include "platform/perf_counter_api.h"
#include "platform/pipe_api.h"
#include "platform/power_api.h"
#include "platform/registry_api.h"
#include "platform/service_api.h"
#include "platform/session_api.h"
#include "platform/socket_api.h"
#include "platform/thread_api.h"
#include "platform/window_api.h"
#include "platform/wlan_api.h"

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
// Sockets come before windows.h, and the rest behind it.
// clang-format off
#include <winsock2.h>
#include <ws2tcpip.h>
#include <windows.h>
#include <bcrypt.h>
#include <conio.h>
#include <evntprov.h>
#include <iphlpapi.h>
#include <icmpapi.h>
#include <netioapi.h>
#include <netlistmgr.h>
#include <pdh.h>
#include <powrprof.h>
#include <sddl.h>
#include <shlobj.h>
#include <tlhelp32.h>
#include <userenv.h>
#include <wincrypt.h>
#include <winhttp.h>
#include <wlanapi.h>
#include <wtsapi32.h>
// clang-format on
#undef Yield  // a macro of Windows 3, and a function of the simulated scheduler

#include <type_traits>

namespace corvane::platform::windows {

// The same memory by the system's type of the same layout.
template <typename To, typename From>
To* As(From* from) {
  static_assert(std::is_void_v<To> || std::is_void_v<From> || sizeof(To) == sizeof(From));
  static_assert(std::is_void_v<To> || std::is_void_v<From> || alignof(To) == alignof(From));
  return reinterpret_cast<To*>(from);
}
// The system's DWORD and ULONG are `unsigned long`, of 32 bits like the seam's.
inline ::DWORD* As32(std::uint32_t* number) { return reinterpret_cast<::DWORD*>(number); }
inline const wchar_t* Wide(const char16_t* text) { return reinterpret_cast<const wchar_t*>(text); }
inline wchar_t* Wide(char16_t* text) { return reinterpret_cast<wchar_t*>(text); }

}  // namespace corvane::platform::windows
