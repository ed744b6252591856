#include "store/registry.h"

#include <algorithm>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "store/value_names.h"

namespace corvane {

namespace {

using namespace platform;

constexpr int kAttempts = 5;
constexpr std::uint32_t kPauseMs = 10;

// An open key, closed at the end of the scope.
class OpenKey {
 public:
  OpenKey() = default;
  OpenKey(WStringView path, REGSAM access) { Open(path, access); }
  ~OpenKey() {
    if (m_hKey) GiveBack("CRegistry", "RegCloseKey", [this] { Os().registry.RegCloseKey(m_hKey); });
  }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;

  LSTATUS Open(WStringView path, REGSAM access) {
    return Os().registry.RegOpenKeyExW(HKEY_LOCAL_MACHINE, WString(path).c_str(), 0, access,
                                       &m_hKey);
  }
  LSTATUS Create(WStringView path) {
    return Os().registry.RegCreateKeyExW(HKEY_LOCAL_MACHINE, WString(path).c_str(), KEY_ALL_ACCESS,
                                         &m_hKey);
  }
  HKEY Get() const { return m_hKey; }
  explicit operator bool() const { return m_hKey != nullptr; }

 private:
  HKEY m_hKey = nullptr;
};

// Calls attempt() up to 5 times, 10 ms apart, until it gives 0; the last result.
template <typename Attempt>
LSTATUS WithRetries(Attempt&& attempt) {
  LSTATUS result = 0;
  for (int i = 0; i < kAttempts; ++i) {
    if (i > 0) Os().threads.Sleep(kPauseMs);
    result = attempt();
    if (result == 0) break;
  }
  return result;
}

template <typename T>
bool ReadNumber(WStringView path, WStringView name, DWORD wanted, T* out) {
  const OpenKey key(path, KEY_READ);
  if (!key) return false;
  T value = 0;
  DWORD type = 0, size = sizeof(value);
  if (Os().registry.RegQueryValueExW(key.Get(), WString(name).c_str(), &type,
                                     reinterpret_cast<BYTE*>(&value), &size) != 0 ||
      type != wanted || size != sizeof(value)) {
    return false;
  }
  *out = value;
  return true;
}

WString Join(WStringView path, WStringView name) {
  WString whole(path);
  whole += u'\\';
  return whole += name;
}

}  // namespace

CRegistry::CRegistry(WString keyPath) : m_KeyPath(std::move(keyPath)) {}

bool CRegistry::GetRegistryDWORDValue(WStringView subkey, WStringView name,
                                      std::uint32_t* out) const {
  return ReadNumber(subkey, name, REG_DWORD, out);
}

bool CRegistry::GetRegistryDWORDValue(WStringView name, std::uint32_t* out) const {
  return ReadNumber(m_KeyPath, name, REG_DWORD, out);
}

bool CRegistry::GetRegistryQWORDValue(WStringView name, std::uint64_t* out) const {
  return ReadNumber(m_KeyPath, name, REG_QWORD, out);
}

bool CRegistry::GetRegistryStringValue(WStringView name, WString* out) const {
  const OpenKey key(m_KeyPath, KEY_READ);
  if (!key) return false;
  // One query with room for the longest text: the value may change between two.
  char16_t buffer[kLongestTextBytes / sizeof(char16_t)];
  DWORD type = 0, size = sizeof(buffer);
  if (Os().registry.RegQueryValueExW(key.Get(), WString(name).c_str(), &type,
                                     reinterpret_cast<BYTE*>(buffer), &size) != 0 ||
      type != REG_SZ) {
    return false;
  }
  const WStringView text(buffer, std::min<std::size_t>(size / sizeof(char16_t), std::size(buffer)));
  out->assign(text.substr(0, text.find(u'\0')));  // another writer's may hold its terminator
  return true;
}

bool CRegistry::SetRegistryDWORDValue(WStringView name, std::uint32_t value) {
  std::uint32_t stored = 0;
  if (GetRegistryDWORDValue(name, &stored) && stored == value) return true;
  return WriteRegistryDWORDParameter(m_KeyPath, name, value);
}

bool CRegistry::SetRegistryStringValue(WStringView name, WStringView text) {
  WString stored;
  if (GetRegistryStringValue(name, &stored) && stored == text) return true;
  return WriteRegistryStringParameter(m_KeyPath, name, text);
}

bool CRegistry::WriteRegistryDWORDParameter(WStringView subkey, WStringView name,
                                            std::uint32_t value) {
  OpenKey key;
  if (const LSTATUS result = WithRetries([&] { return key.Open(subkey, KEY_WRITE); });
      result != 0) {
    LOG_ERROR(u"\nWriteRegistryDWORDParameter: Error %li opening hive 0x%p subkey: %s", result,
              HKEY_LOCAL_MACHINE, subkey);
    return false;
  }
  if (Os().registry.RegSetValueExW(key.Get(), WString(name).c_str(), REG_DWORD,
                                   reinterpret_cast<const BYTE*>(&value), sizeof(value)) != 0) {
    LOG_ERROR(u"\nWriteRegistryDWORDParameter: - RegSetValueEx: FAILED to write %lu to value: %s",
              value, name);
    return false;
  }
  return true;
}

bool CRegistry::WriteRegistryStringParameter(WStringView subkey, WStringView name,
                                             WStringView text) {
  OpenKey key;
  if (const LSTATUS result = WithRetries([&] { return key.Open(subkey, KEY_WRITE); });
      result != 0) {
    LOG_ERROR(u"\nWriteRegistryStringParameter: Error %li opening hive 0x%p subkey: %s", result,
              HKEY_LOCAL_MACHINE, subkey);
    return false;
  }
  if (Os().registry.RegSetValueExW(key.Get(), WString(name).c_str(), REG_SZ,
                                   reinterpret_cast<const BYTE*>(text.data()),
                                   static_cast<DWORD>(text.size() * sizeof(char16_t))) != 0) {
    LOG_ERROR(u"\nWriteRegistryStringParameter() - RegSetValueEx: FAILED to write %s to value: %s",
              text, name);
    return false;
  }
  return true;
}

bool CRegistry::CreateHomeKey(WStringView path) {
  return WithRetries([&] { return OpenKey().Create(path); }) == 0;
}

bool CRegistry::DeleteRegistryValue(WStringView name) {
  const OpenKey key(m_KeyPath, KEY_WRITE);
  if (!key) return false;
  const WString nameText(name);
  return WithRetries([&] {
           const LSTATUS result = Os().registry.RegDeleteValueW(key.Get(), nameText.c_str());
           return result == static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND) ? LSTATUS{0} : result;
         }) == 0;
}

