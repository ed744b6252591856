#include "corvane_lab/recorded_world.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <tuple>
#include <utility>

#include "corvane_lab/recorded_switches.h"
#include "corvane_lab/recorded_track.h"
#include "platform/sim/world/element_facts.h"
#include "platform/sim/world/world_profile.h"
#include "record/recording_form.h"
#include "record/recording_writer.h"
#include "store/value_names.h"
#include "store/value_table.h"

namespace corvane::lab {

namespace {

using namespace platform;
using sim::Action;
using sim::ActionKind;
using sim::World;

constexpr char kClient[] = "recorded";
constexpr char16_t kVpn[] = u"Recorded VPN";
constexpr char16_t kWired[] = u"Recorded LAN";
constexpr char16_t kRadioStateKey[] =
    u"SYSTEM\\CurrentControlSet\\Control\\RadioManagement\\SystemRadioState";
// By then the start has given the settings their first values.
constexpr std::uint64_t kStartedMs = 8000;
constexpr std::uint64_t kLastRoundMs = 15'000;  // for the round after the last one
constexpr int kHearsAll = -200;                 // the tracks tell what it hears
constexpr double kBackgroundMbps = 0.05;        // what a quiet connection carries anyway

std::vector<LONG> PhysOf(const std::string& phyClass) {
  constexpr std::array<std::pair<const char*, LONG>, 6> kClasses = {{{"b", dot11_phy_type_hrdsss},
                                                                     {"a", dot11_phy_type_ofdm},
                                                                     {"g", dot11_phy_type_erp},
                                                                     {"n", dot11_phy_type_ht},
                                                                     {"ac", dot11_phy_type_vht},
                                                                     {"ax", dot11_phy_type_he}}};
  std::vector<LONG> phys;
  for (const auto& [name, phy] : kClasses) {
    phys.push_back(phy);
    if (phyClass == name) break;
  }
  return phys;
}

class Builder {
 public:
  Builder(const Recording& run, RecordedOthers others)
      : m_Run(run), m_bAsRecorded(others == RecordedOthers::kAsRecorded) {}

  World Build() {
    m_World.name = "a recording of " + m_Run.utc;
    m_World.description = "What a service recorded of its adapters.";
    m_World.durationMs = m_Run.lengthMs + kLastRoundMs;
    AddAdapters();
    AddAccessPoints();
    AddTracks();
    AddProfiles();
    AddNetworks();
    AddFilters();
    AddSettings();
    AddConnections();
    AddTraffic();
    AddMachine();
    AddOrders();
    std::ranges::stable_sort(m_World.timeline, {}, &Action::atMs);
    return std::move(m_World);
  }

 private:
  // An access point as the air has it, whoever hears it.
  using Identity = std::tuple<MacAddress, std::string, std::uint32_t, std::int32_t, std::int32_t,
                              std::uint16_t, std::uint16_t>;

  void AddAdapters() {
    for (const Recording::Adapter& one : m_Run.adapters) {
      sim::Adapter adapter;
      const auto number = static_cast<unsigned char>(m_World.adapters.size() + 1);
      if (!GuidFromText(Utf8ToWide(one.guid), &adapter.guid))
        adapter.guid = GUID{0x7E1D0000, 0, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, number}};
      if (MacAddress mac{}; MacStringToBinary(u'-', Utf8ToWide(one.mac), &mac)) adapter.mac = mac;
      if (IsZero(adapter.mac)) adapter.mac = {0x02, 0xAD, 0, 0, 0, number};
      adapter.description = Utf8ToWide(one.description);
      adapter.connectionName = Utf8ToWide(one.name);
      adapter.phys = PhysOf(one.phyClass);
      adapter.bands = {2, 5, 6};
      adapter.sensitivityDbm = kHearsAll;
      m_Adapters[one.index] = static_cast<int>(m_World.adapters.size());
      m_World.adapters.push_back(std::move(adapter));
    }
  }

  // Nothing for an adapter that the recording does not tell of.
  std::optional<int> AdapterOf(int index) const {
    const auto at = m_Adapters.find(index);
    return at == m_Adapters.end() ? std::nullopt : std::optional(at->second);
  }

