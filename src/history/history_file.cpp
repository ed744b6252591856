#include "history/history_file.h"

#include <algorithm>
#include <utility>

#include "foundation/guarded.h"
#include "platform/file_api.h"
#include "platform/platform.h"

namespace corvane {

using namespace platform;

CHistoryFile::~CHistoryFile() {
  GiveBack("CHistoryFile", "CloseFile", [this] { Close(); });
}

bool CHistoryFile::Open(const WString& path, DWORD access, DWORD disposition) {
  Close();
  m_hFile = Os().files.CreateFileW(path.c_str(), access, disposition);
  return IsOpen();
}

bool CHistoryFile::OpenToRead(const WString& path) {
  return Open(path, GENERIC_READ, OPEN_EXISTING);
}
bool CHistoryFile::OpenToAppend(const WString& path) {
  return Open(path, FILE_APPEND_DATA, OPEN_ALWAYS);
}
bool CHistoryFile::OpenToReplace(const WString& path) {
  return Open(path, GENERIC_WRITE, CREATE_ALWAYS);
}

bool CHistoryFile::GetSize(std::uint64_t* size) const {
  return IsOpen() && Os().files.GetFileSizeEx(m_hFile, size);
}

bool CHistoryFile::ReadAll(std::string* bytes) {
  constexpr DWORD kPiece = 64 * 1024;
  bytes->clear();
  for (;;) {
    const std::size_t have = bytes->size();
    bytes->resize(have + kPiece);
    DWORD read = 0;
    const bool good = IsOpen() && Os().files.ReadFile(m_hFile, bytes->data() + have, kPiece, &read);
    bytes->resize(have + read);
    if (!good || read == 0) return good;
  }
}

bool CHistoryFile::Write(std::string_view bytes) {
  DWORD written = 0;
  const auto size = static_cast<DWORD>(bytes.size());
  return IsOpen() && Os().files.WriteFile(m_hFile, bytes.data(), size, &written) && written == size;
}

bool CHistoryFile::Flush() { return IsOpen() && Os().files.FlushFileBuffers(m_hFile); }

bool CHistoryFile::Close() {
  return !m_hFile || Os().files.CloseFile(std::exchange(m_hFile, nullptr));
}

std::string CutHistory(std::string_view file, std::size_t headerSize, std::size_t limit) {
  const std::size_t room = limit - std::min(limit, headerSize);
  std::string_view rest = file.substr(file.size() - std::min(file.size(), room));
  // The first line is the remainder of a row.
  const std::size_t first = rest.find('\n');
  rest.remove_prefix(first == rest.npos ? rest.size() : first + 1);

  std::string rows;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    if (end >= kLongestRow) break;
    rows.append(rest.substr(0, end)) += '\n';
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return rows;
}

}  // namespace corvane
