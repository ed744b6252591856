#pragma once
#include <cstdint>
#include <string_view>

#include "foundation/text.h"
#include "history/history_file.h"

namespace corvane {

// The recording on the disk: what was written last, "air.jsonl", and what came before it,
// "air.1.jsonl". Together they are never larger than the limit; each is at most half of it. Lines
// are written whole, in one call, so a program that is killed leaves at most the last line of a
// file unfinished. One thread.
class RecordingFile {
 public:
  // In that folder, which has to be there. `limit` is in bytes.
  RecordingFile(const WString& folder, std::uint64_t limit);

  const WString& Path() const { return m_Path; }
  std::uint64_t Half() const { return m_Half; }
  bool IsOpen() const { return m_File.IsOpen(); }
  // Opens the file to append, having taken away what is beyond the limit. False on failure; the
  // platform's last error tells why.
  bool Open();
  bool HasRoom(std::size_t bytes) const { return m_Size + bytes <= m_Half; }
  // The file becomes the one before it, and an empty one is opened. False on failure.
  bool Rotate();
  // False on failure, and when there is no room; the file is closed then.
  bool Append(std::string_view lines);
  void Close() { m_File.Close(); }

 private:
  bool MakeRoom();

  const WString m_Path, m_Before;
  const std::uint64_t m_Half;
  CHistoryFile m_File;
  std::uint64_t m_Size = 0;    // of the open file
  bool m_bUnfinished = false;  // it may end within a line
};

}  // namespace corvane