  void AddAccessPoints() {
    std::map<Identity, std::size_t> places;
    for (const Recording::AccessPoint& one : m_Run.accessPoints) {
      Identity identity(one.bssid, one.ssid, one.frequencyKhz, one.phy, one.type, one.capability,
                        one.beaconPeriod);
      const auto [at, isNew] = places.try_emplace(std::move(identity), m_World.accessPoints.size());
      m_Places.push_back(at->second);
      if (!isNew) continue;
      constexpr std::uint32_t kKhzInMhz = 1000;
      sim::AccessPoint ap;
      ap.bssid = one.bssid;
      ap.ssid = one.ssid;
      ap.frequencyMhz = one.frequencyKhz / kKhzInMhz;
      ap.phy = one.phy;
      ap.bssType = one.type;
      ap.capability = one.capability;
      ap.beaconPeriod = one.beaconPeriod;
      ap.heard.resize(m_World.adapters.size());
      m_World.accessPoints.push_back(std::move(ap));
    }
  }

  const std::shared_ptr<const std::vector<BYTE>>& BytesOf(std::size_t elements) {
    m_Bytes.resize(m_Run.elementBytes.size());
    if (!m_Bytes[elements]) {
      const std::string& bytes = m_Run.elementBytes[elements];
      m_Bytes[elements] = std::make_shared<const std::vector<BYTE>>(bytes.begin(), bytes.end());
    }
    return m_Bytes[elements];
  }

  void AddTracks() {
    std::map<std::pair<std::size_t, int>, TrackMaker> tracks;  // by access point and adapter
    for (const Recording::Reading& reading : m_Run.readings) {
      const auto adapter = AdapterOf(reading.adapter);
      if (!adapter) continue;
      std::vector<bool> heard(m_World.accessPoints.size());
      for (const Recording::Heard& one : reading.heard) {
        const std::size_t place = m_Places[one.accessPoint];
        heard[place] = true;
        tracks[{place, *adapter}].Hear(reading.ms, DbmOf(one.rssi, one.quality));
        Send(place, reading.ms, one.elements);
      }
      for (std::size_t place = 0; reading.scanned && place < heard.size(); ++place)
        if (!heard[place]) tracks[{place, *adapter}].Miss(reading.ms);
      for (const std::size_t gone : reading.gone)
        if (!heard[m_Places[gone]]) tracks[{m_Places[gone], *adapter}].Miss(reading.ms);
    }
    for (auto& [key, track] : tracks)
      m_World.accessPoints[key.first].heard[static_cast<std::size_t>(key.second)] = track.Take();
    for (sim::AccessPoint& ap : m_World.accessPoints) {
      if (!ap.sent.empty()) ap.elements = *ap.sent.front().bytes;
      ap.security = sim::SecurityOf(ap.elements);
    }
  }

  // Elements change in the middle between the two readings.
  void Send(std::size_t place, std::uint64_t ms, std::size_t elements) {
    auto& sent = m_World.accessPoints[place].sent;
    std::uint64_t& lastMs = m_LastSentMs[place];
    const auto& bytes = BytesOf(elements);
    if (sent.empty() || sent.back().bytes != bytes)
      sent.push_back({sent.empty() ? 0 : Middle(lastMs, ms), bytes});
    lastMs = ms;
  }

  void AddProfiles() {
    std::map<std::pair<int, std::string>, bool> seen;
    for (const Recording::Networks& list : m_Run.networks) {
      const auto adapter = AdapterOf(list.adapter);
      if (!adapter) continue;
      for (const Recording::Network& network : list.networks) {
        if (!network.profile || !seen.try_emplace({*adapter, network.profile->name}).second)
          continue;
        sim::Profile profile;
        profile.adapter = *adapter;
        profile.name = Utf8ToWide(network.profile->name);
        profile.ssid = network.ssid;
        profile.autoConnect = network.profile->autoConnect;
        profile.nonBroadcast = network.profile->nonBroadcast;
        profile.grantedAccess = network.profile->grantedAccess;
        profile.security.auth = network.auth;
        profile.security.cipher = network.cipher;
        profile.xml = sim::ProfileXml(profile);
        m_World.profiles.push_back(std::move(profile));
      }
      for (const Recording::Network& network : list.networks) {
        for (sim::AccessPoint& ap : m_World.accessPoints) {
          if (ap.ssid == network.ssid) ap.security = {network.auth, network.cipher, {}};
        }
      }
    }
  }

