#include "corvane_lab/air_truth.h"

#include <algorithm>
#include <cmath>

#include "platform/sim/devices/sim_link_rate.h"
#include "platform/sim/world/connect_rules.h"
#include "platform/sim/world/element_facts.h"
#include "platform/sim/world/radio_model.h"

namespace corvane::lab {

using namespace platform::sim;

namespace {

bool IsFor(int wanted, std::size_t adapter) {
  return wanted == kAllAdapters || wanted == static_cast<int>(adapter);
}

const Profile* ProfileFor(const World& world, std::size_t adapter, const std::string& ssid) {
  const auto found = std::ranges::find_if(world.profiles, [&](const Profile& profile) {
    return profile.ssid == ssid && IsFor(profile.adapter, adapter);
  });
  return found == world.profiles.end() ? nullptr : &*found;
}

// Without a load element the channel is as busy as its band mostly is.
double BusyShare(const AccessPoint& ap) {
  constexpr double kBusy2 = 0.30, kBusy5 = 0.10, kBusy6 = 0.02, kWhole = 255.0;
  if (const auto utilisation = UtilisationOf(ap.elements)) return *utilisation / kWhole;
  const int band = BandOf(ap.frequencyMhz);
  return band == 2 ? kBusy2 : band == 5 ? kBusy5 : kBusy6;
}

}  // namespace

double RateMbps(platform::LONG phy, int widthMhz, int streams, double dbm) {
  constexpr double kNoiseDbm = -95.0, kDbPerDoubling = 3.0, kKbps = 1000.0;
  constexpr double kNeededDb[] = {2, 5, 9, 11, 15, 18, 20, 25, 29, 31, 34, 36};
  constexpr int kMostStreams = 2;
  constexpr double kMost80211b = 11.0;
  double snr = dbm - kNoiseDbm;
  for (int width = 20; width < widthMhz; width *= 2) snr -= kDbPerDoubling;
  int mcs = -1;
  while (mcs < HighestMcs(phy) && snr >= kNeededDb[mcs + 1]) ++mcs;
  if (mcs < 0) return 0.0;
  const double mbps = ModulatedKbps(phy, widthMhz, std::min(streams, kMostStreams), mcs) / kKbps;
  return phy == platform::dot11_phy_type_hrdsss ? std::min(mbps, kMost80211b) : mbps;
}

AirTruth::AirTruth(const World& world, std::uint64_t seed)
    : m_Seed(seed), m_World(world), m_Fixed(world.accessPoints.size()) {
  for (const AccessPoint& ap : world.accessPoints) m_Busy.push_back(BusyShare(ap));
  for (const Adapter& adapter : world.adapters) {
    std::vector<Shape>& shapes = m_Shapes.emplace_back();
    for (const AccessPoint& ap : world.accessPoints) {
      const platform::LONG phy = CommonPhy(adapter.phys, ap.phy);
      shapes.push_back({phy, LinkWidthMhz(phy, ap.elements),
                        std::min(adapter.streams, LinkStreams(phy, ap.elements))});
    }
  }
  MoveTo(0);
}

void AirTruth::MoveTo(std::uint64_t ms) {
  m_Ms = std::max(m_Ms, ms);
  // Actions change the world but for its timeline.
  for (; m_Next < m_World.timeline.size() && m_World.timeline[m_Next].atMs <= m_Ms; ++m_Next)
    Carry(m_World.timeline[m_Next]);
  m_Place = PositionAt(m_World.path, m_Ms);
}

void AirTruth::Carry(const Action& action) {
  const auto found = std::ranges::find(m_World.accessPoints, action.bssid, &AccessPoint::bssid);
  const bool known = found != m_World.accessPoints.end();
  const auto number = static_cast<std::size_t>(found - m_World.accessPoints.begin());
  switch (action.kind) {
    case ActionKind::kMove:
      return AddWalk(&m_World.path, action.atMs, action.to, action.speed);
    case ActionKind::kAccessPoint:
      if (!known) return;
      found->alive.clear();
      if (!action.on) found->alive.push_back({kForever, kForever});
      return;
    case ActionKind::kLoad:
      if (!known) return;
      SetQbssLoad(&found->elements, action.stations, action.utilisation);
      m_Busy[number] = BusyShare(*found);
      return;
    case ActionKind::kSignal:
      if (known)
        m_Fixed[number] = std::isnan(action.dbm) ? std::nullopt : std::optional(action.dbm);
      return;
    case ActionKind::kRefuse:
      if (known) found->refuseReason = action.code;
      return;
    case ActionKind::kTraffic:
      m_World.traffic.push_back(action.traffic);
      m_World.traffic.back().span.ShiftBy(action.atMs);
      return;
    case ActionKind::kFilter:
      std::erase_if(m_World.filters, [&](const Filter& filter) {
        return filter.type == action.filter.type && filter.ssid == action.filter.ssid;
      });
      if (action.on) m_World.filters.push_back(action.filter);
      return;
    case ActionKind::kWlanService:
      m_bService = action.on;
      return;
    case ActionKind::kSuspend:
    case ActionKind::kResume:
      m_bSuspended = action.kind == ActionKind::kSuspend;
      return;
    case ActionKind::kProfile:
      return CarryProfile(action);
    default:
      return CarryForAdapters(action);
  }
}

void AirTruth::CarryProfile(const Action& action) {
  std::erase_if(m_World.profiles, [&](const Profile& profile) {
    return profile.name == action.profile.name && profile.adapter == action.profile.adapter;
  });
  if (action.on) m_World.profiles.push_back(action.profile);
}

void AirTruth::CarryForAdapters(const Action& action) {
  for (std::size_t i = 0; i < m_World.adapters.size(); ++i) {
    Adapter& adapter = m_World.adapters[i];
    if (!IsFor(action.adapter, i)) continue;
    if (action.kind == ActionKind::kAdapter) adapter.present = action.on;
    if (action.kind == ActionKind::kRadio)
      (action.hardware ? adapter.hardwareRadioOn : adapter.radioOn) = action.on;
  }
}

bool AirTruth::CanSend(std::size_t adapter) const {
  const Adapter& data = m_World.adapters[adapter];
  return m_bService && !m_bSuspended && data.present && data.radioOn && data.hardwareRadioOn;
}

std::optional<double> AirTruth::Dbm(std::size_t adapter, std::size_t accessPoint) const {
  if (!CanSend(adapter)) return std::nullopt;
  return HeardDbm(m_World, m_World.adapters[adapter], m_World.accessPoints[accessPoint],
                  m_Fixed[accessPoint], m_Place, m_Ms, m_Seed);
}

double AirTruth::Mbps(std::size_t adapter, std::size_t accessPoint) const {
  const auto dbm = Dbm(adapter, accessPoint);
  return dbm ? MbpsAt(adapter, accessPoint, *dbm) : 0.0;
}

double AirTruth::MbpsAt(std::size_t adapter, std::size_t accessPoint, double dbm) const {
  const Shape& shape = m_Shapes[adapter][accessPoint];
  const double limit = m_World.adapters[adapter].txLimitMbps;
  const double rate = RateMbps(shape.phy, shape.widthMhz, shape.streams, dbm);
  return (limit > 0.0 ? std::min(rate, limit) : rate) * (1.0 - m_Busy[accessPoint]);
}

bool AirTruth::LetsIn(std::size_t adapter, std::size_t accessPoint) const {
  const AccessPoint& ap = m_World.accessPoints[accessPoint];
  const Profile* profile = ProfileFor(m_World, adapter, ap.ssid);
  return profile && ap.refuseReason == 0 && ap.security.Enabled() &&
         ap.bssType == platform::dot11_BSS_type_infrastructure &&
         FilterReason(m_World.filters, ap.ssid) == 0 && Agree(profile->security, ap.security) &&
         KeyFits(profile->security, ap.security);
}

double AirTruth::TrafficMbps(std::size_t adapter) const {
  double sum = 0.0;
  for (const Traffic& traffic : m_World.traffic) {
    if (IsFor(traffic.adapter, adapter) && traffic.span.Holds(m_Ms))
      sum += traffic.inMbps + traffic.outMbps;
  }
  return sum;
}

int Truth::TrafficPhases() const {
  int phases = 0;
  for (const AdapterTruth& adapter : adapters) {
    for (std::size_t second = 0; second < seconds; ++second)
      phases += adapter.busy[second] && (second == 0 || !adapter.busy[second - 1]);
  }
  return phases;
}

Truth LookAhead(const World& world, std::uint64_t seed, std::size_t seconds) {
  constexpr std::uint64_t kMiddleMs = 500;
  Truth truth;
  truth.seconds = seconds;
  truth.accessPoints = world.accessPoints.size();
  truth.adapters.resize(world.adapters.size());
  for (AdapterTruth& adapter : truth.adapters) {
    adapter.mbps.assign(truth.accessPoints, std::vector<float>(seconds));
    adapter.heard.assign(truth.accessPoints, std::vector<std::uint8_t>(seconds));
    adapter.letsIn = adapter.heard;
    adapter.busy.resize(seconds);
  }
  AirTruth air(world, seed);
  for (std::size_t second = 0; second < seconds; ++second) {
    air.MoveTo(second * 1000 + kMiddleMs);
    for (std::size_t i = 0; i < truth.adapters.size(); ++i) {
      AdapterTruth& adapter = truth.adapters[i];
      adapter.busy[second] = air.TrafficMbps(i) >= kPhaseMbps;
      for (std::size_t ap = 0; ap < truth.accessPoints; ++ap) {
        const auto dbm = air.Dbm(i, ap);
        if (!dbm) continue;
        adapter.heard[ap][second] = 1;
        adapter.letsIn[ap][second] = air.LetsIn(i, ap);
        adapter.mbps[ap][second] = static_cast<float>(air.MbpsAt(i, ap, *dbm));
      }
    }
  }
  return truth;
}

}  // namespace corvane::lab
