#include "settings/program_file.h"

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/file_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr platform::ULONGLONG kLongestFile = 16 << 20;  // bytes

// An open file, closed at the end of the scope.
class OpenFile {
 public:
  explicit OpenFile(const WString& path)
      : m_File(Os().files.CreateFileW(path.c_str(), platform::GENERIC_READ,
                                      platform::OPEN_EXISTING)) {}
  ~OpenFile() {
    if (m_File) GiveBack("OpenFile", "CloseFile", [this] { Os().files.CloseFile(m_File); });
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  explicit operator bool() const { return m_File != nullptr; }
  // The whole content; false when the platform fails or the file is too long.
  bool ReadAll(std::string* bytes) const {
    platform::ULONGLONG size = 0;
    if (!Os().files.GetFileSizeEx(m_File, &size) || size > kLongestFile) return false;
    bytes->resize(size);
    std::size_t done = 0;
    while (done < bytes->size()) {
      platform::DWORD read = 0;
      if (!Os().files.ReadFile(m_File, bytes->data() + done,
                               static_cast<platform::DWORD>(size - done), &read)) {
        return false;
      }
      if (read == 0) break;  // cut short by its writer since
      done += read;
    }
    bytes->resize(done);
    return true;
  }

 private:
  platform::HANDLE m_File;
};

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
  if (!file.ReadAll(&bytes)) {
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