  void AddNetworks() {
    constexpr DWORD kInternet = 0x440;
    std::map<std::string, std::size_t> places;
    for (const Recording::Known& known : m_Run.known) {
      for (const Recording::KnownNetwork& one : known.networks) {
        const auto [at, isNew] = places.try_emplace(one.name, m_World.networks.size());
        if (isNew) {
          sim::Network network;
          network.name = network.description = Utf8ToWide(one.name);
          network.ssid = one.name;
          network.category = one.category;
          network.connectivity = one.connectivity;
          network.internet = (one.connectivity & kInternet) != 0 || one.connectivity == 0;
          m_World.networks.push_back(std::move(network));
          continue;
        }
        sim::Network& network = m_World.networks[at->second];
        if (network.connectivity == 0) network.connectivity = one.connectivity;
        if (network.category != one.category) {
          Action& action = Add(known.ms, ActionKind::kNetwork, "category of " + one.name);
          action.network = network.name;
          action.category = one.category;
        }
      }
    }
    for (sim::Network& network : m_World.networks) {
      constexpr DWORD kWhileConnected = 0x40;
      if (network.connectivity == 0) network.connectivity = kWhileConnected;
    }
  }

  void AddFilters() {
    for (const Recording::Filters& filters : m_Run.filters) {
      for (const auto& row : filters.bySsid) {
        const std::string& ssid = row.first;
        const std::uint32_t filter = row.second;
        const LONG type = filter == kFilterDenied ? wlan_filter_list_type_user_deny
                                                  : wlan_filter_list_type_user_permit;
        const bool known = std::ranges::any_of(m_World.filters, [&](const sim::Filter& one) {
          return one.ssid == ssid && one.type == type;
        });
        if (!known && filter != kFilterNone)
          m_World.filters.push_back({type, ssid, dot11_BSS_type_infrastructure});
      }
    }
  }

  // What the start of a service writes anew whatever stands there is set behind that. Others are
  // set before the round by which they were seen to have changed.
  void AddSettings() {
    sim::RegistryWrite done;
    done.key = sim::kHomeKey;
    done.name = value::kFreshDone;
    done.number = 1;
    m_World.registry.push_back(done);
    for (const Recording::Value& one : m_Run.values) {
      const bool home = one.key == kHomeValues;
      const auto adapter = home ? std::nullopt : AdapterOf(one.key);
      const WString name = Utf8ToWide(one.name);
      if ((!home && !adapter) || name == value::kRecordAirMB) continue;
      sim::RegistryWrite write;
      write.key = sim::kHomeKey;
      if (adapter)
        write.key += u"\\" + GuidText(m_World.adapters[static_cast<std::size_t>(*adapter)].guid);
      write.name = name;
      if (const auto* text = std::get_if<std::string>(&one.what)) {
        write.type = REG_SZ;
        write.text = Utf8ToWide(*text);
      } else {
        write.number = std::get<std::uint32_t>(one.what);
      }
      const ValueRow* row = FindValue(home ? ValueKey::kHome : ValueKey::kAdapter, name);
      const bool overwritten = row && row->written.when == StartWrite::kAlways &&
                               (!row->written.words.empty() || row->written.number != write.number);
      if (one.ms == m_Run.beginMs && !overwritten) {
        m_World.registry.push_back(std::move(write));
      } else {
        const std::uint64_t ms = Middle(RoundBefore({}, one.ms), one.ms);
        Add(std::max(ms, kStartedMs), ActionKind::kRegistry, one.name).registry = std::move(write);
      }
    }
  }

