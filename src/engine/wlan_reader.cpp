#include "engine/wlan_reader.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "engine/change_rules.h"
#include "engine/engine_bits.h"
#include "engine/shared_word.h"
#include "engine/wlan_buffer_owner.h"

namespace corvane {

using namespace platform;

namespace {

constexpr std::uint16_t kUsualLink = 1;
constexpr std::uint16_t kPrivateLink = 4;
constexpr std::uint16_t k11adLink = 6;
constexpr std::uint16_t kBssidBytes = 6;
constexpr std::uint32_t kKbpsPerMbps = 1000;
constexpr std::uint16_t kFullQuality = 100;

// A private call to the adapter's driver: a head of six words, then the data of the answer.
template <std::size_t DataBytes>
struct PrivateCall {
  explicit PrivateCall(std::uint32_t code) {
    words[1] = code;
    words[3] = DataBytes;
  }
  bool Run(HANDLE client, const GUID& adapter) {
    DWORD returned = 0;
    const PrivateCall asked = *this;
    return WlanCode("WlanIhvControl", [&] {
             return Os().wlan.WlanIhvControl(client, &adapter, wlan_ihv_control_type_driver, kBytes,
                                             &asked, kBytes, this, &returned);
           }) == ERROR_SUCCESS;
  }
  std::uint32_t words[6] = {};
  std::uint8_t data[DataBytes] = {};
  static constexpr DWORD kBytes = 24 + DataBytes;
};

// What an adapter is asked, and where its answer goes.
struct Reader {
  CLBWlanAccess& wlan;
  LBAdapterEntry& entry;
  LBAdapterSlot& slot;

  bool WasUp() const { return (entry.oldState & slot_state::kUp) != 0; }
  std::uint32_t Generic();
  std::uint32_t Private();

