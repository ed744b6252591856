#include "platform/sim/kernel/sim_registry.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform::sim {

namespace {

constexpr REGSAM kQueryValue = 0x1;  // KEY_QUERY_VALUE, part of KEY_READ
constexpr REGSAM kSetValue = 0x2;    // KEY_SET_VALUE, part of KEY_WRITE
constexpr REGSAM kEnumerate = 0x8;   // KEY_ENUMERATE_SUB_KEYS, part of KEY_READ
constexpr std::uintptr_t kHandleStep = 4;

void AppendText(std::u16string& out, std::string_view ascii) {
  out.append(ascii.begin(), ascii.end());
}

void AppendHex(std::u16string& out, std::uint64_t value, int digits) {
  for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4) {
    out += u"0123456789abcdef"[value >> shift & 0xF];
  }
}

std::u16string TextOf(const std::vector<BYTE>& data) {
  std::u16string text(data.size() / 2, u'\0');
  if (!text.empty()) std::memcpy(text.data(), data.data(), text.size() * 2);
  return text.substr(0, text.find(u'\0'));
}

template <typename T>
T NumberOf(const std::vector<BYTE>& data) {
  T value;
  std::memcpy(&value, data.data(), sizeof value);
  return value;
}

}  // namespace

// The registry as the devices see it: without the gate, and not counted.
class SimRegistry::DeviceFace final : public RegistryApi {
 public:
  explicit DeviceFace(SimRegistry& registry) : m_Registry(registry) {}

  LSTATUS RegOpenKeyExW(HKEY root, LPCWSTR path, DWORD, REGSAM access, HKEY* key) override {
    return m_Registry.Open(root, path, access, false, key, true);
  }
  LSTATUS RegCreateKeyExW(HKEY root, LPCWSTR path, REGSAM access, HKEY* key) override {
    return m_Registry.Open(root, path, access, true, key, true);
  }
  LSTATUS RegCloseKey(HKEY key) override { return m_Registry.Close(key); }
  LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* type, BYTE* data, DWORD* size) override {
    return m_Registry.Query(key, name, type, data, size);
  }
  LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD type, const BYTE* data,
                         DWORD size) override {
    return m_Registry.Set(key, name, type, data, size);
  }
  LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name) override { return m_Registry.Delete(key, name); }
  LSTATUS RegQueryInfoKeyW(HKEY key, DWORD* subKeys, DWORD* values) override {
    return m_Registry.Info(key, subKeys, values);
  }
  LSTATUS RegEnumKeyExW(HKEY key, DWORD index, char16_t* name, DWORD* chars) override {
    return m_Registry.Enumerate(key, index, name, chars);
  }

 private:
  SimRegistry& m_Registry;
};

SimRegistry::SimRegistry(SeamGate& gate)
    : m_Gate(gate), m_pDeviceFace(std::make_unique<DeviceFace>(*this)) {}

SimRegistry::~SimRegistry() = default;

RegistryApi& SimRegistry::ForDevices() { return *m_pDeviceFace; }

LSTATUS SimRegistry::RegOpenKeyExW(HKEY root, LPCWSTR path, DWORD, REGSAM access, HKEY* key) {
  const DWORD code = m_Gate.Enter("RegOpenKeyExW", ERROR_ACCESS_DENIED);
  return code != ERROR_SUCCESS ? static_cast<LSTATUS>(code) : Open(root, path, access, false, key);
}

LSTATUS SimRegistry::RegCreateKeyExW(HKEY root, LPCWSTR path, REGSAM access, HKEY* key) {
  const DWORD code = m_Gate.Enter("RegCreateKeyExW", ERROR_ACCESS_DENIED);
  return code != ERROR_SUCCESS ? static_cast<LSTATUS>(code) : Open(root, path, access, true, key);
}

LSTATUS SimRegistry::RegCloseKey(HKEY key) {
  const DWORD code = m_Gate.Enter("RegCloseKey", ERROR_INVALID_HANDLE);
  return code != ERROR_SUCCESS ? static_cast<LSTATUS>(code) : Close(key);
}

