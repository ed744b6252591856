#pragma once
#include <cstring>
#include <string>
#include <vector>

#include "platform/sim/devices/pc_observer.h"
#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/world/beacon_builder.h"
#include "platform/sim/world/element_facts.h"
#include "platform/sim/world/world.h"
#include "platform/sim/world/world_profile.h"
#include "support/pc_fixture.h"

namespace corvane::test {

using namespace platform;
using namespace platform::sim;

inline constexpr char kApOne[] = "02-00-00-00-01-01";
inline constexpr char kApTwo[] = "02-00-00-00-01-02";
inline constexpr char kApHidden[] = "02-00-00-00-02-01";

// One adapter; "Office" on two access points, the second weaker; "Attic", hidden, next door.
inline World TwoNetworks() {
  const auto accessPoint = [](Mac bssid, const char* ssid, int channel, double dbm) {
    const Beacon beacon = Beacon(std::string_view(ssid)).Channel(channel).Vht80(2).Rsn({AKM_PSK});
    AccessPoint ap;
    ap.bssid = bssid;
    ap.ssid = ssid;
    ap.frequencyMhz = beacon.FrequencyMhz();
    ap.elements = beacon.Bytes();
    ap.phy = PhyOf(ap.elements, ap.frequencyMhz);
    ap.security = {DOT11_AUTH_ALGO_RSNA_PSK, DOT11_CIPHER_ALGO_CCMP, u"right key"};
    ap.track = {{0, dbm}};
    return ap;
  };
  World world;
  Adapter adapter;
  adapter.guid = {0xA1, 0, 0, {1, 2, 3, 4, 5, 6, 7, 8}};
  adapter.description = u"Simulated Wireless (2) #3";
  adapter.connectionName = u"Wi-Fi";
  adapter.mac = {2, 0, 0, 0, 0, 1};
  adapter.phys = {dot11_phy_type_ofdm, dot11_phy_type_ht, dot11_phy_type_vht};
  adapter.autoConnect = false;
  world.adapters = {adapter};
  world.accessPoints = {accessPoint({2, 0, 0, 0, 1, 1}, "Office", 36, -50),
                        accessPoint({2, 0, 0, 0, 1, 2}, "Office", 44, -70),
                        accessPoint({2, 0, 0, 0, 2, 1}, "Attic", 52, -60)};
  world.accessPoints[2].hidden = true;
  Profile profile;
  profile.name = u"Office";
  profile.ssid = "Office";
  profile.security = world.accessPoints[0].security;
  profile.xml = ProfileXml(profile);
  world.profiles = {profile};
  return world;
}

// What the observer is told, as lines.
class Story final : public IPcObserver {
 public:
  std::vector<std::string> lines;

  void OnScanStarted(int adapter, Cause cause, const std::string& ssid) override {
    Add(adapter, cause, "scan " + ssid);
  }
  void OnScanEnded(int adapter, Cause cause, bool good) override {
    Add(adapter, cause, good ? "scanned" : "scan failed");
  }
  void OnConnectStarted(int adapter, Cause cause, const std::string& ssid) override {
    Add(adapter, cause, "connect " + ssid);
  }
  void OnConnectEnded(int adapter, Cause cause, const std::string& ssid, const std::string& bssid,
                      DWORD reason) override {
    Add(adapter, cause, "connected " + ssid + " " + bssid + " " + std::to_string(reason));
  }
  void OnDisconnected(int adapter, Cause cause, const std::string& ssid) override {
    Add(adapter, cause, "disconnected " + ssid);
  }
  void OnRoamed(int adapter, Cause cause, const std::string& ssid,
                const std::string& bssid) override {
    Add(adapter, cause, "roamed " + ssid + " " + bssid);
  }
  void OnTimeline(const std::string& text) override { lines.push_back("timeline " + text); }
  void OnClientMessage(const std::string& client, const std::string& text) override {
    clientLines.push_back(client + ": " + text);
  }
  std::vector<std::string> clientLines;  // what clients of the world have read

 private:
  void Add(int adapter, Cause cause, const std::string& text) {
    const char* who = cause == Cause::kProgram   ? "program"
                      : cause == Cause::kOutside ? "outside"
                                                 : "driver";
    lines.push_back(std::to_string(adapter) + " " + who + ": " + text);
  }
};

// A client of the WLAN service as the program is one.
class WlanListener {
 public:
  struct Told {
    std::uint64_t ms;
    DWORD source;
    DWORD code;
    std::vector<BYTE> data;
    template <class Data>
    Data As() const {
      Data value;
      EXPECT_EQ(data.size(), sizeof value);
      if (data.size() == sizeof value)
        std::memcpy(static_cast<void*>(&value), data.data(), sizeof value);
      return value;
    }
  };

  explicit WlanListener(SimulatedPc& pc) : m_Pc(pc) {
    DWORD negotiated = 0;
    EXPECT_EQ(Os().wlan.WlanOpenHandle(2, nullptr, &negotiated, &client), ERROR_SUCCESS);
    DWORD previous = 0;
    EXPECT_EQ(
        Os().wlan.WlanRegisterNotification(client, WLAN_NOTIFICATION_SOURCE_ALL, FALSE,
                                           &WlanListener::OnNotification, this, nullptr, &previous),
        ERROR_SUCCESS);
  }
  ~WlanListener() {
    if (client) Close();
  }
  void Close() {
    Os().wlan.WlanCloseHandle(client, nullptr);
    client = nullptr;
  }

  HANDLE client = nullptr;
  std::vector<Told> told;

