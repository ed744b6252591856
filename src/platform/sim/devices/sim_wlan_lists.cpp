#include "platform/sim/devices/sim_wlan_lists.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "platform/sim/devices/sim_link_rate.h"
#include "platform/sim/world/element_facts.h"
#include "platform/sim/world/radio_model.h"

namespace corvane::platform::sim {

namespace {

// What the access points of one SSID come to.
struct Group {
  const AccessPoint* strongest = nullptr;
  double dbm = 0.0;
  ULONG count = 0;
  std::vector<LONG> phys;
};

WLAN_AVAILABLE_NETWORK Record(const std::string& ssid, const Group& group, DWORD denied) {
  WLAN_AVAILABLE_NETWORK record;
  record.dot11Ssid = ToDot11(ssid);
  record.dot11BssType = group.strongest->bssType;
  record.uNumberOfBssids = group.count;
  record.bNetworkConnectable = denied == WLAN_REASON_CODE_SUCCESS;
  record.wlanNotConnectableReason = denied;
  record.uNumberOfPhyTypes =
      static_cast<ULONG>(std::min(group.phys.size(), std::size(record.dot11PhyTypes)));
  std::copy_n(group.phys.begin(), record.uNumberOfPhyTypes, record.dot11PhyTypes);
  record.bMorePhyTypes = group.phys.size() > std::size(record.dot11PhyTypes);
  record.wlanSignalQuality = LinkQualityOf(group.dbm);
  record.bSecurityEnabled = group.strongest->security.Enabled();
  record.dot11DefaultAuthAlgorithm = group.strongest->security.auth;
  record.dot11DefaultCipherAlgorithm = group.strongest->security.cipher;
  return record;
}

}  // namespace

std::vector<WLAN_AVAILABLE_NETWORK> AvailableNetworks(const SimMachine& machine,
                                                      SimWlanAdapter& adapter) {
  std::map<std::string, Group> groups;
  for (const auto& [index, bss] : adapter.Heard().All()) {
    const AccessPoint& ap = machine.world.accessPoints[index];
    Group& group = groups[SimScanList::SsidOf(machine, index, bss)];
    if (!group.strongest || bss.dbm > group.dbm) group.strongest = &ap, group.dbm = bss.dbm;
    if (std::ranges::find(group.phys, ap.phy) == group.phys.end()) group.phys.push_back(ap.phy);
    ++group.count;
  }
  const SimWlanAdapter::Link* link = adapter.Connection();
  std::vector<WLAN_AVAILABLE_NETWORK> records;
  for (const auto& [ssid, group] : groups) {
    WLAN_AVAILABLE_NETWORK record = Record(ssid, group, adapter.DeniedReason(ssid));
    const bool ours = link && link->request.ssid == ssid;
    if (ours) record.wlanSignalQuality = LinkQualityOf(link->dbm);
    bool any = false;
    for (const Profile& profile : adapter.Profiles().All()) {
      if (ssid.empty() || profile.ssid != ssid) continue;
      WLAN_AVAILABLE_NETWORK withProfile = record;
      CopyText(profile.name, withProfile.strProfileName, std::size(withProfile.strProfileName));
      withProfile.dwFlags = WLAN_AVAILABLE_NETWORK_HAS_PROFILE;
      if (ours && link->request.profile == profile.name) {
        withProfile.dwFlags |= WLAN_AVAILABLE_NETWORK_CONNECTED;
      }
      records.push_back(withProfile);
      any = true;
    }
    if (any) continue;
    if (ours) record.dwFlags = WLAN_AVAILABLE_NETWORK_CONNECTED;
    records.push_back(record);
  }
  return records;
}

std::vector<BYTE> BssList(const SimMachine& machine, SimWlanAdapter& adapter,
                          const DOT11_SSID* ssid, LONG bssType) {
  struct Row {
    WLAN_BSS_ENTRY entry;
    SimMachine::Elements elements;
  };
  std::vector<Row> rows;
  std::size_t elementBytes = 0;
  for (const auto& [index, bss] : adapter.Heard().All()) {
    const AccessPoint& ap = machine.world.accessPoints[index];
    const std::string name = SimScanList::SsidOf(machine, index, bss);
    if (ssid && FromDot11(*ssid) != name) continue;
    if (bssType != dot11_BSS_type_any && bssType != ap.bssType) continue;
    Row row{{}, bss.elements};
    WLAN_BSS_ENTRY& entry = row.entry;
    entry.dot11Ssid = ToDot11(name);
    std::ranges::copy(ap.bssid, entry.dot11Bssid);
    entry.dot11BssType = ap.bssType;
    entry.dot11BssPhyType = ap.phy;
    entry.lRssi = static_cast<LONG>(bss.dbm < 0 ? bss.dbm - 0.5 : bss.dbm + 0.5);
    entry.uLinkQuality = LinkQualityOf(bss.dbm);
    entry.bInRegDomain = 1;
    entry.usBeaconPeriod = ap.beaconPeriod;
    entry.ullTimestamp = bss.heardMs * 1000;
    entry.ullHostTimestamp = (machine.loop.WallSecs() + 11'644'473'600) * 10'000'000;
    entry.usCapabilityInformation = ap.capability;
    entry.ulChCenterFrequency = ap.frequencyMhz * 1000;
    entry.wlanRateSet = RateSetOf(ap.elements);
    entry.ulIeSize = static_cast<ULONG>(bss.elements->size());
    elementBytes += bss.elements->size();
    rows.push_back(std::move(row));
  }
  const std::size_t header = offsetof(WLAN_BSS_LIST, wlanBssEntries);
  std::vector<BYTE> bytes(header + rows.size() * sizeof(WLAN_BSS_ENTRY) + elementBytes);
  const DWORD total = static_cast<DWORD>(bytes.size());
  const DWORD count = static_cast<DWORD>(rows.size());
  std::memcpy(bytes.data(), &total, sizeof total);
  std::memcpy(bytes.data() + sizeof total, &count, sizeof count);
  std::size_t at = header;
  std::size_t elementsAt = header + rows.size() * sizeof(WLAN_BSS_ENTRY);
  for (Row& row : rows) {
    row.entry.ulIeOffset = static_cast<ULONG>(elementsAt - at);
    std::memcpy(bytes.data() + at, &row.entry, sizeof row.entry);
    std::ranges::copy(*row.elements, bytes.begin() + static_cast<std::ptrdiff_t>(elementsAt));
    at += sizeof row.entry;
    elementsAt += row.elements->size();
  }
  return bytes;
}

WLAN_CONNECTION_ATTRIBUTES ConnectionAttributes(const SimMachine& machine,
                                                const SimWlanAdapter& adapter) {
  const SimWlanAdapter::Link& link = *adapter.Connection();
  const Adapter& data = adapter.Data();
  const AccessPoint& ap = machine.world.accessPoints[link.accessPoint];
  WLAN_CONNECTION_ATTRIBUTES attributes;
  attributes.isState = wlan_interface_state_connected;
  attributes.wlanConnectionMode = link.request.mode;
  CopyText(link.request.profile, attributes.strProfileName, std::size(attributes.strProfileName));
  WLAN_ASSOCIATION_ATTRIBUTES& association = attributes.wlanAssociationAttributes;
  association.dot11Ssid = ToDot11(ap.ssid);
  association.dot11BssType = ap.bssType;
  std::ranges::copy(ap.bssid, association.dot11Bssid);
  association.dot11PhyType = CommonPhy(data.phys, ap.phy);
  const auto phy = std::ranges::find(data.phys, association.dot11PhyType);
  association.uDot11PhyIndex =
      phy == data.phys.end() ? 0 : static_cast<ULONG>(phy - data.phys.begin());
  association.wlanSignalQuality = LinkQualityOf(link.dbm);
  ULONG rate = LinkRateKbps(association.dot11PhyType, ap.elements, link.dbm, data.streams);
  if (data.txLimitMbps > 0.0) rate = std::min(rate, static_cast<ULONG>(data.txLimitMbps * 1000.0));
  association.ulRxRate = association.ulTxRate = rate;
  WLAN_SECURITY_ATTRIBUTES& security = attributes.wlanSecurityAttributes;
  security.bSecurityEnabled = ap.security.Enabled();
  security.dot11AuthAlgorithm = ap.security.auth;
  security.dot11CipherAlgorithm = ap.security.cipher;
  security.bOneXEnabled = ap.security.auth == DOT11_AUTH_ALGO_RSNA ||
                          ap.security.auth == DOT11_AUTH_ALGO_WPA ||
                          ap.security.auth == DOT11_AUTH_ALGO_WPA3;
  return attributes;
}

WLAN_RADIO_STATE RadioState(const Adapter& adapter) {
  const auto word = [](bool on) { return on ? dot11_radio_state_on : dot11_radio_state_off; };
  WLAN_RADIO_STATE state;
  state.dwNumberOfPhys =
      static_cast<DWORD>(std::min(adapter.phys.size(), std::size(state.PhyRadioState)));
  for (DWORD i = 0; i < state.dwNumberOfPhys; ++i) {
    state.PhyRadioState[i] = {i, word(adapter.radioOn), word(adapter.hardwareRadioOn)};
  }
  return state;
}

ULONG ChannelOf(ULONG frequencyMhz) {
  if (frequencyMhz == 2484) return 14;
  if (frequencyMhz == 5935) return 2;
  if (frequencyMhz >= 2412 && frequencyMhz < 2484) return (frequencyMhz - 2407) / 5;
  if (frequencyMhz > 5950 && frequencyMhz <= 7115) return (frequencyMhz - 5950) / 5;
  if (frequencyMhz > 5000 && frequencyMhz < 5900) return (frequencyMhz - 5000) / 5;
  return 0;
}

}  // namespace corvane::platform::sim