LSTATUS SimRegistry::RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* type, BYTE* data,
                                      DWORD* size) {
  const DWORD code = m_Gate.Enter("RegQueryValueExW", ERROR_FILE_NOT_FOUND);
  return code != ERROR_SUCCESS ? static_cast<LSTATUS>(code) : Query(key, name, type, data, size);
}

LSTATUS SimRegistry::RegSetValueExW(HKEY key, LPCWSTR name, DWORD type, const BYTE* data,
                                    DWORD size) {
  DWORD code = m_Gate.Enter("RegSetValueExW", ERROR_ACCESS_DENIED);
  if (code == ERROR_SUCCESS) code = static_cast<DWORD>(Set(key, name, type, data, size));
  if (code == ERROR_SUCCESS) ++m_WriteCount;
  return static_cast<LSTATUS>(code);
}

LSTATUS SimRegistry::RegDeleteValueW(HKEY key, LPCWSTR name) {
  DWORD code = m_Gate.Enter("RegDeleteValueW", ERROR_ACCESS_DENIED);
  if (code == ERROR_SUCCESS) code = static_cast<DWORD>(Delete(key, name));
  if (code == ERROR_SUCCESS) ++m_WriteCount;
  return static_cast<LSTATUS>(code);
}

LSTATUS SimRegistry::RegQueryInfoKeyW(HKEY key, DWORD* subKeys, DWORD* values) {
  const DWORD code = m_Gate.Enter("RegQueryInfoKeyW", ERROR_ACCESS_DENIED);
  return code != ERROR_SUCCESS ? static_cast<LSTATUS>(code) : Info(key, subKeys, values);
}

LSTATUS SimRegistry::RegEnumKeyExW(HKEY key, DWORD index, char16_t* name, DWORD* chars) {
  const DWORD code = m_Gate.Enter("RegEnumKeyExW", ERROR_MORE_DATA);
  return code != ERROR_SUCCESS ? static_cast<LSTATUS>(code) : Enumerate(key, index, name, chars);
}

std::optional<SimRegistry::Handle> SimRegistry::Find(HKEY key) {
  if (key == HKEY_LOCAL_MACHINE) return Handle{&m_Root, KEY_ALL_ACCESS};
  const auto found = m_Handles.find(reinterpret_cast<std::uintptr_t>(key));
  if (found == m_Handles.end()) return std::nullopt;
  return found->second;
}

// Null when a part is missing and is not to be created.
SimRegistry::Key* SimRegistry::Walk(Key& from, std::u16string_view path, bool create) {
  Key* key = &from;
  while (!path.empty()) {
    const std::size_t end = path.find(u'\\');
    const std::u16string_view part = path.substr(0, end);
    path = end == path.npos ? std::u16string_view() : path.substr(end + 1);
    if (part.empty()) continue;
    auto found = key->keys.find(part);
    if (found == key->keys.end()) {
      if (!create) return nullptr;
      found = key->keys.try_emplace(std::u16string(part)).first;
    }
    key = &found->second;
  }
  return key;
}

SimRegistry::Value& SimRegistry::ValueOf(Key& key, std::u16string_view name) {
  const auto found = key.values.find(name);
  return found != key.values.end() ? found->second : key.values[std::u16string(name)];
}

bool SimRegistry::Erase(Key& key, std::u16string_view name) {
  const auto found = key.values.find(name);
  if (found == key.values.end()) return false;
  key.values.erase(found);
  return true;
}

LSTATUS SimRegistry::Open(HKEY root, LPCWSTR path, REGSAM access, bool create, HKEY* key,
                          bool ofDevices) {
  const std::optional<Handle> base = Find(root);
  if (!base) return ERROR_INVALID_HANDLE;
  if (!key) return ERROR_INVALID_PARAMETER;
  if (ViewOf(path).starts_with(u'\\')) return ERROR_BAD_PATHNAME;
  Key* found = Walk(*base->key, ViewOf(path), create);
  if (!found) return ERROR_FILE_NOT_FOUND;
  m_LastHandle += kHandleStep;
  m_Handles[m_LastHandle] = {found, access, ofDevices};
  *key = reinterpret_cast<HKEY>(m_LastHandle);
  return ERROR_SUCCESS;
}