  // The system's own connects are among what others did.
  void AddConnections() {
    std::map<int, const Recording::Link*> before;
    for (const Recording::Link& link : m_Run.links) {
      const auto adapter = AdapterOf(link.adapter);
      if (!adapter) continue;
      const Recording::Link* last = std::exchange(before[*adapter], &link);
      if (!last) {
        if (link.connected) At(*adapter).connectedTo = link.bssid;
      } else if (m_bAsRecorded && link.connected && last->connected && last->ssid == link.ssid &&
                 last->bssid != link.bssid && !link.own && !WasConnected(*last, link)) {
        Action& action = Add(Middle(RoundBefore(link.adapter, link.ms), link.ms), ActionKind::kRoam,
                             "the driver moves");
        action.adapter = *adapter;
        action.bssid = link.bssid;
      }
    }
    for (sim::Adapter& adapter : m_World.adapters) adapter.autoConnect = !m_bAsRecorded;
    AddTimes();
    for (const Recording::Outside& event : m_Run.outside) {
      if (const auto adapter = AdapterOf(event.adapter)) AddOutside(event, *adapter);
    }
  }

  // How long scans and connects took.
  void AddTimes() {
    for (const Recording::Took& one : m_Run.took) {
      const auto adapter = AdapterOf(one.adapter);
      if (!adapter || one.kind == WlanOperation::kDisconnect) continue;
      const std::uint64_t began = one.ms - std::min<std::uint64_t>(one.ms, one.tookMs);
      (one.kind == WlanOperation::kScan ? At(*adapter).scansTook : At(*adapter).connectsTook)
          .push_back({began, one.tookMs});
    }
    std::map<int, std::uint64_t> connecting;
    for (const Recording::Outside& event : m_Run.outside) {
      const auto adapter = AdapterOf(event.adapter);
      if (!adapter) continue;
      if (event.event == OutsideEvent::kConnecting) connecting[*adapter] = event.ms;
      const auto began = connecting.find(*adapter);
      if (event.event != OutsideEvent::kConnected || began == connecting.end()) continue;
      At(*adapter).connectsTook.push_back(
          {began->second, static_cast<DWORD>(event.ms - began->second)});
      connecting.erase(began);
    }
    for (sim::Adapter& adapter : m_World.adapters)
      std::ranges::stable_sort(adapter.connectsTook, {}, &sim::Took::atMs);
  }

  sim::Adapter& At(int adapter) { return m_World.adapters[static_cast<std::size_t>(adapter)]; }

  // Somebody else has connected the adapter between the two.
  bool WasConnected(const Recording::Link& from, const Recording::Link& to) const {
    return std::ranges::any_of(m_Run.outside, [&](const Recording::Outside& event) {
      return event.adapter == to.adapter && event.event == OutsideEvent::kConnected &&
             from.ms <= event.ms && event.ms <= to.ms;
    });
  }

  void AddOutside(const Recording::Outside& event, int adapter) {
    const auto add = [&](std::uint64_t ms, ActionKind kind) -> Action& {
      const auto word = static_cast<std::size_t>(event.event);
      Action& action = Add(ms, kind, std::string(recording::kOutsideWords[word]));
      action.adapter = adapter;
      return action;
    };
    const bool connects = event.event == OutsideEvent::kConnecting ||
                          event.event == OutsideEvent::kDisconnecting ||
                          event.event == OutsideEvent::kDisconnected;
    if (connects && !m_bAsRecorded) return;
    switch (event.event) {
      case OutsideEvent::kScan:
        add(event.ms - std::min<std::uint64_t>(event.ms, At(adapter).scanMs), ActionKind::kScan);
        return;
      case OutsideEvent::kConnecting: {
        Action& action = add(event.ms, ActionKind::kConnect);
        action.ssid = event.ssid;
        action.bssid = ConnectedAfter(event);
        return;
      }
      case OutsideEvent::kDisconnecting:
      case OutsideEvent::kDisconnected:
        add(event.ms, ActionKind::kDisconnect);
        return;
      case OutsideEvent::kRadioOn:
      case OutsideEvent::kRadioOff:
        add(event.ms, ActionKind::kRadio).on = event.event == OutsideEvent::kRadioOn;
        return;
      case OutsideEvent::kSuspend:
        add(RoundBefore({}, event.ms) + 1, ActionKind::kSuspend);
        return;
      case OutsideEvent::kResume:
        add(event.ms, ActionKind::kResume);
        return;
      case OutsideEvent::kConnected:
        return;  // the connect ends by itself
    }
  }

