#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry_api.h"
#include "platform/sim/kernel/sim_text.h"

namespace corvane::platform::sim {

class SeamGate;

// The registry of the simulated PC, in memory. Keys and names are compared without regard to the
// case of ASCII letters and keep the spelling that they were made with. Handles carry their access
// rights.
//
// The program's calls pass the gate; the devices' face (ForDevices) and the plain look-ups, which
// are for tests and worlds, do not. Paths of the look-ups lie under HKEY_LOCAL_MACHINE.
class SimRegistry final : public RegistryApi {
 public:
  explicit SimRegistry(SeamGate& gate);
  ~SimRegistry() override;

  LSTATUS RegOpenKeyExW(HKEY root, LPCWSTR path, DWORD options, REGSAM access, HKEY* key) override;
  LSTATUS RegCreateKeyExW(HKEY root, LPCWSTR path, REGSAM access, HKEY* key) override;
  LSTATUS RegCloseKey(HKEY key) override;
  LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* type, BYTE* data, DWORD* size) override;
  LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD type, const BYTE* data, DWORD size) override;
  LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name) override;
  LSTATUS RegQueryInfoKeyW(HKEY key, DWORD* subKeys, DWORD* values) override;
  LSTATUS RegEnumKeyExW(HKEY key, DWORD index, char16_t* name, DWORD* chars) override;

  RegistryApi& ForDevices();

  // Nothing when the value is missing or has another type. Text ends before its first NUL.
  std::optional<std::u16string> GetText(std::u16string_view path, std::u16string_view name) const;
  std::optional<DWORD> GetDword(std::u16string_view path, std::u16string_view name) const;
  std::optional<ULONGLONG> GetQword(std::u16string_view path, std::u16string_view name) const;
  // These create the key where it is missing.
  void SetText(std::u16string_view path, std::u16string_view name, std::u16string_view text);
  void SetDword(std::u16string_view path, std::u16string_view name, DWORD value);
  void SetQword(std::u16string_view path, std::u16string_view name, ULONGLONG value);
  bool HasKey(std::u16string_view path) const;
  bool DeleteValue(std::u16string_view path, std::u16string_view name);
  // Names of the keys directly under a key, in order.
  std::vector<std::u16string> Subkeys(std::u16string_view path) const;

  // All keys and values in order, in the form of a .reg file; UTF-8.
  std::string Dump() const;
  // Values that the program has set or deleted; look-ups and the devices are not counted.
  std::uint64_t WriteCount() const { return m_WriteCount; }
  std::size_t OpenHandles() const;  // of the program

 private:
  class DeviceFace;

  struct Value {
    DWORD type = 0;
    std::vector<BYTE> data;
  };
  struct Key {
    std::map<std::u16string, Value, FoldedLess> values;
    std::map<std::u16string, Key, FoldedLess> keys;  // by the last part of their paths
  };
  struct Handle {
    Key* key = nullptr;
    REGSAM access = 0;
    bool ofDevices = false;
  };

  // The operations behind the gate.
  LSTATUS Open(HKEY root, LPCWSTR path, REGSAM access, bool create, HKEY* key,
               bool ofDevices = false);
  LSTATUS Close(HKEY key);
  LSTATUS Query(HKEY key, LPCWSTR name, DWORD* type, BYTE* data, DWORD* size);
  LSTATUS Set(HKEY key, LPCWSTR name, DWORD type, const BYTE* data, DWORD size);
  LSTATUS Delete(HKEY key, LPCWSTR name);
  LSTATUS Info(HKEY key, DWORD* subKeys, DWORD* values);
  LSTATUS Enumerate(HKEY key, DWORD index, char16_t* name, DWORD* chars);

  std::optional<Handle> Find(HKEY key);
  const Key* FindKey(std::u16string_view path) const;
  const Value* FindValue(std::u16string_view path, std::u16string_view name, DWORD type) const;
  void Put(std::u16string_view path, std::u16string_view name, DWORD type, const void* data,
           std::size_t size);
  static Value& ValueOf(Key& key, std::u16string_view name);  // made where it is missing
  static bool Erase(Key& key, std::u16string_view name);
  static Key* Walk(Key& from, std::u16string_view path, bool create);
  static void DumpKey(const Key& key, const std::u16string& path, std::u16string& out);

  SeamGate& m_Gate;
  Key m_Root;
  std::map<std::uintptr_t, Handle> m_Handles;
  std::uintptr_t m_LastHandle = 0;
  std::uint64_t m_WriteCount = 0;
  std::unique_ptr<DeviceFace> m_pDeviceFace;
};

}  // namespace corvane::platform::sim