bool CRegistry::SetAdapterEnabled(WStringView guidText, std::uint32_t value) {
  const WString path = Join(m_KeyPath, guidText);
  std::uint32_t stored = 0;
  if (ReadNumber(path, value::kAdapterEnabled, REG_DWORD, &stored) && stored == value) return true;
  return WriteRegistryDWORDParameter(path, value::kAdapterEnabled, value);
}

CRegistryHelperBase::CRegistryHelperBase() = default;
CRegistryHelperBase::~CRegistryHelperBase() = default;

bool CRegistryHelperBase::InitializeRegistry(WStringView path, bool* fresh) {
  *fresh = false;
  auto registry = CRegistry::CreateObject(WString(path));
  bool made = true;
  if (!path.empty()) {
    if (WithRetries([&] { return OpenKey().Open(path, KEY_WRITE); }) != 0) *fresh = true;
    made = CRegistry::CreateHomeKey(path);
    std::uint32_t done = 0;
    if (!registry->GetRegistryDWORDValue(value::kFreshDone, &done) || done != 1) *fresh = true;
    if (!made) LOG_ERROR(u"CRegistry::Initialize: CreateHomeKey() failed, homekeypath=%s", path);
  }
  const CCritSecLock lock(m_Lock);
  m_pRegistry.Swap(registry);
  return made;
}

void CRegistryHelperBase::ReleaseRegistry() {
  CSmartPointer<CRegistry> released;
  const CCritSecLock lock(m_Lock);
  m_pRegistry.Swap(released);
}

CSmartPointer<CRegistry> CRegistryHelperBase::GetRegistry() const {
  const CCritSecLock lock(m_Lock);
  return m_pRegistry;
}

bool CRegistryHelperBase::GetDWORD(WStringView name, std::uint32_t* out) const {
  const auto registry = GetRegistry();
  return registry && registry->GetRegistryDWORDValue(name, out);
}

bool CRegistryHelperBase::SetDWORD(WStringView name, std::uint32_t number) {
  const auto registry = GetRegistry();
  return registry && registry->SetRegistryDWORDValue(name, number);
}

bool CRegistryHelperBase::GetString(WStringView name, WString* out) const {
  const auto registry = GetRegistry();
  return registry && registry->GetRegistryStringValue(name, out);
}

bool CRegistryHelperBase::SetString(WStringView name, WStringView text) {
  const auto registry = GetRegistry();
  return registry && registry->SetRegistryStringValue(name, text);
}

}  // namespace corvane
