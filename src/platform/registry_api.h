#pragma once
#include "platform/types.h"

namespace corvane::platform {

using HKEY = void*;
using REGSAM = DWORD;
using LSTATUS = LONG;

// Predefined keys are 32-bit values with their sign extended (winreg.h).
inline const HKEY HKEY_LOCAL_MACHINE =
    reinterpret_cast<HKEY>(static_cast<std::intptr_t>(static_cast<std::int32_t>(0x80000002u)));
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_WRITE = 0x20006;
inline constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_MULTI_SZ = 7;
inline constexpr DWORD REG_QWORD = 11;

// The registry: keys by path (separator '\', compared without regard to case), each with typed
// values by name. A value that was set outlives the process when the call has returned; a power cut
// within the next seconds may lose it on Windows, which writes its registry lazily. Results are
// error codes. Safe for use from every thread.
class RegistryApi {
 public:
  virtual ~RegistryApi() = default;
  virtual LSTATUS RegOpenKeyExW(HKEY root, LPCWSTR path, DWORD options, REGSAM access, HKEY* key);
  // Creates the key and its parents where missing.
  virtual LSTATUS RegCreateKeyExW(HKEY root, LPCWSTR path, REGSAM access, HKEY* key);
  virtual LSTATUS RegCloseKey(HKEY key);
  // `size` holds the buffer's bytes going in and the value's bytes coming out; ERROR_MORE_DATA when
  // the buffer is too small; a null buffer asks for the size alone.
  virtual LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* type, BYTE* data, DWORD* size);
  virtual LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD type, const BYTE* data, DWORD size);
  virtual LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name);
  // How many keys lie directly below, and how many values the key has; either may be null.
  virtual LSTATUS RegQueryInfoKeyW(HKEY key, DWORD* subKeys, DWORD* values);
  // The name of the key at `index` below: *chars is the room with the NUL going in, the length
  // without it coming out; ERROR_NO_MORE_ITEMS past the last.
  virtual LSTATUS RegEnumKeyExW(HKEY key, DWORD index, char16_t* name, DWORD* chars);
};

}  // namespace corvane::platform
