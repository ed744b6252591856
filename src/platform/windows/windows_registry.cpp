#include "platform/windows/windows_registry.h"

#include "platform/windows/system_call.h"

namespace corvane::platform::windows {

namespace {

constexpr REGSAM kView = KEY_WOW64_64KEY;

::HKEY Key(HKEY key) { return static_cast<::HKEY>(key); }
::HKEY* Key(HKEY* key) { return reinterpret_cast<::HKEY*>(key); }

}  // namespace

LSTATUS WindowsRegistry::RegOpenKeyExW(HKEY root, LPCWSTR path, DWORD options, REGSAM access,
                                       HKEY* key) {
  return Forward("RegOpenKeyExW", [&] {
    return ::RegOpenKeyExW(Key(root), Wide(path), options, access | kView, Key(key));
  });
}

LSTATUS WindowsRegistry::RegCreateKeyExW(HKEY root, LPCWSTR path, REGSAM access, HKEY* key) {
  return Forward("RegCreateKeyExW", [&] {
    return ::RegCreateKeyExW(Key(root), Wide(path), 0, nullptr, REG_OPTION_NON_VOLATILE,
                             access | kView, nullptr, Key(key), nullptr);
  });
}

LSTATUS WindowsRegistry::RegCloseKey(HKEY key) {
  return Forward("RegCloseKey", [&] { return ::RegCloseKey(Key(key)); });
}

LSTATUS WindowsRegistry::RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* type, BYTE* data,
                                          DWORD* size) {
  return Forward("RegQueryValueExW", [&] {
    return ::RegQueryValueExW(Key(key), Wide(name), nullptr, As32(type), data, As32(size));
  });
}

LSTATUS WindowsRegistry::RegSetValueExW(HKEY key, LPCWSTR name, DWORD type, const BYTE* data,
                                        DWORD size) {
  return Forward("RegSetValueExW",
                 [&] { return ::RegSetValueExW(Key(key), Wide(name), 0, type, data, size); });
}

LSTATUS WindowsRegistry::RegDeleteValueW(HKEY key, LPCWSTR name) {
  return Forward("RegDeleteValueW", [&] { return ::RegDeleteValueW(Key(key), Wide(name)); });
}

LSTATUS WindowsRegistry::RegQueryInfoKeyW(HKEY key, DWORD* subKeys, DWORD* values) {
  return Forward("RegQueryInfoKeyW", [&] {
    return ::RegQueryInfoKeyW(Key(key), nullptr, nullptr, nullptr, As32(subKeys), nullptr, nullptr,
                              As32(values), nullptr, nullptr, nullptr, nullptr);
  });
}

LSTATUS WindowsRegistry::RegEnumKeyExW(HKEY key, DWORD index, char16_t* name, DWORD* chars) {
  return Forward("RegEnumKeyExW", [&] {
    return ::RegEnumKeyExW(Key(key), index, Wide(name), As32(chars), nullptr, nullptr, nullptr,
                           nullptr);
  });
}

}  // namespace corvane::platform::windows