LSTATUS SimRegistry::Close(HKEY key) {
  if (key == HKEY_LOCAL_MACHINE) return ERROR_SUCCESS;
  return m_Handles.erase(reinterpret_cast<std::uintptr_t>(key)) == 1 ? ERROR_SUCCESS
                                                                     : ERROR_INVALID_HANDLE;
}

LSTATUS SimRegistry::Query(HKEY key, LPCWSTR name, DWORD* type, BYTE* data, DWORD* size) {
  const std::optional<Handle> handle = Find(key);
  if (!handle) return ERROR_INVALID_HANDLE;
  if (!(handle->access & kQueryValue)) return ERROR_ACCESS_DENIED;
  if (data && !size) return ERROR_INVALID_PARAMETER;
  const auto found = handle->key->values.find(ViewOf(name));
  if (found == handle->key->values.end()) return ERROR_FILE_NOT_FOUND;
  const Value& value = found->second;
  if (type) *type = value.type;
  if (!size) return ERROR_SUCCESS;
  const DWORD room = *size;
  *size = static_cast<DWORD>(value.data.size());
  if (!data) return ERROR_SUCCESS;
  if (room < *size) return ERROR_MORE_DATA;
  std::copy(value.data.begin(), value.data.end(), data);
  return ERROR_SUCCESS;
}

LSTATUS SimRegistry::Set(HKEY key, LPCWSTR name, DWORD type, const BYTE* data, DWORD size) {
  const std::optional<Handle> handle = Find(key);
  if (!handle) return ERROR_INVALID_HANDLE;
  if (!(handle->access & kSetValue)) return ERROR_ACCESS_DENIED;
  if (!data && size > 0) return ERROR_INVALID_PARAMETER;
  Value& value = ValueOf(*handle->key, ViewOf(name));
  value.type = type;
  value.data.assign(data, data + size);
  return ERROR_SUCCESS;
}

