#pragma once
// The plain Windows types and codes that the seam speaks in, declared by this program so that every
// platform reads them alike. Sizes are those of 64-bit Windows.

#include <cstdint>
#include <string>
#include <string_view>

namespace corvane::platform {

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using ULONGLONG = std::uint64_t;
using BOOL = std::int32_t;
using HRESULT = std::int32_t;
using HANDLE = void*;
using LPCWSTR = const char16_t*;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;

struct GUID {
  std::uint32_t Data1 = 0;
  std::uint16_t Data2 = 0;
  std::uint16_t Data3 = 0;
  std::uint8_t Data4[8] = {};
  friend bool operator==(const GUID&, const GUID&) = default;
};
static_assert(sizeof(GUID) == 16);

struct FILETIME {
  DWORD dwLowDateTime = 0;
  DWORD dwHighDateTime = 0;
};

struct SYSTEMTIME {
  WORD wYear = 0, wMonth = 0, wDayOfWeek = 0, wDay = 0;
  WORD wHour = 0, wMinute = 0, wSecond = 0, wMilliseconds = 0;
};

// System error codes (winerror.h).
inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_INVALID_DATA = 13;
inline constexpr DWORD ERROR_GEN_FAILURE = 31;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
inline constexpr DWORD ERROR_FILE_EXISTS = 80;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_BUFFER_OVERFLOW = 111;
inline constexpr DWORD ERROR_CALL_NOT_IMPLEMENTED = 120;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_BAD_PATHNAME = 161;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_NO_DATA = 232;
inline constexpr DWORD ERROR_MORE_DATA = 234;
inline constexpr DWORD ERROR_NO_MORE_ITEMS = 259;
inline constexpr DWORD ERROR_TOO_MANY_POSTS = 298;
inline constexpr DWORD ERROR_SERVICE_NOT_ACTIVE = 1062;
inline constexpr DWORD ERROR_NOT_FOUND = 1168;
inline constexpr DWORD ERROR_INVALID_STATE = 5023;

// HRESULTs.
inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003u);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001u);
inline constexpr HRESULT CO_E_NOTINITIALIZED = static_cast<HRESULT>(0x800401F0u);

// A system error code as an HRESULT; one that is an HRESULT already stays as it is.
constexpr HRESULT HRESULT_FROM_WIN32(DWORD code) {
  const auto value = static_cast<HRESULT>(code);
  return value <= 0 ? value : static_cast<HRESULT>((code & 0xFFFF) | 0x80070000u);
}

// Results and limits of waits.
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
inline constexpr DWORD INFINITE = 0xFFFFFFFF;

// The separator of paths that this program builds itself.
#ifdef _WIN32
inline constexpr char16_t kPathSeparator = u'\\';
#else
inline constexpr char16_t kPathSeparator = u'/';
#endif

// What a structured exception is on a platform without them: a service throws it to say that the
// call itself faulted. Only Guarded() of the foundation catches it.
struct PlatformFault {
  DWORD code = 0;  // exception code, such as 0xC0000005
};

// Thrown inside a thread that its owner has given up on (ThreadApi::TerminateThread), so that it
// unwinds. Never caught by the program; the platform's thread frame catches it.
struct ThreadAbandoned {};

}  // namespace corvane::platform
