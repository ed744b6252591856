#include "platform/linux/host_event_file.h"

#include <cstdio>
#include <memory>

#include "platform/clock_api.h"

namespace corvane::platform::linux_host {

namespace {

struct Closer {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// ISO 8601, UTC, with milliseconds.
std::string TimeText(ClockApi& clock) {
  FILETIME fileTime;
  clock.GetSystemTimeAsFileTime(&fileTime);
  SYSTEMTIME time;
  if (!FileTimeToSystemTime(fileTime, &time)) return {};
  char text[80];
  std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u.%03uZ", time.wYear, time.wMonth,
                time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds);
  return text;
}

}  // namespace

void HostEventFile::Append(const TraceEvent& event, void* self) {
  auto& file = *static_cast<HostEventFile*>(self);
  file.AppendLine(TraceEventJson(event, TimeText(file.m_Clock)) + "\n");
}

void HostEventFile::AppendLine(const std::string& line) {
  const std::lock_guard guard(m_Mutex);
  const std::unique_ptr<std::FILE, Closer> file(std::fopen(m_Path.c_str(), "ab"));
  if (!file) return;
  std::fwrite(line.data(), 1, line.size(), file.get());
  const long size = std::ftell(file.get());
  if (size > 0 && static_cast<std::uint64_t>(size) > kMaxBytes) {
    std::rename(m_Path.c_str(), (m_Path + ".1").c_str());
  }
}

}  // namespace corvane::platform::linux_host
