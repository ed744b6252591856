#include "history/network_csv.h"

#include <utility>

#include "foundation/exception.h"
#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "history/history_file.h"
#include "platform/file_api.h"
#include "platform/platform.h"

namespace corvane {

using namespace platform;

namespace {

constexpr std::string_view kHeader =
    "TIME,MAC,REASON,SSID,BSSID,SCORE,RSSI,BAND,CHANNEL,CHANNELWIDTH,CLASS,QLOAD,STATIONCOUNT,"
    "MUMIMO,LINKTX,LINKRX,"
    "MAXDATARATE";
static_assert(kHeader.size() == 121);
constexpr std::size_t kMegabyte = 1'000'000;

constexpr char16_t kFileName[] = u"NetworkConnections.csv";
constexpr char16_t kTempName[] = u"NetworkConnections_temp.csv";
constexpr const char16_t* kDirectoryParts[] = {u"Palisade", u"PalisadeOptimizer",
                                               u"network_telemetry"};

// One line of the file, one byte for each character.
std::string LineOf(const WString& row) {
  std::string line;
  line.reserve(row.size() + 1);
  for (const char16_t unit : row)
    line += unit < 0x20 || unit > 0xFF ? '?' : static_cast<char>(unit);
  return line + '\n';
}

bool Exists(const WString& path) {
  return Os().files.GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// Runs one operation; whatever goes wrong in it ends there.
template <class Body>
void Contain(const char* operation, Body body) {
  Contained("CNetworkCSV", operation, false, [&] {
    body();
    return true;
  });
}

}  // namespace

CNetworkCSV::CNetworkCSV() { SetPaths(); }

void CNetworkCSV::SetPaths() {
  m_FilePath = kFileName;
  m_TempPath = WString(1, kPathSeparator) + kTempName;
  m_bInitialized = false;
  WString folder;
  if (Os().files.SHGetFolderPathW(CSIDL_COMMON_APPDATA, &folder) < 0) return;
  m_Directory = folder;
  for (const char16_t* part : kDirectoryParts) m_Directory += kPathSeparator + WString(part);
  if (!HasDirectory()) return;
  m_FilePath = m_Directory + kPathSeparator + kFileName;
  m_TempPath = m_Directory + kPathSeparator + kTempName;
  m_bInitialized = true;
}

bool CNetworkCSV::HasDirectory() const {
  if (m_Directory.empty()) return false;
  const DWORD attributes = Os().files.GetFileAttributesW(m_Directory.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

void CNetworkCSV::WriteLineTelemetry(std::int32_t sizeMB, WString row) {
  Contain("WriteLineTelemetry", [&] {
    const CCritSecLock lock(m_Lock);
    if (!m_bInitialized) SetPaths();
    if (!m_bInitialized || !HasDirectory()) return;
    if (sizeMB > 0) WriteRow(row);
    TrimFile(sizeMB);
  });
}

void CNetworkCSV::WriteRow(const WString& row) {
  const bool known = m_BytesWritten != 0 && Exists(m_FilePath);
  const std::string text = (known ? std::string() : WhatComesFirst()) + LineOf(row);
  CHistoryFile stream;
  if (!OpenTelemetryWriteStream(&stream)) return;
  const std::uint64_t before =
      std::exchange(m_BytesWritten, 0);  // a failure lets the next row look at the file
  if (stream.Write(text) && stream.Close()) m_BytesWritten = before + text.size();
}

// What an unknown file needs in front of the next row: the header when it is empty, missing or
// can't be measured, an end for a row that was cut off in the writing.
std::string CNetworkCSV::WhatComesFirst() const {
  CHistoryFile file;
  std::uint64_t size = 0;
  if (!file.OpenToRead(m_FilePath) || !file.GetSize(&size) || size == 0)
    return std::string(kHeader) + '\n';
  std::string bytes;
  const bool cutOff = file.ReadAll(&bytes) && !bytes.empty() && bytes.back() != '\n';
  return cutOff ? "\n" : "";
}

bool CNetworkCSV::OpenTelemetryWriteStream(CHistoryFile* stream) {
  if (!m_bInitialized) SetPaths();
  if (stream->OpenToAppend(m_FilePath)) return true;
  LOG_ERROR(u"CNetworkCSV::OpenTelemetryWriteStream: failed to open file %s", m_FilePath);
  return false;
}

void CNetworkCSV::TrimFile(std::int32_t sizeMB) {
  Contain("TrimFile", [&] {
    const CCritSecLock lock(m_Lock);
    if (!m_bInitialized) return;
    if (sizeMB > 0) {
      CutFile(static_cast<std::size_t>(sizeMB) * kMegabyte);
    } else {
      Os().files.DeleteFileW(m_FilePath.c_str());
      m_BytesWritten = 0;
    }
  });
}

// Every step that fails leaves the file as it is; the next row tries again.
void CNetworkCSV::CutFile(std::size_t limit) {
  CHistoryFile file;
  std::uint64_t size = 0;
  if (!file.OpenToRead(m_FilePath) || !file.GetSize(&size) || size <= limit) return;
  std::string bytes;
  if (!file.ReadAll(&bytes) || !file.Close()) return;
  const std::string rows = CutHistory(bytes, kHeader.size(), limit);

  CHistoryFile temp;
  const bool complete = temp.OpenToReplace(m_TempPath) &&
                        temp.Write(std::string(kHeader) + '\n' + rows) && temp.Flush() &&
                        temp.Close();
  if (!complete ||
      !Os().files.MoveFileExW(m_TempPath.c_str(), m_FilePath.c_str(), MOVEFILE_REPLACE_EXISTING)) {
    LOG_ERROR(u"CNetworkCSV::TrimFile: the history could not be cut and stays as it is: %s",
              m_FilePath);
    return;
  }
  m_BytesWritten = rows.size();
  LOG_INFO(u"CNetworkCSV::TrimFile: bytes_written = %zu", m_BytesWritten);
}

}  // namespace corvane
