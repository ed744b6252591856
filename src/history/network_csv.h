#pragma once
#include <cstdint>

#include "foundation/crit_sec.h"
#include "foundation/singleton.h"
#include "foundation/text.h"

namespace corvane {

class CHistoryFile;

// The connection history: a bounded CSV file in the data directory of the OEM suite. Without that
// directory there is no history. The file is whole after each row and at every instant of a trim: a
// process that is killed leaves the old file or the new one.
class CNetworkCSV {
 public:
  static CNetworkCSV& GetInstance() { return Singleton<CNetworkCSV>::GetInstance(); }

  // Appends the row, then cuts the file back to `sizeMB` million bytes. 0 or less deletes the file
  // and ignores the row. A character that one byte can't hold, and a control character, is stored
  // as '?'. Any thread. A failure costs this row alone.
  void WriteLineTelemetry(std::int32_t sizeMB, WString row);
  // Cuts rows off the file's start until header and rows fit. The file stays as it was unless the
  // cut file is complete on the medium.
  void TrimFile(std::int32_t sizeMB);

 private:
  friend class Singleton<CNetworkCSV>;
  CNetworkCSV();

  void SetPaths();
  bool HasDirectory() const;
  void WriteRow(const WString& row);
  std::string WhatComesFirst() const;
  bool OpenTelemetryWriteStream(CHistoryFile* stream);  // for appending
  void CutFile(std::size_t limit);

  CCritSec m_Lock{"network history"};
  WString m_Directory;
  WString m_FilePath;
  WString m_TempPath;
  std::uint64_t m_BytesWritten = 0;  // since start or since the last trim
  bool m_bInitialized = false;       // the paths are set
};

}  // namespace corvane
