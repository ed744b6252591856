#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "foundation/crit_sec.h"
#include "foundation/log_lines.h"
#include "log/file_log_policy.h"
#include "log/memory_log_policy.h"
#include "log/printf_log_policy.h"

namespace corvane {

// Numbers and stamps the records, and hands each to the outputs that it is for, one record at a
// time.
class logger3 final : public ILogSink {
 public:
  // `fileName` of the file output, in UTF-8. Throws std::runtime_error.
  explicit logger3(const std::string& fileName);
  ~logger3();
  logger3(const logger3&) = delete;
  logger3& operator=(const logger3&) = delete;

  void Write(std::uint32_t outputs, const char* tag, WStringView text) override;
  void Write(std::uint32_t outputs, const char* tag, std::string_view text) override;
  std::string GetMemoryLog() override;

 private:
  template <typename View>
  void WriteRecord(std::uint32_t outputs, const char* tag, View text);
  void AppendHead(const char* tag);

  std::uint32_t m_LineNumber = 0;  // of the next record
  std::string m_Text;              // the record under construction
  std::unique_ptr<file_log_policy> m_pFilePolicy;
  std::unique_ptr<printf_log_policy> m_pPrintfPolicy;
  std::unique_ptr<memory_log_policy> m_pMemoryPolicy;
  CCritSec m_Mutex{"logger", LockRank::kLogger};
};

}  // namespace corvane
