#pragma once
#include <cstdint>

#include "foundation/smart_obj.h"
#include "foundation/text.h"
#include "platform/registry_api.h"

namespace corvane {

// Paths below HKEY_LOCAL_MACHINE.
inline constexpr char16_t kHomeKeyPath[] = u"SOFTWARE\\OstrelNetworks\\Corvane";
// A longer text value can be written, but not read.
inline constexpr std::size_t kLongestTextBytes = 20480;

// Typed, compare-first access to one key below HKEY_LOCAL_MACHINE. No failure ends a thread: reads
// give false and leave the output alone, writes are logged and give false. Each call opens the key
// anew, so one object serves every thread.
class CRegistry : public SmartObjEx<CRegistry, SmartObj<>> {
 public:
  explicit CRegistry(WString keyPath = {});
  const char* GetClassName() const override { return "CRegistry"; }

  const WString& GetKeyPath() const { return m_KeyPath; }

  // False for a missing value and for one of another type or size.
  bool GetRegistryDWORDValue(WStringView subkey, WStringView name, std::uint32_t* out) const;
  bool GetRegistryDWORDValue(WStringView name, std::uint32_t* out) const;
  bool GetRegistryQWORDValue(WStringView name, std::uint64_t* out) const;
  // At most kLongestTextBytes; a longer value reads as failure.
  bool GetRegistryStringValue(WStringView name, WString* out) const;

  // Write only what differs from the stored value.
  [[nodiscard]] bool SetRegistryDWORDValue(WStringView name, std::uint32_t value);
  [[nodiscard]] bool SetRegistryStringValue(WStringView name, WStringView text);

  // Up to 5 attempts to open, 10 ms apart. `subkey` is below HKEY_LOCAL_MACHINE.
  [[nodiscard]] static bool WriteRegistryDWORDParameter(WStringView subkey, WStringView name,
                                                        std::uint32_t value);
  [[nodiscard]] static bool WriteRegistryStringParameter(WStringView subkey, WStringView name,
                                                         WStringView text);
  [[nodiscard]] static bool CreateHomeKey(WStringView path);
  // True when the value is gone; up to 5 attempts, 10 ms apart.
  [[nodiscard]] bool DeleteRegistryValue(WStringView name);
  // AdapterEnabled in the subkey `guidText` of this key, compare first.
  [[nodiscard]] bool SetAdapterEnabled(WStringView guidText, std::uint32_t value);

 private:
  WString m_KeyPath;
};

// Mix-in through which a class owns a CRegistry. Accessors of the owner do nothing once it is gone.
class CRegistryHelperBase {
 public:
  // Opens the key, making it where it is missing; *fresh tells that its first-run values have yet
  // to be written. False when the key can't be made. An empty path only makes the object.
  [[nodiscard]] bool InitializeRegistry(WStringView path, bool* fresh);
  void ReleaseRegistry();
  CSmartPointer<CRegistry> GetRegistry() const;  // null after release

  // Values of the key; false after release, too.
  bool GetDWORD(WStringView name, std::uint32_t* out) const;
  [[nodiscard]] bool SetDWORD(WStringView name, std::uint32_t number);
  bool GetString(WStringView name, WString* out) const;
  [[nodiscard]] bool SetString(WStringView name, WStringView text);

 protected:
  CRegistryHelperBase();
  ~CRegistryHelperBase();

 private:
  mutable CCritSec m_Lock{"registry holder", LockRank::kLeaf};
  CSmartPointer<CRegistry> m_pRegistry;
};

}  // namespace corvane