 private:
  std::uint32_t ConnectedNetwork();
  void BssidOf(const WLAN_AVAILABLE_NETWORK& network);
  std::uint32_t Rates();
  std::uint32_t PrivateConnection();
  std::uint32_t TakeNetwork(const DOT11_SSID& ssid, std::uint32_t quality);
  std::uint32_t LoseNetwork();
  DWORD Query(LONG opcode, std::size_t least, CLBWlanBuffer<void>* data);
};

DWORD Reader::Query(LONG opcode, std::size_t least, CLBWlanBuffer<void>* data) {
  DWORD size = 0;
  LONG type = 0;
  const DWORD result = WlanCode("WlanQueryInterface", [&] {
    return Os().wlan.WlanQueryInterface(wlan.Client(), &entry.wlanInterface, opcode, nullptr, &size,
                                        data->Out(), &type);
  });
  if (result == ERROR_SUCCESS && (!*data || size < least)) return ERROR_INVALID_DATA;
  return result;
}

// Stores the network; the change bits against the one before.
std::uint32_t Reader::TakeNetwork(const DOT11_SSID& ssid, std::uint32_t quality) {
  LBWlanArea& area = slot.wlan;
  LBWlanNetwork before, now;
  std::memcpy(before.ssid, area.ssid, sizeof(before.ssid));
  before.ssidLength = area.ssidLength;
  before.quality = area.quality;
  now.ssidLength = std::min<std::uint32_t>(ssid.uSSIDLength, sizeof(now.ssid));
  std::memcpy(now.ssid, ssid.ucSSID, now.ssidLength);
  now.quality = quality;
  PutBytes(area.ssid, now.ssid, sizeof(now.ssid));
  Put(area.ssidLength, static_cast<std::uint16_t>(now.ssidLength));
  Put(area.quality, static_cast<std::uint16_t>(quality));
  return WasUp() ? NetworkChange(before, now) : 0;
}

std::uint32_t Reader::LoseNetwork() {
  const bool had = slot.wlan.ssidLength != 0;
  Put(slot.wlan.ssidLength, 0);
  PutZero(slot.wlan.ssid, sizeof(slot.wlan.ssid));
  return had ? change::kDown : 0;
}

std::uint32_t Reader::Generic() { return ConnectedNetwork() | Rates(); }

std::uint32_t Reader::ConnectedNetwork() {
  CLBWlanBuffer<WLAN_AVAILABLE_NETWORK_LIST> list;
  const DWORD result = WlanCode("WlanGetAvailableNetworkList", [&] {
    return Os().wlan.WlanGetAvailableNetworkList(wlan.Client(), &entry.wlanInterface, 0, nullptr,
                                                 list.Out());
  });
  if (result != ERROR_SUCCESS || !list) return 0;
  const std::span networks(list->Network, list->dwNumberOfItems);
  const auto found = std::find_if(networks.begin(), networks.end(), [](const auto& one) {
    return (one.dwFlags & WLAN_AVAILABLE_NETWORK_CONNECTED) != 0;
  });
  if (found == networks.end()) {
    const std::uint32_t lost = LoseNetwork();
    return WasUp() ? lost : 0;
  }
  const std::uint32_t bits = TakeNetwork(found->dot11Ssid, found->wlanSignalQuality);
  BssidOf(*found);
  return bits;
}

void Reader::BssidOf(const WLAN_AVAILABLE_NETWORK& network) {
  CLBWlanBuffer<WLAN_BSS_LIST> list;
  const DWORD result = WlanCode("WlanGetNetworkBssList", [&] {
    return Os().wlan.WlanGetNetworkBssList(wlan.Client(), &entry.wlanInterface, &network.dot11Ssid,
                                           network.dot11BssType, network.bSecurityEnabled, nullptr,
                                           list.Out());
  });
  if (result != ERROR_SUCCESS || !list || list->dwNumberOfItems == 0) return;
  const std::span entries(list->wlanBssEntries, list->dwNumberOfItems);
  const auto found = std::find_if(entries.begin(), entries.end(), [](const auto& one) {
    return std::any_of(std::begin(one.dot11Bssid), std::end(one.dot11Bssid),
                       [](BYTE byte) { return byte != 0; });
  });
  const WLAN_BSS_ENTRY& bss = found != entries.end() ? *found : entries.back();
  PutBytes(slot.wlan.bssid, bss.dot11Bssid, kBssidBytes);
  Put(slot.wlan.bssidLength, kBssidBytes);
  if (entry.kind.is11ad) Put(slot.wlan.linkKind, k11adLink);
}

// Quality and speeds of the connection. The speeds are held against those before the pass, since
// the platform's own figure stands in the slot meanwhile.
std::uint32_t Reader::Rates() {
  CLBWlanBuffer<void> data;
  const DWORD result =
      Query(wlan_intf_opcode_current_connection, sizeof(WLAN_CONNECTION_ATTRIBUTES), &data);
  if (result == ERROR_INVALID_STATE) return change::kDown;  // the usual answer without a connection
  if (result != ERROR_SUCCESS) return 0;
  const auto& attributes = *static_cast<const WLAN_CONNECTION_ATTRIBUTES*>(data.operator->());
  if (attributes.isState != wlan_interface_state_connected) return change::kDown;
  const WLAN_ASSOCIATION_ATTRIBUTES& link = attributes.wlanAssociationAttributes;
  const std::uint32_t receive = link.ulRxRate / kKbpsPerMbps;
  const std::uint32_t transmit = link.ulTxRate / kKbpsPerMbps;
  const bool changed = link.wlanSignalQuality != slot.wlan.quality ||
                       receive != entry.oldReceiveMbps || transmit != entry.oldTransmitMbps;
  Put(slot.wlan.quality, static_cast<std::uint16_t>(link.wlanSignalQuality));
  Put(slot.receiveMbps, receive);
  Put(slot.transmitMbps, transmit);
  if (!entry.kind.is11ad) Put(slot.wlan.linkKind, kUsualLink);
  Put(slot.wlan.operation, 0);
  Put(slot.wlan.unused2, 0);
  Put(slot.wlan.private1, 0);
  return changed ? change::kSpeed : 0;
}

std::uint32_t Reader::Private() {
  constexpr std::uint32_t kLinkQuery = 0xFF000013;
  constexpr std::uint32_t kPrivateLinkBit = 0x100;
  PrivateCall<8> query(kLinkQuery);
  if (query.Run(wlan.Client(), entry.wlanInterface)) {
    std::uint16_t words[2];
    std::uint32_t bits;
    std::memcpy(words, query.data, sizeof(words));
    std::memcpy(&bits, query.data + sizeof(words), sizeof(bits));
    Put(slot.wlan.private1, words[0]);
    Put(slot.wlan.private2, words[1]);
    Put(slot.wlan.linkKind, (bits & kPrivateLinkBit) != 0 ? kPrivateLink : kUsualLink);
  }
  return PrivateConnection();
}

std::uint32_t Reader::PrivateConnection() {
  CLBWlanBuffer<void> data;
  const DWORD result =
      Query(wlan_intf_opcode_current_connection, sizeof(WLAN_CONNECTION_ATTRIBUTES), &data);
  if (result == ERROR_INVALID_STATE) return change::kDown;
  if (result != ERROR_SUCCESS) return 0;
  const auto& attributes = *static_cast<const WLAN_CONNECTION_ATTRIBUTES*>(data.operator->());
  if (attributes.isState != wlan_interface_state_connected) return change::kDown;

  CLBWlanBuffer<void> mode;
  if (Query(wlan_intf_opcode_current_operation_mode, sizeof(ULONG), &mode) == ERROR_SUCCESS) {
    constexpr ULONG kStation = 4;
    const ULONG value = *static_cast<const ULONG*>(mode.operator->());
    const int word = value == kStation ? 1 : value == 0 ? 0 : 2;
    Put(slot.wlan.operation, static_cast<std::uint16_t>(word));
  }
  const WLAN_ASSOCIATION_ATTRIBUTES& link = attributes.wlanAssociationAttributes;
  std::uint32_t bits = link.dot11Ssid.uSSIDLength != 0
                           ? TakeNetwork(link.dot11Ssid, link.wlanSignalQuality)
                           : LoseNetwork();
  if (WasUp() && std::memcmp(slot.wlan.bssid, link.dot11Bssid, kBssidBytes) != 0) {
    bits |= change::kMoved;
  }
  PutBytes(slot.wlan.bssid, link.dot11Bssid, kBssidBytes);
  Put(slot.wlan.bssidLength, kBssidBytes);
  return bits;
}

// Finds the adapter's interface once in a pass.
DWORD KnowInterface(CLBWlanAccess& wlan, LBAdapterEntry* entry) {
  if (!wlan.Ensure()) return ERROR_INVALID_ENVIRONMENT;
  if (entry->interfaceKnown) return ERROR_SUCCESS;
  const DWORD result = wlan.FindInterface(entry->kind.name, &entry->wlanInterface);
  entry->interfaceKnown = result == ERROR_SUCCESS;
  return result;
}

}  // namespace

LBWlanReading LBReadWlanState(CLBWlanAccess& wlan, LBAdapterEntry* entry, LBAdapterSlot* slot) {
  if (entry->kind.mobile) {
    const bool up = (slot->state & slot_state::kUp) != 0;
    Put(slot->wlan.quality, up ? kFullQuality : std::uint16_t{0});
    return {};
  }
  if (const DWORD error = KnowInterface(wlan, entry); error != ERROR_SUCCESS) return {0, error};
  Reader reader{wlan, *entry, *slot};
  const bool generic = (entry->kind.classFlags & adapter_class::kNoPrivateQueries) != 0;
  return {generic ? reader.Generic() : reader.Private(), ERROR_SUCCESS};
}

void RunPrivateQueries(CLBWlanAccess& wlan, LBAdapterEntry* entry, LBAdapterSlot* slot) {
  if (!wlan.Ensure()) return;
  const GUID* adapter = wlan.DefaultInterface();
  if (KnowInterface(wlan, entry) == ERROR_SUCCESS) adapter = &entry->wlanInterface;
  if (!adapter) return;
  PrivateCall<32> first(0xFF00001D);
  if (!first.Run(wlan.Client(), *adapter)) return;
  PutBytes(slot->firstAnswer, first.data, sizeof(slot->firstAnswer));
  PrivateCall<34> second(0xFFF00016);
  if (!second.Run(wlan.Client(), *adapter)) return;
  PutBytes(slot->secondAnswer, second.data, sizeof(slot->secondAnswer));
}

void ClearWlanArea(LBAdapterSlot* slot) {
  PutZero(&slot->wlan, sizeof(slot->wlan));
  Put(slot->behindWlan, 0);
}

}  // namespace corvane
