#pragma once
#include <stdexcept>

namespace corvane::platform::linux_host {

// Why the host cannot start, as a sentence for its user.
struct HostError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace corvane::platform::linux_host