  // What the connect came to: the access point of the next link to that network; zero for none.
  MacAddress ConnectedAfter(const Recording::Outside& event) const {
    for (const Recording::Link& link : m_Run.links) {
      if (link.ms >= event.ms && link.adapter == event.adapter && link.connected)
        return link.ssid == event.ssid ? link.bssid : MacAddress{};
    }
    return {};
  }

  // When the last round before that time ended, of this adapter or of any; 0 for none.
  std::uint64_t RoundBefore(std::optional<int> adapter, std::uint64_t ms) const {
    std::uint64_t last = 0;
    for (const Recording::Round& round : m_Run.rounds) {
      if (round.ms >= ms) break;
      if (!adapter || round.adapter == *adapter) last = round.ms;
    }
    return last;
  }

  // A rate was measured from the round before to the one that tells it.
  void AddTraffic() {
    std::map<int, sim::Traffic> running;
    for (const Recording::Traffic& one : m_Run.traffic) {
      const auto adapter = AdapterOf(one.adapter);
      if (!adapter) continue;
      sim::Traffic& traffic = running[*adapter];
      const std::uint64_t from = RoundBefore(one.adapter, one.ms);
      traffic.span.toMs = from;
      if (traffic.inMbps > 0.0) m_World.traffic.push_back(traffic);
      traffic.adapter = *adapter;
      traffic.span = {from, sim::kForever};
      traffic.inMbps = one.mbps > kBackgroundMbps ? one.mbps : 0.0;
    }
    for (const auto& [adapter, traffic] : running)
      if (traffic.inMbps > 0.0) m_World.traffic.push_back(traffic);
  }

  void AddMachine() {
    AddOther(kVpn, u"VPN adapter of the recording", 53);
    AddOther(kWired, u"Ethernet adapter of the recording", 6);
    for (const auto& [ms, on] : VpnSwitches(m_Run)) Switch(ms, kVpn, on);
    for (const auto& [ms, on] : WiredSwitches(m_Run)) Switch(ms, kWired, on);
    for (const auto& [ms, on] : AirplaneSwitches(m_Run)) {
      sim::RegistryWrite& write = Add(ms, ActionKind::kRegistry, "airplane mode").registry;
      write.key = kRadioStateKey;
      write.number = on ? 1 : 0;
    }
    for (const Recording::Mains& mains : m_Run.mains) {
      Action& action = Add(mains.ms, ActionKind::kPower, mains.on ? "mains" : "battery");
      action.on = mains.on;
    }
  }

  void AddOther(const char16_t* name, const char16_t* description, DWORD type) {
    sim::OtherAdapter other;
    other.guid = GUID{0x7E1D0001, 0, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 0}};
    other.guid.Data2 = static_cast<std::uint16_t>(type);
    other.friendlyName = name;
    other.description = description;
    other.ifType = type;
    m_World.otherAdapters.push_back(std::move(other));
  }

  void Switch(std::uint64_t ms, const char16_t* name, bool on) {
    Action& action = Add(ms, ActionKind::kInterface, Narrow(name) + (on ? " up" : " down"));
    action.interfaceName = name;
    action.on = on;
  }

  void AddOrders() {
    if (m_Run.orders.empty()) return;
    m_World.clients.push_back({kClient, u"Corvane_ConfigApp.exe"});
    for (const Recording::Order& order : m_Run.orders) {
      Action& action = Add(order.ms, ActionKind::kClient, "the recorded client sends");
      action.client.client = kClient;
      action.client.act = sim::ClientAct::kSend;
      action.client.message = order.json;
    }
  }

  Action& Add(std::uint64_t ms, ActionKind kind, std::string line) {
    Action& action = m_World.timeline.emplace_back();
    action.atMs = ms;
    action.kind = kind;
    action.line = std::move(line);
    return action;
  }

  const Recording& m_Run;
  const bool m_bAsRecorded;
  World m_World;
  std::map<int, int> m_Adapters;      // position by index
  std::vector<std::size_t> m_Places;  // position in the world by that in the recording
  std::vector<std::shared_ptr<const std::vector<BYTE>>> m_Bytes;
  std::map<std::size_t, std::uint64_t> m_LastSentMs;
};

}  // namespace

World WorldOfRecording(const Recording& run, RecordedOthers others) {
  return Builder(run, others).Build();
}

}  // namespace corvane::lab
