#pragma once
#include <optional>

#include "foundation/crit_sec.h"
#include "store/address_text.h"

namespace corvane {

// The access point that an adapter has reserved: the machine's other adapters leave it alone. The
// adapter's own worker claims and drops, the workers of the others read; each call takes the
// interface lock. It is not tied to a timer; whoever reads may ask how long ago it was renewed.
// Ticks in ms.
class CandidateClaim {
 public:
  explicit CandidateClaim(CCritSec& interfaceLock) : m_Lock(interfaceLock) {}

  // A candidate is about to be ready: it doesn't take the place of another.
  void ClaimRipening(const MacAddress& bssid, std::uint64_t now) {
    const CCritSecLock guard(m_Lock);
    if (m_reserved_candidate && *m_reserved_candidate != bssid) return;
    if (!m_reserved_candidate) m_bAsked = false;
    m_reserved_candidate = bssid;
    m_RenewedTick = now;
  }
  // The user is asked about it: it takes the place of any other.
  void ClaimSuggested(const MacAddress& bssid, std::uint64_t now) {
    const CCritSecLock guard(m_Lock);
    m_reserved_candidate = bssid;
    m_bAsked = true;
    m_RenewedTick = now;
  }
  // It is still there to say yes to. Of any other claim nothing is renewed.
  void RenewSuggested(const MacAddress& bssid, std::uint64_t now) {
    const CCritSecLock guard(m_Lock);
    if (m_bAsked && m_reserved_candidate == bssid) m_RenewedTick = now;
  }
  // It refused a connect; a claim on another one stays.
  void GiveUp(const MacAddress& bssid) {
    const CCritSecLock guard(m_Lock);
    if (m_reserved_candidate == bssid) m_reserved_candidate.reset();
  }
  // The counters begin anew, or all have lost a round.
  void Drop() {
    const CCritSecLock guard(m_Lock);
    m_reserved_candidate.reset();
  }

  std::optional<MacAddress> Held() const {
    const CCritSecLock guard(m_Lock);
    return m_reserved_candidate;
  }
  // The same, if it was renewed within the last `ms`.
  std::optional<MacAddress> HeldWithin(std::uint64_t ms, std::uint64_t now) const {
    const CCritSecLock guard(m_Lock);
    return now - m_RenewedTick <= ms ? m_reserved_candidate : std::nullopt;
  }
  // The same, without one that hangs on a person's answer.
  std::optional<MacAddress> HeldUnasked(std::uint64_t ms, std::uint64_t now) const {
    const CCritSecLock guard(m_Lock);
    return m_bAsked || now - m_RenewedTick > ms ? std::nullopt : m_reserved_candidate;
  }

 private:
  CCritSec& m_Lock;
  std::optional<MacAddress> m_reserved_candidate;
  bool m_bAsked = false;  // a person, about it
  std::uint64_t m_RenewedTick = 0;
};

}  // namespace corvane
