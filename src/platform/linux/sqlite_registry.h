#pragma once
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry_api.h"

namespace corvane::platform::sim {
class SeamGate;
}

namespace corvane::platform::linux_host {

// The registry as an SQLite database in WAL mode. A value is a row of the table `registry`:
//
//   key    path of the key below HKEY_LOCAL_MACHINE, compared without regard to ASCII case
//   name   name of the value, compared likewise; '' for the default value
//   type   'REG_SZ', 'REG_DWORD', 'REG_QWORD', another type by its number
//   value  text for REG_SZ, a whole number for REG_DWORD and REG_QWORD (a QWORD as a signed one);
//          bytes where the data does not have the form of its type
//
// Keys without values are in `registry_keys`. Each write is on the disk when its call returns.
// Other processes may read, and write, while the service runs; what they write is seen at the next
// query.
class SqliteRegistry final : public RegistryApi {
 public:
  // How long a writer of another process is waited for, in life, while the database is opened. A
  // later call waits less, since its caller may hold locks that every thread of the service needs;
  // then it fails with ERROR_SHARING_VIOLATION.
  static constexpr int kOpeningBusyMs = 5000;
  static constexpr int kBusyMs = 250;

  // Opens or makes the database. A file that cannot be read as one is set aside, under a name with
  // the time, and a fresh one is made; *notice tells so, and is empty otherwise. Throws HostError
  // when that cannot be done either, when the disk fails, when another program holds the database,
  // or when a newer version of this program made it.
  SqliteRegistry(sim::SeamGate& gate, const std::string& path, std::string* notice);
  ~SqliteRegistry() override;

  LSTATUS RegOpenKeyExW(HKEY root, LPCWSTR path, DWORD options, REGSAM access, HKEY* key) override;
  LSTATUS RegCreateKeyExW(HKEY root, LPCWSTR path, REGSAM access, HKEY* key) override;
  LSTATUS RegCloseKey(HKEY key) override;
  LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* type, BYTE* data, DWORD* size) override;
  LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD type, const BYTE* data, DWORD size) override;
  LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name) override;
  LSTATUS RegQueryInfoKeyW(HKEY key, DWORD* subKeys, DWORD* values) override;
  LSTATUS RegEnumKeyExW(HKEY key, DWORD index, char16_t* name, DWORD* chars) override;

  std::size_t OpenHandles() const;

 private:
  struct Connection;  // the database with its statements
  struct Handle {
    std::u16string path;
    REGSAM access = 0;
  };

  LSTATUS Open(HKEY root, LPCWSTR path, REGSAM access, bool create, HKEY* key);
  std::optional<Handle> Find(HKEY key) const;

  sim::SeamGate& m_Gate;
  mutable std::mutex m_Mutex;  // guards all below
  std::unique_ptr<Connection> m_pConnection;
  std::map<std::uintptr_t, Handle> m_Handles;
  std::uintptr_t m_LastHandle = 0;
};

}  // namespace corvane::platform::linux_host
