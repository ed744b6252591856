#pragma once
#include <cstdint>

#include "log/log_policy_interface.h"
#include "platform/types.h"

namespace corvane {

// The log file. At 2,000,000 bytes it is copied to the overflow file, which stands beside it with
// "~" in front of its name, and begins anew. Writes only while g_EnableFileLogging is set. A failed
// write is ignored.
class file_log_policy : public log_policy_interface {
 public:
  static constexpr std::uint64_t kMaxBytes = 2'000'000;

  file_log_policy() = default;
  // Closes the file, and deletes it if file logging is off by now.
  ~file_log_policy() override;
  file_log_policy(const file_log_policy&) = delete;
  file_log_policy& operator=(const file_log_policy&) = delete;

  // Empties an earlier file of that name; with file logging off it makes none. Throws
  // std::runtime_error.
  void open_ostream(const std::string& name) override;
  void close_ostream() override;
  void write(std::string_view line) override;
  std::string_view retrieve() override { return {}; }

 private:
  void OpenLate();

  platform::HANDLE m_hFile = nullptr;
  std::uint64_t m_BytesWritten = 0;  // since the file was opened
  std::string m_Name;                // UTF-8
  bool m_bOpenLate = false;          // file logging was off when the file was to be opened
};

}  // namespace corvane
