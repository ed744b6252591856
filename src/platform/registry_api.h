#pragma once
#include "platform/types.h"

namespace corvane::platform {

using HKEY = void*;
using REGSAM = DWORD;
using LSTATUS = LONG;

inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(std::uintptr_t{0x80000002});
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_WRITE = 0x20006;
inline constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_QWORD = 11;

// The registry: keys by path (separator '\', compared without regard to case), each with typed
// values by name. A value that was set is durable when the call has returned. Results are error
// codes. Safe for use from every thread.
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
};

}  // namespace corvane::platform