  // The codes told of a source, in order, as "9 10".
  std::string Codes(DWORD source) const {
    std::string codes;
    for (const Told& one : told) {
      if (one.source == source) codes += (codes.empty() ? "" : " ") + std::to_string(one.code);
    }
    return codes;
  }
  const Told* Last(DWORD source, DWORD code) const {
    const Told* last = nullptr;
    for (const Told& one : told) {
      if (one.source == source && one.code == code) last = &one;
    }
    return last;
  }

 private:
  static void OnNotification(WLAN_NOTIFICATION_DATA* data, void* self) {
    auto& listener = *static_cast<WlanListener*>(self);
    const auto* bytes = static_cast<const BYTE*>(data->pData);
    listener.told.push_back({static_cast<std::uint64_t>(listener.m_Pc.Now().count()),
                             data->NotificationSource, data->NotificationCode,
                             std::vector<BYTE>(bytes, bytes + (bytes ? data->dwDataSize : 0))});
  }

  SimulatedPc& m_Pc;
};

// Tests that call the simulated devices as the program does.
class DeviceTest : public PcTest {
 protected:
  // With the WLAN client of the test.
  void Start(const World& world, std::uint64_t seed = 1) {
    PcOptions options;
    options.seed = seed;
    options.observer = &story;
    guid = world.adapters[0].guid;
    Boot(world, options);
    listener = std::make_unique<WlanListener>(Pc());
  }
  void TearDown() override {
    listener.reset();
    if (m_bStarted()) {
      EXPECT_EQ(Pc().Devices().CountOutstanding(), SimDevices::Outstanding{});
    }
    PcTest::TearDown();
  }

  DWORD Scan(const char* ssid = nullptr) {
    DOT11_SSID name;
    if (ssid) {
      name.uSSIDLength = static_cast<ULONG>(std::strlen(ssid));
      std::memcpy(name.ucSSID, ssid, name.uSSIDLength);
    }
    return Os().wlan.WlanScan(listener->client, &guid, ssid ? &name : nullptr, nullptr, nullptr);
  }

  DWORD Connect(const char16_t* profile, const Mac* bssid = nullptr,
                LONG mode = wlan_connection_mode_profile) {
    DOT11_BSSID_LIST list;
    list.Header = {0x80, 1, sizeof(DOT11_BSSID_LIST)};
    list.uNumOfEntries = list.uTotalNumOfEntries = 1;
    if (bssid) std::copy(bssid->begin(), bssid->end(), list.BSSIDs[0]);
    WLAN_CONNECTION_PARAMETERS parameters;
    parameters.wlanConnectionMode = mode;
    parameters.strProfile = profile;
    parameters.pDesiredBssidList = bssid ? &list : nullptr;
    parameters.dot11BssType = dot11_BSS_type_infrastructure;
    return Os().wlan.WlanConnect(listener->client, &guid, &parameters, nullptr);
  }

  // Names of the BSS list with their BSSIDs' last two bytes: "Office 1:1, Office 1:2".
  std::string BssNames() {
    WLAN_BSS_LIST* list = nullptr;
    const DWORD code = Os().wlan.WlanGetNetworkBssList(listener->client, &guid, nullptr,
                                                       dot11_BSS_type_any, 1, nullptr, &list);
    if (code != ERROR_SUCCESS) return "error " + std::to_string(code);
    std::string names;
    for (DWORD i = 0; i < list->dwNumberOfItems; ++i) {
      const WLAN_BSS_ENTRY& entry = list->wlanBssEntries[i];
      const auto* ssid = reinterpret_cast<const char*>(entry.dot11Ssid.ucSSID);
      names += (i ? ", " : "") + std::string(ssid, entry.dot11Ssid.uSSIDLength) + " " +
               std::to_string(entry.dot11Bssid[4]) + ":" + std::to_string(entry.dot11Bssid[5]);
    }
    Os().wlan.WlanFreeMemory(list);
    return names;
  }

  std::vector<WLAN_AVAILABLE_NETWORK> Available() {
    WLAN_AVAILABLE_NETWORK_LIST* list = nullptr;
    EXPECT_EQ(Os().wlan.WlanGetAvailableNetworkList(listener->client, &guid, 0, nullptr, &list),
              ERROR_SUCCESS);
    if (!list) return {};
    std::vector<WLAN_AVAILABLE_NETWORK> items(list->Network, list->Network + list->dwNumberOfItems);
    Os().wlan.WlanFreeMemory(list);
    return items;
  }

  template <class Value>
  DWORD Query(LONG opcode, Value* value) {
    void* data = nullptr;
    DWORD size = 0;
    const DWORD code = Os().wlan.WlanQueryInterface(listener->client, &guid, opcode, nullptr, &size,
                                                    &data, nullptr);
    if (code != ERROR_SUCCESS) return code;
    EXPECT_EQ(size, sizeof(Value));
    std::memcpy(static_cast<void*>(value), data, sizeof(Value));
    Os().wlan.WlanFreeMemory(data);
    return code;
  }

  std::string ConnectedBssid() {
    WLAN_CONNECTION_ATTRIBUTES attributes;
    const DWORD code = Query(wlan_intf_opcode_current_connection, &attributes);
    if (code != ERROR_SUCCESS) return "error " + std::to_string(code);
    const BYTE* mac = attributes.wlanAssociationAttributes.dot11Bssid;
    char text[18];
    std::snprintf(text, sizeof text, "%02x-%02x-%02x-%02x-%02x-%02x", mac[0], mac[1], mac[2],
                  mac[3], mac[4], mac[5]);
    return text;
  }

  Story story;
  GUID guid;
  std::unique_ptr<WlanListener> listener;

 private:
  bool m_bStarted() const { return guid != GUID{}; }
};

}  // namespace corvane::test
