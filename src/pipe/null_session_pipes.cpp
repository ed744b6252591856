#include "pipe/null_session_pipes.h"

#include "foundation/guarded.h"
#include "platform/platform.h"
#include "platform/registry_api.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char16_t kServerKey[] = u"SYSTEM\\CurrentControlSet\\Services\\lanmanserver\\parameters";
constexpr char16_t kListName[] = u"NullSessionPipes";
constexpr REGSAM kQueryAndSet = 0x3;  // KEY_QUERY_VALUE and KEY_SET_VALUE

// An open key, closed at the end of its scope.
class OpenKey {
 public:
  OpenKey() {
    if (Os().registry.RegCreateKeyExW(HKEY_LOCAL_MACHINE, kServerKey, kQueryAndSet, &m_hKey) !=
        ERROR_SUCCESS) {
      m_hKey = nullptr;
    }
  }
  ~OpenKey() {
    if (m_hKey) GiveBack("OpenKey", "RegCloseKey", [this] { Os().registry.RegCloseKey(m_hKey); });
  }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;

  HKEY Get() const { return m_hKey; }  // null on failure

 private:
  HKEY m_hKey = nullptr;
};

std::optional<WString> ReadList(HKEY key) {
  DWORD type = 0, size = 0;
  if (Os().registry.RegQueryValueExW(key, kListName, &type, nullptr, &size) != ERROR_SUCCESS ||
      type != REG_MULTI_SZ) {
    return std::nullopt;
  }
  WString list((size + 1) / sizeof(char16_t), u'\0');
  if (Os().registry.RegQueryValueExW(key, kListName, &type, reinterpret_cast<BYTE*>(list.data()),
                                     &size) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  list.resize(size / sizeof(char16_t));
  return list;
}

}  // namespace

std::optional<WString> WithPipeName(WStringView list, WStringView name) {
  while (!list.empty() && list.back() == u'\0') list.remove_suffix(1);
  WString longer(list);
  while (!list.empty()) {
    const WStringView entry = list.substr(0, list.find(u'\0'));
    if (entry == name) return std::nullopt;
    list.remove_prefix(entry.size() < list.size() ? entry.size() + 1 : list.size());
  }
  if (!longer.empty()) longer += u'\0';
  longer += name;
  longer.append(2, u'\0');
  return longer;
}

void EnsureNullSessionPipe(WStringView name) {
  const OpenKey key;
  const auto list = key.Get() ? ReadList(key.Get()) : std::nullopt;
  const auto longer = list ? WithPipeName(*list, name) : std::nullopt;
  if (!longer) return;
  Os().registry.RegSetValueExW(key.Get(), kListName, REG_MULTI_SZ,
                               reinterpret_cast<const BYTE*>(longer->data()),
                               static_cast<DWORD>(longer->size() * sizeof(char16_t)));
}

}  // namespace corvane
