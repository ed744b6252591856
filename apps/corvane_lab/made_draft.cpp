#include "corvane_lab/made_draft.h"

#include <algorithm>
#include <cmath>

#include "foundation/format.h"

namespace corvane::lab {

namespace {

constexpr std::uint64_t kSecondMs = 1000;
constexpr int kChannels2[] = {1, 6, 11};
constexpr int kChannels5[] = {36, 52, 100, 116, 132, 149};

// Of a name and a number, the same on every machine (FNV-1a).
std::uint64_t SeedOf(const std::string& kind, std::uint64_t seed) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char c : kind + ":" + std::to_string(seed)) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 0x100000001B3;
  }
  return hash;
}

// In tenths of a metre, as they stand in the file.
Point Rounded(Point at) { return {std::round(at.x * 10.0) / 10.0, std::round(at.y * 10.0) / 10.0}; }

}  // namespace

MadeDraft::MadeDraft(const std::string& kind, std::uint64_t seed)
    : m_Random(SeedOf(kind, seed)), m_Kind(kind), m_Seed(seed) {}

std::uint64_t MadeDraft::Minutes(double from, double to) {
  return static_cast<std::uint64_t>(Between(from, to) * 60.0) * kSecondMs;
}

void MadeDraft::Air(double exponent, double shadowingDb) {
  m_Exponent = exponent;
  m_ShadowingDb = shadowingDb;
}

// What an option asks for stands beside what the kind has of itself.
void MadeDraft::SetOptions(const MadeOptions& options) {
  m_Options.cold |= options.cold;
  m_Options.roamingDriver |= options.roamingDriver;
  m_Options.background |= options.background;
  m_Options.twoAdapters |= options.twoAdapters;
}

std::size_t MadeDraft::Own(MadeAp ap) {
  ap.at = Rounded(ap.at);
  m_Aps.push_back(std::move(ap));
  m_Own.push_back(true);
  return m_Aps.size() - 1;
}

void MadeDraft::Node(const std::string& ssid, Point at, bool wide) {
  const bool he = Chance(0.5);
  Own({.ssid = ssid,
       .band = MadeBand::k2,
       .channel = kChannels2[Below(3)],
       .phy = he ? "he" : "ht",
       .widthMHz = 20,
       .at = at,
       .power = 17.0});
  Own({.ssid = ssid,
       .channel = kChannels5[Below(6)],
       .phy = he ? "he" : "vht",
       .widthMHz = wide ? 80 : 40,
       .at = at,
       .power = Between(17.0, 21.0)});
}

void MadeDraft::Neighbours(int count, double widthMetres) {
  for (int i = 0; i < count; ++i) {
    const bool low = Chance(0.55);
    m_Aps.push_back(
        {.ssid = FormatA("Neighbour %i", i / 2 + 1),
         .band = low ? MadeBand::k2 : MadeBand::k5,
         .channel = low ? kChannels2[Below(3)] : kChannels5[Below(6)],
         .phy = low ? "ht" : "vht",
         .widthMHz = low ? 20 : 80,
         .at = Rounded({Between(-widthMetres, widthMetres), Between(-widthMetres, widthMetres)}),
         .power = Between(14.0, 20.0),
         .load = Chance(0.5) ? Below(200) : -1});
    m_Own.push_back(false);
  }
}

void MadeDraft::Begin(Point at) { m_Start = m_Place = Rounded(at); }

void MadeDraft::WalkTo(Point to, double metresPerSecond) {
  to = Rounded(to);
  const double metres = std::hypot(to.x - m_Place.x, to.y - m_Place.y);
  if (metres < 0.5 || m_ClockMs >= m_DurationMs) return;
  const double speed = std::round(metresPerSecond * 100.0) / 100.0;
  m_Legs.push_back({m_ClockMs, to, speed});
  m_ClockMs += static_cast<std::uint64_t>(metres / speed * 1000.0) + kSecondMs;
  m_Place = to;
}

void MadeDraft::Traffic(int adapter) {
  std::uint64_t ms = Minutes(0.3, 2.0);
  while (ms < m_DurationMs) {
    Flow flow{adapter, ms, 0, 0.0, 0.0};
    const int what = Below(20);
    if (what < 4) {  // a call
      flow.toMs = ms + Minutes(2.0, 9.0);
      flow.in = Between(1.0, 3.0);
      flow.out = Between(0.8, 2.0);
    } else if (what < 6) {  // a video
      flow.toMs = ms + Minutes(3.0, 10.0);
      flow.in = Between(4.0, 9.0);
      flow.out = 0.1;
    } else if (what < 9) {  // a download
      flow.toMs = ms + Minutes(0.4, 2.0);
      flow.in = Between(15.0, 80.0);
      flow.out = 0.8;
    } else {  // a page, a mail
      flow.toMs = ms + Minutes(0.1, 0.4);
      flow.in = Between(2.0, 10.0);
      flow.out = 0.3;
    }
    flow.toMs = std::min(flow.toMs, m_DurationMs);
    m_Flows.push_back(flow);
    ms = flow.toMs + Minutes(0.5, 4.5);
  }
}

void MadeDraft::Trickle(double mbps) {
  for (int adapter = 0; adapter < Adapters(); ++adapter)
    m_Flows.push_back({adapter, 0, m_DurationMs, mbps * 0.7, mbps * 0.3});
}

void MadeDraft::At(std::uint64_t ms, const std::string& members) {
  if (ms < m_DurationMs) m_Events.push_back({ms, members});
}

std::string MadeDraft::Bssid(std::size_t number) const {
  std::uint64_t sum = 0;
  for (const char c : m_Kind) sum = sum * 31 + static_cast<unsigned char>(c);
  return FormatA("02-%02x-%02x-%02x-%02x-%02x", sum & 0xFF, m_Seed >> 8 & 0xFF, m_Seed & 0xFF,
                 number >> 8, number & 0xFF);
}

double MadeDraft::NominalDbm(const MadeAp& ap) const {
  if (!ap.track.empty()) return ap.track.front().second;
  const double mhz = ap.band == MadeBand::k2 ? 2437.0 : ap.band == MadeBand::k5 ? 5300.0 : 6100.0;
  const double metres = std::max(std::hypot(ap.at.x - m_Start.x, ap.at.y - m_Start.y), 1.0);
  return ap.power - (20.0 * std::log10(mhz) - 27.56) - 10.0 * m_Exponent * std::log10(metres);
}

// Mostly the strongest of 5 GHz, where somebody has sat down; sometimes one that has been left
// behind since.
std::size_t MadeDraft::StartAp() {
  constexpr double kUsableDbm = -75.0, kBonusDb = 12.0;
  std::vector<std::size_t> usable;
  std::size_t best = 0;
  double most = -1000.0;
  for (std::size_t i = 0; i < m_Aps.size(); ++i) {
    if (!m_Own[i] || (m_Aps[i].band == MadeBand::k6 && !m_b6GHz)) continue;
    const double dbm = NominalDbm(m_Aps[i]);
    if (dbm >= kUsableDbm) usable.push_back(i);
    const double weight = dbm + (m_Aps[i].band == MadeBand::k2 ? 0.0 : kBonusDb);
    if (weight > most) {
      most = weight;
      best = i;
    }
  }
  const bool left = Chance(0.5) && !usable.empty();
  return left ? usable[static_cast<std::size_t>(Below(static_cast<int>(usable.size())))] : best;
}

}  // namespace corvane::lab
