#include "engine/registry_key.h"

#include <algorithm>
#include <iterator>

#include "foundation/guarded.h"
#include "platform/platform.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char kClassName[] = "CLBRegistryKey";

// The type and the bytes of a value; false where there is none.
bool Query(HKEY key, LPCWSTR name, DWORD wanted, void* data, DWORD* size) {
  if (!key) return false;
  DWORD type = 0;
  const LSTATUS result = Guarded(kClassName, "Query", static_cast<LSTATUS>(ERROR_GEN_FAILURE), [&] {
    return Os().registry.RegQueryValueExW(key, name, &type, static_cast<BYTE*>(data), size);
  });
  return result == 0 && type == wanted;
}

}  // namespace

CLBRegistryKey::CLBRegistryKey(const WString& path) {
  Guarded(kClassName, "Open", static_cast<LSTATUS>(ERROR_GEN_FAILURE), [&] {
    return Os().registry.RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &m_hKey);
  });
}

CLBRegistryKey::~CLBRegistryKey() {
  if (m_hKey) GiveBack(kClassName, "Close", [this] { Os().registry.RegCloseKey(m_hKey); });
}

std::optional<std::uint32_t> CLBRegistryKey::Number(LPCWSTR name) const {
  std::uint32_t value = 0;
  DWORD size = sizeof(value);
  if (!Query(m_hKey, name, REG_DWORD, &value, &size) || size != sizeof(value)) return std::nullopt;
  return value;
}

WString CLBRegistryKey::Text(LPCWSTR name) const {
  char16_t buffer[256] = {};
  DWORD size = sizeof(buffer);
  if (!Query(m_hKey, name, REG_SZ, buffer, &size)) return {};
  const WStringView text(buffer, std::min<std::size_t>(size / sizeof(char16_t), std::size(buffer)));
  return WString(text.substr(0, text.find(u'\0')));
}

}  // namespace corvane
