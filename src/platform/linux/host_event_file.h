#pragma once
#include <mutex>
#include <string>

#include "platform/trace_logging.h"

namespace corvane::platform {
class ClockApi;
}

namespace corvane::platform::linux_host {

// Where the host's events go, as Linux has no event tracing of the kind: one line of JSON for each,
// in a file that moves to "<path>.1" when it passes its limit, over the one that was there. A write
// that fails loses the event.
class HostEventFile {
 public:
  static constexpr std::uint64_t kMaxBytes = 4'000'000;

  HostEventFile(std::string path, ClockApi& clock) : m_Path(std::move(path)), m_Clock(clock) {}

  // Observer of the events; `self` is the file. Any thread.
  static void Append(const TraceEvent& event, void* self);

 private:
  void AppendLine(const std::string& line);

  const std::string m_Path;
  ClockApi& m_Clock;
  std::mutex m_Mutex;
};

}  // namespace corvane::platform::linux_host
