#include "corvane_lab/peer_rules.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "corvane_lab/air_truth.h"
#include "platform/sim/devices/sim_link_rate.h"

namespace corvane::lab {

namespace {

constexpr std::uint64_t kSecondMs = 1000, kMinuteMs = 60'000, kDayMs = 86'400'000;

// The noise floor that is taken where the driver tells none.
double SnrOf(const PeerEntry& entry) {
  constexpr double kNoise2 = -89.0, kNoise5 = -92.0;
  return entry.dbm - (entry.band == 2 ? kNoise2 : kNoise5);
}

const PeerEntry* EntryOf(const std::vector<PeerEntry>& heard, int accessPoint) {
  const auto found = std::ranges::find(heard, accessPoint, &PeerEntry::accessPoint);
  return found == heard.end() ? nullptr : &*found;
}

class Strongest final : public PeerRule {
 public:
  Strongest() : PeerRule({kMinuteMs}) {}

  bool WantsScan(std::uint64_t ms, const PeerLink&) override {
    constexpr std::uint64_t kEveryMs = 30 * kSecondMs;
    if (ms < m_NextMs) return false;
    m_NextMs = ms + kEveryMs;
    return true;
  }

  std::optional<int> Choose(std::uint64_t ms, const PeerLink& link,
                            const std::vector<PeerEntry>& heard) override {
    constexpr double kMarginDb = 6.0;
    const PeerEntry* best = nullptr;
    for (const PeerEntry& entry : heard) {
      if (IsBlocked(ms, entry.accessPoint)) continue;
      if (!best || entry.dbm > best->dbm) best = &entry;
    }
    if (!best || best->accessPoint == link.accessPoint) return std::nullopt;
    if (best->dbm < link.dbm + kMarginDb) return std::nullopt;
    return best->accessPoint;
  }

 private:
  std::uint64_t m_NextMs = 0;
};

class Supplicant final : public PeerRule {
 public:
  Supplicant()
      : PeerRule({10 * kSecondMs, 10 * kSecondMs, kMinuteMs, 2 * kMinuteMs, 10 * kMinuteMs,
                  30 * kMinuteMs}) {}

  // A new link begins with the short interval. So many short ones in a row are its budget; a signal
  // that falls below the threshold is looked at at once.
  bool WantsScan(std::uint64_t ms, const PeerLink& link) override {
    constexpr std::uint64_t kShortMs = 30 * kSecondMs, kLongMs = 300 * kSecondMs;
    constexpr std::uint64_t kLeastMs = 10 * kSecondMs;
    constexpr int kMostShort = 11;
    constexpr double kThresholdDbm = -65.0, kLonelyDbm = -70.0;
    if (link.accessPoint != m_On) {
      m_On = link.accessPoint;
      m_LastMs = ms;
      m_bRests = false;
      m_Short = 0;
      m_bWeak = false;
    }
    const bool lonely = m_Siblings <= 1;
    const bool weak = link.dbm < (lonely ? kLonelyDbm : kThresholdDbm);
    const bool fell = weak && !m_bWeak && ms >= m_LastMs + kLeastMs;
    if (!weak) m_Short = 0;
    m_bWeak = weak;
    const std::uint64_t interval = !m_bRests ? kShortMs : lonely ? kDayMs : kLongMs;
    if (!fell && ms < m_LastMs + interval) return false;
    m_LastMs = ms;
    m_bRests = !weak || ++m_Short > kMostShort;
    return true;
  }

  std::optional<int> Choose(std::uint64_t ms, const PeerLink& link,
                            const std::vector<PeerEntry>& heard) override {
    m_Siblings = 0;
    const PeerEntry* best = nullptr;
    for (const PeerEntry& entry : heard) {
      if (entry.ssid != link.ssid) continue;
      ++m_Siblings;
      if (IsBlocked(ms, entry.accessPoint)) continue;
      if (!best || SupplicantPrefers(entry, *best)) best = &entry;
    }
    if (!best || best->accessPoint == link.accessPoint) return std::nullopt;
    const PeerEntry* current = EntryOf(heard, link.accessPoint);
    if (current && !SupplicantRoams(*current, *best)) return std::nullopt;
    return best->accessPoint;
  }

 private:
  int m_On = -1;
  std::uint64_t m_LastMs = 0;
  int m_Short = 0;     // scans in a row after the short interval
  int m_Siblings = 2;  // access points of the link's network in the last scan
  bool m_bWeak = false, m_bRests = false;
};

double WeakBelowDbm(int band) { return band == 2 ? -70.0 : -76.0; }

class Iwd final : public PeerRule {
 public:
  Iwd() : PeerRule({kMinuteMs, 30 * kMinuteMs, 15 * 60 * kMinuteMs, kDayMs}) {}

  bool WantsScan(std::uint64_t ms, const PeerLink& link) override {
    constexpr std::uint64_t kLastsMs = 5 * kSecondMs;
    if (link.dbm >= WeakBelowDbm(link.band)) {
      m_WeakSinceMs.reset();
      return false;
    }
    if (!m_WeakSinceMs) m_WeakSinceMs = ms;
    if (ms < *m_WeakSinceMs + kLastsMs || ms < m_NextMs) return false;
    m_NextMs = ms + kMinuteMs;
    return true;
  }

