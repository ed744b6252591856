#pragma once
#include <string>
#include <string_view>

namespace corvane {

// One output of the logger. All operations are called under the logger's mutex.
class log_policy_interface {
 public:
  virtual ~log_policy_interface() = default;
  virtual void open_ostream(const std::string& name) = 0;
  virtual void close_ostream() = 0;
  // `line` is one whole record with a line feed behind it.
  virtual void write(std::string_view line) = 0;
  // What the output keeps to be fetched; valid until the next call.
  virtual std::string_view retrieve() = 0;
};

}  // namespace corvane
