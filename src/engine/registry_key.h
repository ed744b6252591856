#pragma once
// Reading the registry without the store, which lies above this room.

#include <cstdint>
#include <optional>

#include "foundation/text.h"
#include "platform/registry_api.h"

namespace corvane {

// A key below HKEY_LOCAL_MACHINE, open for reading where it exists; closed at the end of the scope.
class CLBRegistryKey {
 public:
  explicit CLBRegistryKey(const WString& path);
  ~CLBRegistryKey();
  CLBRegistryKey(const CLBRegistryKey&) = delete;
  CLBRegistryKey& operator=(const CLBRegistryKey&) = delete;

  explicit operator bool() const { return m_hKey != nullptr; }
  // A DWORD, or nothing where the value is missing or of another type.
  std::optional<std::uint32_t> Number(platform::LPCWSTR name) const;
  // A text of up to 255 characters; empty where it is missing.
  WString Text(platform::LPCWSTR name) const;

 private:
  platform::HKEY m_hKey = nullptr;
};

}  // namespace corvane
