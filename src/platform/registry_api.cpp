#include "platform/registry_api.h"

namespace corvane::platform {

LSTATUS RegistryApi::RegOpenKeyExW(HKEY, LPCWSTR, DWORD, REGSAM, HKEY*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

LSTATUS RegistryApi::RegCreateKeyExW(HKEY, LPCWSTR, REGSAM, HKEY*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

LSTATUS RegistryApi::RegCloseKey(HKEY) { return ERROR_CALL_NOT_IMPLEMENTED; }

LSTATUS RegistryApi::RegQueryValueExW(HKEY, LPCWSTR, DWORD*, BYTE*, DWORD*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

LSTATUS RegistryApi::RegSetValueExW(HKEY, LPCWSTR, DWORD, const BYTE*, DWORD) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

LSTATUS RegistryApi::RegDeleteValueW(HKEY, LPCWSTR) { return ERROR_CALL_NOT_IMPLEMENTED; }

LSTATUS RegistryApi::RegQueryInfoKeyW(HKEY, DWORD*, DWORD*) { return ERROR_CALL_NOT_IMPLEMENTED; }

LSTATUS RegistryApi::RegEnumKeyExW(HKEY, DWORD, char16_t*, DWORD*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

}  // namespace corvane::platform
