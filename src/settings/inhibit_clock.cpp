#include "settings/inhibit_clock.h"

#include <string_view>

namespace corvane {

InhibitClock::SetResult InhibitClock::Set(std::uint32_t ms, const char* tag, std::uint64_t now) {
  SetResult result{Outcome::kSet, ms, now + ms, 0};
  if (std::string_view(m_InhibitReason) == "out-scan") {
    result.outsideScans = ++m_ConsecOutsideScans;
    if (m_ConsecOutsideScans >= kOutsideScansIgnored) {
      result.ms = 0;
      result.future = now;
    }
  } else {
    m_ConsecOutsideScans = 0;
  }
  m_InhibitReason = tag;
  m_InhibitMs = result.ms;
  const bool wentBack = now < m_LastSetTick;
  if (m_InhibitFuture < result.future || result.ms == 0 || wentBack) {
    m_InhibitFuture = result.future;
    if (wentBack) result.outcome = Outcome::kSetAfterReset;
  } else {
    result.outcome = Outcome::kKeptLarger;
    result.future = m_InhibitFuture;
  }
  m_LastSetTick = now;
  return result;
}

InhibitClock::GetResult InhibitClock::Get(std::uint64_t now) {
  GetResult result;
  if (now < m_LastGetTick) {
    m_InhibitFuture = m_InhibitMs + now;
    result = {true, true, m_InhibitMs};
  } else if (now < m_InhibitFuture) {
    result = {true, false, m_InhibitFuture - now};
  } else {
    m_InhibitMs = 0;
  }
  m_LastGetTick = now;
  return result;
}

}  // namespace corvane
