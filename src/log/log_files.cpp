#include "log/log_files.h"

#include <vector>

#include "platform/file_api.h"
#include "platform/platform.h"

namespace corvane::log_files {
namespace {

using platform::HANDLE;

void AppendFile(const WString& from, HANDLE to) {
  auto& files = Os().files;
  const HANDLE source =
      files.CreateFileW(from.c_str(), platform::GENERIC_READ, platform::OPEN_EXISTING);
  if (!source) return;
  std::vector<char> block(64 * 1024);
  platform::DWORD read = 0;
  platform::DWORD written = 0;
  while (files.ReadFile(source, block.data(), static_cast<platform::DWORD>(block.size()), &read) &&
         read > 0 && files.WriteFile(to, block.data(), read, &written)) {
  }
  files.CloseFile(source);
}

void Join(const WString& first, const WString& second, const WString& to) {
  auto& files = Os().files;
  const HANDLE target =
      files.CreateFileW(to.c_str(), platform::GENERIC_WRITE, platform::CREATE_ALWAYS);
  if (!target) return;
  AppendFile(first, target);
  AppendFile(second, target);
  files.CloseFile(target);
}

void Copy(const WString& from, const WString& to) {
  Os().files.CopyFileW(from.c_str(), to.c_str(), platform::FALSE);
}

}  // namespace

WString OverflowName(const std::string& name) {
  WString wide = Utf8ToWide(name);
  const std::size_t separator = wide.find_last_of(u"/\\");
  wide.insert(separator == WString::npos ? 0 : separator + 1, 1, u'~');
  return wide;
}

void RotateAtStart(const std::string& baseName) {
  const auto file = [&baseName](const char* generation) {
    return Utf8ToWide(baseName + generation + ".log");
  };
  const WString live = file("");
  const WString overflow = OverflowName(baseName + ".log");
  Copy(file("2"), file("3"));
  Copy(file("1"), file("2"));
  if (Os().files.GetFileAttributesW(overflow.c_str()) != platform::INVALID_FILE_ATTRIBUTES) {
    Join(overflow, live, file("1"));
  } else {
    Copy(live, file("1"));
  }
  Os().files.DeleteFileW(overflow.c_str());
}

}  // namespace corvane::log_files