  std::optional<int> Choose(std::uint64_t ms, const PeerLink& link,
                            const std::vector<PeerEntry>& heard) override {
    const PeerEntry* current = EntryOf(heard, link.accessPoint);
    const auto domain = current ? current->mobilityDomain : std::nullopt;
    const auto order = [&](const PeerEntry& entry) {
      return std::pair(entry.dbm >= WeakBelowDbm(entry.band), IwdRank(entry, domain));
    };
    const PeerEntry* best = current;
    for (const PeerEntry& entry : heard) {
      if (entry.ssid != link.ssid || IsBlocked(ms, entry.accessPoint)) continue;
      if (!best || order(entry) > order(*best)) best = &entry;
    }
    if (!best || best->accessPoint == link.accessPoint) return std::nullopt;
    return best->accessPoint;
  }

 private:
  std::optional<std::uint64_t> m_WeakSinceMs;
  std::uint64_t m_NextMs = 0;
};

}  // namespace

void PeerRule::OnFailed(std::uint64_t ms, int accessPoint) {
  Failures& failures = m_Failures[accessPoint];
  failures.untilMs = ms + m_PausesMs[std::min(failures.count++, m_PausesMs.size() - 1)];
}

bool PeerRule::IsBlocked(std::uint64_t ms, int accessPoint) const {
  const auto found = m_Failures.find(accessPoint);
  return found != m_Failures.end() && ms < found->second.untilMs;
}

double EstimateKbps(const PeerEntry& entry) {
  // SNR of each modulation in 20 MHz, dB.
  static constexpr std::array<double, 12> kRows{2, 5, 9, 11, 15, 18, 20, 25, 29, 31, 34, 36};
  double snr = SnrOf(entry);
  for (int width = 20; width < entry.widthMhz; width *= 2) snr -= 3.0;
  const int highest = platform::sim::HighestMcs(entry.phy);
  const auto rate = [&](int mcs) {
    return static_cast<double>(platform::sim::ModulatedKbps(entry.phy, entry.widthMhz, 1, mcs));
  };
  if (snr < kRows[0]) return 0.0;
  int mcs = 0;
  while (mcs < highest && snr >= kRows[static_cast<std::size_t>(mcs) + 1]) ++mcs;
  if (mcs == highest) return rate(mcs);
  const auto row = static_cast<std::size_t>(mcs);
  const double share = (snr - kRows[row]) / (kRows[row + 1] - kRows[row]);
  return rate(mcs) + (rate(mcs + 1) - rate(mcs)) * share;
}

// A signal that is great already counts as no better.
bool SupplicantPrefers(const PeerEntry& a, const PeerEntry& b) {
  constexpr double kGreatDb = 25.0, kNearDb = 7.0, kEqualDb = 5.0;
  const double snrA = std::min(SnrOf(a), kGreatDb), snrB = std::min(SnrOf(b), kGreatDb);
  const double apart = std::abs(snrA - snrB);
  if (apart < kNearDb || a.band == 6 || b.band == 6) {
    const double estimateA = EstimateKbps(a), estimateB = EstimateKbps(b);
    if (estimateA != estimateB) return estimateA > estimateB;
  }
  if (apart < kEqualDb && a.band != b.band) return a.band > b.band;
  if (apart == 0.0) return a.dbm > b.dbm;
  return snrA > snrB;
}

bool SupplicantRoams(const PeerEntry& current, const PeerEntry& selected) {
  constexpr double kFasterKbps = 5000.0, kGreatDb = 25.0;
  const double now = EstimateKbps(current), then = EstimateKbps(selected);
  if (then > now + kFasterKbps) return true;
  if (now > then + kFasterKbps) return false;
  if (current.dbm > selected.dbm && then < now * 1.2) return false;
  if (SnrOf(current) > kGreatDb) return false;
  double margin = current.dbm < -85   ? 1.0
                  : current.dbm < -80 ? 2.0
                  : current.dbm < -75 ? 3.0
                  : current.dbm < -70 ? 4.0
                                      : 5.0;
  if (now > then * 1.5) {
    margin += 10.0;
  } else if (now > then * 1.2) {
    margin += 5.0;
  } else if (now > then * 1.1) {
    margin += 2.0;
  } else if (then > now * 1.5) {
    margin -= 10.0;
  } else if (then > now * 1.2) {
    margin -= 5.0;
  } else if (then > now * 1.1) {
    margin -= 2.0;
  }
  if (selected.band > current.band) margin -= 2.0;
  if (selected.band < current.band) margin += 2.0;
  return selected.dbm - current.dbm >= margin;
}

double IwdRank(const PeerEntry& entry, std::optional<int> mobilityDomain) {
  constexpr double kMostMbps = 9600.0, kHighest = 65535.0;
  constexpr int kFull = 192, kFree = 63;
  constexpr double kWeakDb = 15.0, kStrongDb = 30.0, kNoiseDbm = -95.0;
  double rank =
      RateMbps(entry.phy, entry.widthMhz, entry.streams, entry.dbm) / kMostMbps * kHighest;
  if (entry.utilisation && *entry.utilisation >= kFull) rank *= 0.8;
  if (entry.utilisation && *entry.utilisation <= kFree) rank *= 1.2;
  const double snr = entry.dbm - kNoiseDbm;
  if (snr <= kWeakDb) rank *= 0.8;
  if (snr >= kStrongDb) rank *= 1.2;
  if (mobilityDomain && entry.mobilityDomain == mobilityDomain) rank *= 1.3;
  return rank;
}

std::unique_ptr<PeerRule> StrongestRule() { return std::make_unique<Strongest>(); }
std::unique_ptr<PeerRule> SupplicantRule() { return std::make_unique<Supplicant>(); }
std::unique_ptr<PeerRule> IwdRule() { return std::make_unique<Iwd>(); }

}  // namespace corvane::lab
