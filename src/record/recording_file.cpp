#include "record/recording_file.h"

#include <optional>
#include <string>

#include "foundation/ignored.h"
#include "platform/file_api.h"
#include "platform/platform.h"

namespace corvane {

namespace {

using namespace platform;

bool IsThere(const WString& path) {
  return Os().files.GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// 0 for a file that is not there; nothing when it cannot be told.
std::optional<std::uint64_t> SizeOfFile(const WString& path) {
  if (!IsThere(path)) return 0;
  CHistoryFile file;
  std::uint64_t size = 0;
  if (!file.OpenToRead(path) || !file.GetSize(&size)) return std::nullopt;
  return size;
}

}  // namespace

RecordingFile::RecordingFile(const WString& folder, std::uint64_t limit)
    : m_Path(folder + kPathSeparator + u"air.jsonl"),
      m_Before(folder + kPathSeparator + u"air.1.jsonl"),
      m_Half(limit / 2) {}

// A limit that was lowered costs the oldest lines.
bool RecordingFile::MakeRoom() {
  const auto before = SizeOfFile(m_Before);
  if (!before || (*before > m_Half && !Os().files.DeleteFileW(m_Before.c_str()))) return false;
  const auto size = SizeOfFile(m_Path);
  return size && (*size <= m_Half || Os().files.DeleteFileW(m_Path.c_str()));
}

bool RecordingFile::Open() {
  Close();
  if (!MakeRoom() || !m_File.OpenToAppend(m_Path)) return false;
  if (!m_File.GetSize(&m_Size)) {
    Close();
    return false;
  }
  m_bUnfinished = m_Size > 0;  // whoever wrote it may have been stopped
  return true;
}

bool RecordingFile::Rotate() {
  Close();
  const bool moved = !IsThere(m_Path) || Os().files.MoveFileExW(m_Path.c_str(), m_Before.c_str(),
                                                                MOVEFILE_REPLACE_EXISTING);
  return moved && Open();
}

bool RecordingFile::Append(std::string_view lines) {
  const std::string text = (m_bUnfinished ? "\n" : "") + std::string(lines);
  if (!IsOpen() || !HasRoom(text.size()) || !m_File.Write(text)) {
    Close();
    return false;
  }
  m_Size += text.size();
  m_bUnfinished = false;
  return true;
}

}  // namespace corvane
