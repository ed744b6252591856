#include "platform/windows/long_path.h"

#include <algorithm>

#include "platform/windows/win32.h"

namespace corvane::platform::windows {

namespace {

bool IsOfDevice(std::wstring_view path) {
  return path.starts_with(L"\\\\?\\") || path.starts_with(L"\\\\.\\");
}

// Without "." and "..", doubled backslashes and what else the system takes away, since behind the
// prefix it takes every name as it stands. The path itself where that fails.
std::wstring Normal(const std::wstring& path) {
  std::wstring full(path.size() + 1, L'\0');
  const auto size =
      ::GetFullPathNameW(path.c_str(), static_cast<::DWORD>(full.size()), full.data(), nullptr);
  if (size == 0 || size >= full.size()) return path;
  full.resize(size);
  return full;
}

}  // namespace

std::wstring LongPath(std::u16string_view path) {
  std::wstring text(path.begin(), path.end());
  std::ranges::replace(text, L'/', L'\\');
  const bool isOfShare = text.starts_with(L"\\\\");
  const bool isOfDrive = text.size() > 2 && text[1] == L':' && text[2] == L'\\';
  if (IsOfDevice(text) || (!isOfShare && !isOfDrive)) return text;
  text = Normal(text);
  if (IsOfDevice(text)) return text;  // such as NUL
  return text.starts_with(L"\\\\") ? L"\\\\?\\UNC" + text.substr(1) : L"\\\\?\\" + text;
}

}  // namespace corvane::platform::windows
