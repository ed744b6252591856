#pragma once
// Reading and writing of whole pieces of the history file. All operations give false on failure.

#include <cstddef>
#include <string>
#include <string_view>

#include "foundation/text.h"
#include "platform/types.h"

namespace corvane {

// A file of the platform, closed at the end of its scope.
class CHistoryFile {
 public:
  CHistoryFile() = default;
  ~CHistoryFile();
  CHistoryFile(const CHistoryFile&) = delete;
  CHistoryFile& operator=(const CHistoryFile&) = delete;

  bool OpenToRead(const WString& path);
  bool OpenToAppend(const WString& path);
  bool OpenToReplace(const WString& path);  // empty at first
  bool IsOpen() const { return m_hFile != nullptr; }
  bool GetSize(std::uint64_t* size) const;
  bool ReadAll(std::string* bytes);  // from where the file stands to its end
  bool Write(std::string_view bytes);
  bool Flush();  // to the medium
  bool Close();

 private:
  bool Open(const WString& path, platform::DWORD access, platform::DWORD disposition);

  platform::HANDLE m_hFile = nullptr;
};

// The rows of a history that stay when it is cut to `limit` bytes with the header in front: whole
// lines from the end, copied up to the first line of kLongestRow characters or more. Pure.
inline constexpr std::size_t kLongestRow = 2047;
std::string CutHistory(std::string_view file, std::size_t headerSize, std::size_t limit);

}  // namespace corvane
