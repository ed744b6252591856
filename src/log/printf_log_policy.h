#pragma once
#include "log/log_policy_interface.h"

namespace corvane {

// The console.
class printf_log_policy : public log_policy_interface {
 public:
  void open_ostream(const std::string&) override {}
  void close_ostream() override {}
  void write(std::string_view line) override;
  std::string_view retrieve() override { return {}; }
};

}  // namespace corvane
