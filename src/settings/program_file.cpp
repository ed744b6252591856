#include "settings/program_file.h"

#include "foundation/log_lines.h"
#include "foundation/open_file.h"
#include "platform/file_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kLongestFile = 16 << 20;  // bytes

}  // namespace

std::string ProgramFilePath(std::string_view stem) {
  std::string path;
  if (Os().files.GetModuleFileNameA(&path) == 0) return {};
  const std::size_t end = path.find_last_of("\\/");
  path.resize(end == std::string::npos ? 0 : end);
  path += static_cast<char>(platform::kPathSeparator);
  return path.append(stem).append(".json");
}

std::string ReadProgramFile(std::string_view stem) {
  const std::string path = ProgramFilePath(stem);
  if (path.empty()) return {};
  const OpenFile file(Utf8ToWide(path));
  if (!file) return {};
  std::string bytes;
  if (!file.ReadAll(kLongestFile, &bytes)) {
    LOG_ERROR(u"ReadProgramFile: can't read %S, error %lu, limit %lu bytes", path,
              Os().threads.GetLastError(), kLongestFile);
    return {};
  }
  if (bytes.starts_with(kByteOrderMark)) bytes.erase(0, kByteOrderMark.size());
  return bytes;
}

std::uint32_t MoveProgramFile(const std::string& from, const std::string& to) {
  if (Os().files.MoveFileExW(Utf8ToWide(from).c_str(), Utf8ToWide(to).c_str(),
                             platform::MOVEFILE_REPLACE_EXISTING)) {
    return 0;
  }
  return Os().threads.GetLastError();
}

}  // namespace corvane
