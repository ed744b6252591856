#include "platform/windows/windows_registry_reader.h"

#include <cstring>
#include <optional>
#include <vector>

#include "platform/sim/kernel/sim_text.h"
#include "platform/utf.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_error.h"

namespace corvane::platform::windows {

namespace {

constexpr ::DWORD kMostNameChars = 16'384;  // with the NUL
constexpr std::size_t kUsualBytes = 65'536;

// A key, closed at the end of its scope.
class OpenKey {
 public:
  explicit OpenKey(::HKEY key) : m_hKey(key) {}
  ~OpenKey() { ::RegCloseKey(m_hKey); }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;

 private:
  const ::HKEY m_hKey;
};

// None for what is too short to be one.
template <typename Number>
std::optional<std::string> NumberText(const std::vector<::BYTE>& data, ::DWORD size) {
  Number number{};
  if (size < sizeof(number)) return std::nullopt;
  std::memcpy(&number, data.data(), sizeof(number));
  return std::to_string(number);
}

// A text need not end with a NUL, nor have whole characters.
std::string TextOf(const std::vector<::BYTE>& data, ::DWORD size) {
  std::u16string text(size / sizeof(char16_t), u'\0');
  if (!text.empty()) std::memcpy(text.data(), data.data(), text.size() * sizeof(char16_t));
  text.resize(std::min(text.size(), text.find(u'\0')));
  return sim::ToUtf8(text);
}

std::optional<std::string> ValueText(::DWORD type, const std::vector<::BYTE>& data, ::DWORD size) {
  if (type == REG_SZ || type == REG_EXPAND_SZ) return TextOf(data, size);
  if (type == REG_DWORD) return NumberText<std::uint32_t>(data, size);
  if (type == REG_QWORD) return NumberText<std::uint64_t>(data, size);
  return std::nullopt;
}

[[noreturn]] void Fail(::LSTATUS code) {
  throw WindowsError("the registry cannot be read: " + ErrorText(static_cast<DWORD>(code)));
}

}  // namespace

std::map<std::string, std::string> ReadRegistryValues(std::string_view key) {
  const std::u16string path = ToUtf16(key);
  std::map<std::string, std::string> values;
  ::HKEY opened = nullptr;
  const ::LSTATUS found =
      ::RegOpenKeyExW(static_cast<::HKEY>(HKEY_LOCAL_MACHINE), Wide(path.c_str()), 0,
                      KEY_QUERY_VALUE | KEY_WOW64_64KEY, &opened);
  if (found == ERROR_FILE_NOT_FOUND) return values;
  if (found != ERROR_SUCCESS) Fail(found);
  const OpenKey open(opened);
  std::u16string name(kMostNameChars, u'\0');
  std::vector<::BYTE> data(kUsualBytes);
  for (::DWORD index = 0;;) {
    ::DWORD nameChars = kMostNameChars;
    ::DWORD size = static_cast<::DWORD>(data.size());
    ::DWORD type = 0;
    const ::LSTATUS code = ::RegEnumValueW(opened, index, Wide(name.data()), &nameChars, nullptr,
                                           &type, data.data(), &size);
    if (code == ERROR_NO_MORE_ITEMS) return values;
    if (code == ERROR_MORE_DATA) {
      data.resize(data.size() * 2);
      continue;
    }
    if (code != ERROR_SUCCESS) Fail(code);
    if (const auto text = ValueText(type, data, size))
      values[sim::ToUtf8(std::u16string_view(name).substr(0, nameChars))] = *text;
    ++index;
  }
}

}  // namespace corvane::platform::windows
