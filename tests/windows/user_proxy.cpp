#include "any_host/user_proxy.h"

#include "platform/windows/win32.h"

namespace corvane::test {

namespace {

constexpr wchar_t kUser[] = L"SOFTWARE\\CorvaneTestUser";
constexpr wchar_t kConnections[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Connections";

::HKEY Machine() { return static_cast<::HKEY>(HKEY_LOCAL_MACHINE); }

}  // namespace

// A user of the test's own, whose key this process takes for its user's.
struct UserProxy::Settings {
  Settings() {
    ::RegCreateKeyExW(Machine(), kUser, 0, nullptr, 0, KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr,
                      &key, nullptr);
    ::RegOverridePredefKey(HKEY_CURRENT_USER, key);
  }
  ~Settings() {
    ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    ::RegCloseKey(key);
    ::RegDeleteTreeW(Machine(), kUser);
  }
  Settings(const Settings&) = delete;
  Settings& operator=(const Settings&) = delete;

  ::HKEY key = nullptr;
};

UserProxy::UserProxy() : m_pSettings(std::make_unique<Settings>()) {}
UserProxy::~UserProxy() = default;

// As the control panel keeps it: mark, count of changes, flags, and texts behind their lengths.
void UserProxy::Set(const std::string& proxy, const std::string& bypass) {
  constexpr ::DWORD kMark = 0x46, kDirect = 1, kProxy = 2;
  std::string record;
  const auto add = [&record](::DWORD number) {
    record.append(reinterpret_cast<const char*>(&number), sizeof(number));
  };
  add(kMark);
  add(1);
  add(proxy.empty() ? kDirect : kDirect | kProxy);
  for (const std::string& text : {proxy, bypass, std::string()}) {
    add(static_cast<::DWORD>(text.size()));
    record += text;
  }
  record.resize(record.size() + 32);
  ::RegSetKeyValueW(m_pSettings->key, kConnections, L"DefaultConnectionSettings", REG_BINARY,
                    record.data(), static_cast<::DWORD>(record.size()));
}

}  // namespace corvane::test
