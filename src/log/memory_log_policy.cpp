#include "log/memory_log_policy.h"

#include <iterator>

namespace corvane {

void memory_log_policy::write(std::string_view line) {
  line.remove_suffix(1);
  if (m_Records.size() < kMaxRecords) {
    m_Records.emplace_back(line);
    return;
  }
  // The oldest record's node and memory serve the newest.
  m_Records.front().assign(line);
  m_Records.splice(m_Records.end(), m_Records, m_Records.begin());
}

std::string_view memory_log_policy::retrieve() {
  m_Retrieved.clear();
  for (const std::string& record : m_Records) {
    if (record.size() + m_Retrieved.size() > kMaxRetrievedBytes) {
      m_Retrieved += "<RETRIEVAL TRUNCATED -- BUFFER IS TOO BIG>\n";
      break;
    }
    m_Retrieved += record;
  }
  return m_Retrieved;
}

}  // namespace corvane
