#include "corvane_lab/peer_client.h"

#include <algorithm>
#include <cstring>

#include "platform/platform.h"
#include "platform/sim/devices/sim_link_rate.h"
#include "platform/sim/devices/sim_machine.h"
#include "platform/sim/world/element_facts.h"
#include "platform/sim/world/radio_model.h"
#include "platform/wlan_api.h"

namespace corvane::lab {

using namespace platform;

namespace {

constexpr DWORD kClientVersion = 2;

// A buffer of the WLAN service's.
template <class Data>
class Buffer {
 public:
  Buffer() = default;
  ~Buffer() {
    if (m_pData) Os().wlan.WlanFreeMemory(m_pData);
  }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  Data** Put() { return &m_pData; }
  void** PutVoid() { return reinterpret_cast<void**>(&m_pData); }
  const Data* Get() const { return m_pData; }

 private:
  Data* m_pData = nullptr;
};

sim::Mac ToMac(const DOT11_MAC_ADDRESS& address) {
  sim::Mac mac;
  std::memcpy(mac.data(), address, mac.size());
  return mac;
}

}  // namespace

PeerClient::PeerClient(const sim::World& world, PcTrace& trace, MakeRule make)
    : m_World(world), m_Trace(trace) {
  for (std::size_t i = 0; i < world.accessPoints.size(); ++i)
    m_Numbers[world.accessPoints[i].bssid] = i;
  for (std::size_t i = 0; i < world.adapters.size(); ++i) m_Places.push_back({make(), false});
  DWORD version = 0;
  Os().wlan.WlanOpenHandle(kClientVersion, nullptr, &version, &m_hClient);
}

PeerClient::~PeerClient() { Os().wlan.WlanCloseHandle(m_hClient, nullptr); }

void PeerClient::Look(std::uint64_t nowMs) {
  for (std::size_t adapter = 0; adapter < m_Places.size(); ++adapter) LookAt(adapter, nowMs);
}

void PeerClient::LookAt(std::size_t adapter, std::uint64_t nowMs) {
  Place& place = m_Places[adapter];
  if (const int failed = m_Trace.TakeFailure(adapter); failed != kNoLink)
    place.rule->OnFailed(nowMs, failed);
  const bool scanned = m_Trace.TakeScanEnd(adapter);
  if (scanned) place.scanning = false;
  const auto link = LinkOf(adapter);
  if (!link) return;
  if (scanned) {
    if (const auto choice = place.rule->Choose(nowMs, *link, Heard(adapter)))
      return Connect(adapter, *choice);
  }
  if (place.scanning || !place.rule->WantsScan(nowMs, *link)) return;
  place.scanning = Os().wlan.WlanScan(m_hClient, &m_World.adapters[adapter].guid, nullptr, nullptr,
                                      nullptr) == ERROR_SUCCESS;
}

std::optional<PeerLink> PeerClient::LinkOf(std::size_t adapter) const {
  const GUID& guid = m_World.adapters[adapter].guid;
  Buffer<WLAN_CONNECTION_ATTRIBUTES> attributes;
  Buffer<LONG> rssi;
  DWORD size = 0;
  if (Os().wlan.WlanQueryInterface(m_hClient, &guid, wlan_intf_opcode_current_connection, nullptr,
                                   &size, attributes.PutVoid(), nullptr) != ERROR_SUCCESS ||
      Os().wlan.WlanQueryInterface(m_hClient, &guid, wlan_intf_opcode_rssi, nullptr, &size,
                                   rssi.PutVoid(), nullptr) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  const auto found = m_Numbers.find(ToMac(attributes.Get()->wlanAssociationAttributes.dot11Bssid));
  if (found == m_Numbers.end()) return std::nullopt;
  const sim::AccessPoint& ap = m_World.accessPoints[found->second];
  return PeerLink{static_cast<int>(found->second), ap.ssid, static_cast<double>(*rssi.Get()),
                  sim::BandOf(ap.frequencyMhz)};
}

std::vector<PeerEntry> PeerClient::Heard(std::size_t adapter) const {
  std::vector<PeerEntry> heard;
  Buffer<WLAN_BSS_LIST> list;
  if (Os().wlan.WlanGetNetworkBssList(m_hClient, &m_World.adapters[adapter].guid, nullptr,
                                      dot11_BSS_type_any, FALSE, nullptr,
                                      list.Put()) != ERROR_SUCCESS) {
    return heard;
  }
  const WLAN_BSS_ENTRY* entries = list.Get()->wlanBssEntries;
  for (DWORD i = 0; i < list.Get()->dwNumberOfItems; ++i) {
    const auto found = m_Numbers.find(ToMac(entries[i].dot11Bssid));
    if (found == m_Numbers.end() || !ProfileOf(adapter, sim::FromDot11(entries[i].dot11Ssid)))
      continue;
    heard.push_back(Read(adapter, found->second, entries[i]));
  }
  return heard;
}

PeerEntry PeerClient::Read(std::size_t adapter, std::size_t accessPoint,
                           const WLAN_BSS_ENTRY& entry) const {
  const sim::Adapter& own = m_World.adapters[adapter];
  const BYTE* begin = reinterpret_cast<const BYTE*>(&entry) + entry.ulIeOffset;
  const std::vector<BYTE> elements(begin, begin + entry.ulIeSize);
  PeerEntry out;
  out.accessPoint = static_cast<int>(accessPoint);
  out.ssid = sim::FromDot11(entry.dot11Ssid);
  out.dbm = entry.lRssi;
  out.band = sim::BandOf(entry.ulChCenterFrequency / 1000);
  out.phy = sim::CommonPhy(own.phys, entry.dot11BssPhyType);
  out.widthMhz = sim::LinkWidthMhz(out.phy, elements);
  out.streams = std::min(own.streams, sim::LinkStreams(out.phy, elements));
  out.utilisation = sim::UtilisationOf(elements);
  out.mobilityDomain = sim::MobilityDomainOf(elements);
  return out;
}

// The first one of the SSID that is not open.
const sim::Profile* PeerClient::ProfileOf(std::size_t adapter, const std::string& ssid) const {
  const auto found = std::ranges::find_if(m_World.profiles, [&](const sim::Profile& profile) {
    const bool ours =
        profile.adapter == sim::kAllAdapters || profile.adapter == static_cast<int>(adapter);
    return ours && profile.ssid == ssid && profile.security.Enabled();
  });
  return found == m_World.profiles.end() ? nullptr : &*found;
}

void PeerClient::Connect(std::size_t adapter, int accessPoint) const {
  const sim::AccessPoint& ap = m_World.accessPoints[static_cast<std::size_t>(accessPoint)];
  const sim::Profile* profile = ProfileOf(adapter, ap.ssid);
  if (!profile) return;
  DOT11_BSSID_LIST wanted;
  wanted.Header = {0x80, 1, sizeof(DOT11_BSSID_LIST)};  // NDIS_OBJECT_TYPE_DEFAULT, revision 1
  wanted.uNumOfEntries = wanted.uTotalNumOfEntries = 1;
  std::ranges::copy(ap.bssid, wanted.BSSIDs[0]);
  WLAN_CONNECTION_PARAMETERS parameters;
  parameters.wlanConnectionMode = wlan_connection_mode_profile;
  parameters.strProfile = profile->name.c_str();
  parameters.pDesiredBssidList = &wanted;
  parameters.dot11BssType = dot11_BSS_type_infrastructure;
  Os().wlan.WlanConnect(m_hClient, &m_World.adapters[adapter].guid, &parameters, nullptr);
}

}  // namespace corvane::lab
