#pragma once
#include <cstdint>

namespace corvane {

// The clock that holds an adapter still for a while. Pure state: the owner gives the time (ticks in
// milliseconds) and logs what came of it.
struct InhibitClock {
  enum class Outcome { kSet, kSetAfterReset, kKeptLarger };
  struct SetResult {
    Outcome outcome = Outcome::kSet;
    std::uint32_t ms = 0;  // in force: the one given, or 0 when too many outside scans were seen
    std::uint64_t future = 0;
    std::uint32_t outsideScans = 0;  // consecutive settings that followed an outside scan
  };
  struct GetResult {
    bool inhibited = false;
    bool clockReset = false;
    std::uint64_t remainingMs = 0;
  };

  SetResult Set(std::uint32_t ms, const char* tag, std::uint64_t now);
  GetResult Get(std::uint64_t now);
  std::uint64_t Remaining(std::uint64_t now) const {
    return now < m_InhibitFuture ? m_InhibitFuture - now : 0;
  }

  const char* m_InhibitReason = "none";  // tag of the last setting, static text
  std::uint32_t m_ConsecOutsideScans = 0;
  std::uint32_t m_InhibitMs = 0;
  std::uint64_t m_InhibitFuture = 0;
  std::uint64_t m_LastSetTick = 0;
  std::uint64_t m_LastGetTick = 0;
};

// From this many consecutive settings on a warning is due, and from that many the inhibit is
// ignored.
inline constexpr std::uint32_t kOutsideScansWarned = 3;
inline constexpr std::uint32_t kOutsideScansIgnored = 5;

}  // namespace corvane
