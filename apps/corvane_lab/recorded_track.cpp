#include "corvane_lab/recorded_track.h"

#include <algorithm>

#include "platform/sim/world/radio_model.h"

namespace corvane::lab {

namespace {

using namespace platform;

constexpr std::uint64_t kAroundMs = 500;

}  // namespace

double DbmOf(std::int32_t rssi, std::uint32_t quality) {
  constexpr double kWorst = -100.0, kBest = -50.0, kPerPercent = 0.5;
  constexpr std::uint32_t kWhole = 100;
  if (quality >= kWhole) return std::max<double>(rssi, kBest);
  if (quality == 0) return std::min<double>(rssi, kWorst);
  const double even = kWorst + kPerPercent * quality;
  for (const double off : {0.0, 0.1, -0.1, 0.2, -0.2}) {
    const double dbm = even + off;
    if (static_cast<std::int32_t>(dbm - 0.5) == rssi && sim::LinkQualityOf(dbm) == quality)
      return dbm;
  }
  return even;
}

void TrackMaker::Hear(std::uint64_t ms, double dbm) {
  const std::uint64_t middle = Middle(m_LastMs, ms);
  if (m_bHeard) {
    Add(std::min(m_LastMs + kAroundMs, middle), m_HeldDbm);
  } else {
    m_Track.push_back({m_bMissed ? middle : 0, dbm});
  }
  Add(std::max(ms - std::min(ms, kAroundMs), middle), dbm);
  m_HeldDbm = dbm;
  m_bHeard = true;
  m_LastMs = ms;
}

void TrackMaker::Miss(std::uint64_t ms) {
  if (m_bHeard) {
    Add(std::min(m_LastMs + kAroundMs, Middle(m_LastMs, ms)), m_HeldDbm);
    m_Track.push_back({Middle(m_LastMs, ms), sim::kNothingHeard});
  }
  m_bHeard = false;
  m_bMissed = true;
  m_LastMs = ms;
}

void TrackMaker::Add(std::uint64_t ms, double dbm) {
  if (!m_Track.empty() && m_Track.back().atMs >= ms) ms = m_Track.back().atMs;
  m_Track.push_back({ms, dbm});
}

}  // namespace corvane::lab
