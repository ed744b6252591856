#pragma once
#include "platform/registry_api.h"

namespace corvane::platform::windows {

// The registry, always in its 64-bit view.
class WindowsRegistry final : public RegistryApi {
 public:
  LSTATUS RegOpenKeyExW(HKEY root, LPCWSTR path, DWORD options, REGSAM access, HKEY* key) override;
  LSTATUS RegCreateKeyExW(HKEY root, LPCWSTR path, REGSAM access, HKEY* key) override;
  LSTATUS RegCloseKey(HKEY key) override;
  LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* type, BYTE* data, DWORD* size) override;
  LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD type, const BYTE* data, DWORD size) override;
  LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name) override;
  LSTATUS RegQueryInfoKeyW(HKEY key, DWORD* subKeys, DWORD* values) override;
  LSTATUS RegEnumKeyExW(HKEY key, DWORD index, char16_t* name, DWORD* chars) override;
};

}  // namespace corvane::platform::windows
