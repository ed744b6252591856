#include "log/file_log_policy.h"

#include <stdexcept>
#include <utility>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "log/log_files.h"
#include "platform/file_api.h"
#include "platform/platform.h"

namespace corvane {

file_log_policy::~file_log_policy() {
  GiveBack("file_log_policy", "CloseFile", [this] { close_ostream(); });
  if (g_EnableFileLogging) return;
  GiveBack("file_log_policy", "DeleteFileW",
           [this] { Os().files.DeleteFileW(Utf8ToWide(m_Name).c_str()); });
}

void file_log_policy::open_ostream(const std::string& name) {
  m_Name = name;
  m_bOpenLate = !g_EnableFileLogging;
  if (m_bOpenLate) return;
  m_hFile = Os().files.CreateFileW(Utf8ToWide(name).c_str(), platform::GENERIC_WRITE,
                                   platform::CREATE_ALWAYS);
  if (!m_hFile) throw std::runtime_error("LOGGER: Unable to open an output stream");
}

void file_log_policy::close_ostream() {
  if (m_hFile) Os().files.CloseFile(std::exchange(m_hFile, nullptr));
}

// File logging was turned on during the run. What an earlier run left in the file stays in front.
void file_log_policy::OpenLate() {
  m_bOpenLate = false;
  auto& files = Os().files;
  m_hFile = files.CreateFileW(Utf8ToWide(m_Name).c_str(), platform::FILE_APPEND_DATA,
                              platform::OPEN_ALWAYS);
  platform::ULONGLONG size = 0;
  if (m_hFile && files.GetFileSizeEx(m_hFile, &size)) m_BytesWritten = size;
}

void file_log_policy::write(std::string_view line) {
  if (!g_EnableFileLogging) return;
  if (m_bOpenLate) OpenLate();
  if (m_hFile) {
    platform::DWORD written = 0;
    Os().files.WriteFile(m_hFile, line.data(), static_cast<platform::DWORD>(line.size()), &written);
  }
  m_BytesWritten += line.size() - 1;  // the line feed does not count
  if (m_BytesWritten <= kMaxBytes) return;

  close_ostream();
  Os().files.CopyFileW(Utf8ToWide(m_Name).c_str(), log_files::OverflowName(m_Name).c_str(),
                       platform::FALSE);
  m_BytesWritten = 0;
  open_ostream(std::string(m_Name));
}

}  // namespace corvane
