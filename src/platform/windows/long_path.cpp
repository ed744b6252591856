#include "platform/windows/long_path.h"

#include <algorithm>

namespace corvane::platform::windows {

std::wstring LongPath(std::u16string_view path) {
  std::wstring text(path.begin(), path.end());
  std::ranges::replace(text, L'/', L'\\');
  if (text.starts_with(L"\\\\?\\") || text.starts_with(L"\\\\.\\")) return text;
  if (text.starts_with(L"\\\\")) return L"\\\\?\\UNC" + text.substr(1);
  if (text.size() > 2 && text[1] == L':' && text[2] == L'\\') return L"\\\\?\\" + text;
  return text;
}

}  // namespace corvane::platform::windows
