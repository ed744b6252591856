#pragma once
#include <list>

#include "log/log_policy_interface.h"

namespace corvane {

// The latest records, for clients to fetch.
class memory_log_policy : public log_policy_interface {
 public:
  static constexpr std::size_t kMaxRecords = 2000;
  static constexpr std::size_t kMaxRetrievedBytes = 499'900;

  void open_ostream(const std::string&) override {}
  void close_ostream() override {}
  void write(std::string_view line) override;
  // The records from the oldest on, each as it stands and without its line feed. Where the next one
  // would not fit any more, a line that says so ends the text.
  std::string_view retrieve() override;

 private:
  std::list<std::string> m_Records;
  std::string m_Retrieved;
};

}  // namespace corvane