LSTATUS SimRegistry::Delete(HKEY key, LPCWSTR name) {
  const std::optional<Handle> handle = Find(key);
  if (!handle) return ERROR_INVALID_HANDLE;
  if (!(handle->access & kSetValue)) return ERROR_ACCESS_DENIED;
  return Erase(*handle->key, ViewOf(name)) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

LSTATUS SimRegistry::Info(HKEY key, DWORD* subKeys, DWORD* values) {
  const std::optional<Handle> handle = Find(key);
  if (!handle) return ERROR_INVALID_HANDLE;
  if (!(handle->access & kQueryValue)) return ERROR_ACCESS_DENIED;
  if (subKeys) *subKeys = static_cast<DWORD>(handle->key->keys.size());
  if (values) *values = static_cast<DWORD>(handle->key->values.size());
  return ERROR_SUCCESS;
}

LSTATUS SimRegistry::Enumerate(HKEY key, DWORD index, char16_t* name, DWORD* chars) {
  const std::optional<Handle> handle = Find(key);
  if (!handle) return ERROR_INVALID_HANDLE;
  if (!(handle->access & kEnumerate)) return ERROR_ACCESS_DENIED;
  if (!name || !chars) return ERROR_INVALID_PARAMETER;
  const auto& keys = handle->key->keys;
  if (index >= keys.size()) return ERROR_NO_MORE_ITEMS;
  return GiveText(std::next(keys.begin(), index)->first, name, chars) ? ERROR_SUCCESS
                                                                      : ERROR_MORE_DATA;
}

const SimRegistry::Key* SimRegistry::FindKey(std::u16string_view path) const {
  return Walk(const_cast<Key&>(m_Root), path, false);  // without creating it changes nothing
}

const SimRegistry::Value* SimRegistry::FindValue(std::u16string_view path, std::u16string_view name,
                                                 DWORD type) const {
  const Key* key = FindKey(path);
  if (!key) return nullptr;
  const auto found = key->values.find(name);
  return found != key->values.end() && found->second.type == type ? &found->second : nullptr;
}

std::optional<std::u16string> SimRegistry::GetText(std::u16string_view path,
                                                   std::u16string_view name) const {
  const Value* value = FindValue(path, name, REG_SZ);
  return value ? std::optional(TextOf(value->data)) : std::nullopt;
}

std::optional<DWORD> SimRegistry::GetDword(std::u16string_view path,
                                           std::u16string_view name) const {
  const Value* value = FindValue(path, name, REG_DWORD);
  if (!value || value->data.size() != sizeof(DWORD)) return std::nullopt;
  return NumberOf<DWORD>(value->data);
}

std::optional<ULONGLONG> SimRegistry::GetQword(std::u16string_view path,
                                               std::u16string_view name) const {
  const Value* value = FindValue(path, name, REG_QWORD);
  if (!value || value->data.size() != sizeof(ULONGLONG)) return std::nullopt;
  return NumberOf<ULONGLONG>(value->data);
}

void SimRegistry::Put(std::u16string_view path, std::u16string_view name, DWORD type,
                      const void* data, std::size_t size) {
  Value& value = ValueOf(*Walk(m_Root, path, true), name);
  value.type = type;
  const BYTE* bytes = static_cast<const BYTE*>(data);
  value.data.assign(bytes, bytes + size);
}

void SimRegistry::SetText(std::u16string_view path, std::u16string_view name,
                          std::u16string_view text) {
  const std::u16string terminated(text);
  Put(path, name, REG_SZ, terminated.c_str(), (terminated.size() + 1) * 2);
}

void SimRegistry::SetDword(std::u16string_view path, std::u16string_view name, DWORD value) {
  Put(path, name, REG_DWORD, &value, sizeof value);
}

void SimRegistry::SetQword(std::u16string_view path, std::u16string_view name, ULONGLONG value) {
  Put(path, name, REG_QWORD, &value, sizeof value);
}

std::size_t SimRegistry::OpenHandles() const {
  return static_cast<std::size_t>(
      std::ranges::count_if(m_Handles, [](const auto& entry) { return !entry.second.ofDevices; }));
}

bool SimRegistry::HasKey(std::u16string_view path) const { return FindKey(path) != nullptr; }

bool SimRegistry::DeleteValue(std::u16string_view path, std::u16string_view name) {
  Key* key = Walk(m_Root, path, false);
  return key && Erase(*key, name);
}

std::vector<std::u16string> SimRegistry::Subkeys(std::u16string_view path) const {
  std::vector<std::u16string> names;
  if (const Key* key = FindKey(path)) {
    for (const auto& [name, subkey] : key->keys) names.push_back(name);
  }
  return names;
}

std::string SimRegistry::Dump() const {
  std::u16string out;
  DumpKey(m_Root, u"HKEY_LOCAL_MACHINE", out);
  return ToUtf8(out);
}

void SimRegistry::DumpKey(const Key& key, const std::u16string& path, std::u16string& out) {
  if (!key.values.empty()) out += u"[" + path + u"]\n";
  for (const auto& [name, value] : key.values) {
    out += name.empty() ? u"@=" : u"\"" + name + u"\"=";
    if (value.type == REG_SZ) {
      out += u"\"" + TextOf(value.data) + u"\"";
    } else if (value.type == REG_DWORD && value.data.size() == sizeof(DWORD)) {
      AppendText(out, "dword:");
      AppendHex(out, NumberOf<DWORD>(value.data), 8);
    } else if (value.type == REG_QWORD && value.data.size() == sizeof(ULONGLONG)) {
      AppendText(out, "qword:");
      AppendHex(out, NumberOf<ULONGLONG>(value.data), 16);
    } else {
      AppendText(out, "hex(");
      AppendHex(out, value.type, value.type > 0xF ? 8 : 1);
      AppendText(out, "):");
      for (const BYTE byte : value.data) {
        AppendHex(out, byte, 2);
        out += u' ';
      }
    }
    out += u'\n';
  }
  for (const auto& [name, subkey] : key.keys) DumpKey(subkey, path + u"\\" + name, out);
}

}  // namespace corvane::platform::sim
