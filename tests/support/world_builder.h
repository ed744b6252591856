#pragma once
#include <string>
#include <utility>

#include "platform/sim/world/world.h"
#include "support/beacon.h"

namespace corvane::test {

// A world for a test, piece by piece:
//   WorldBuilder().Adapter().Ap(Beacon(u8"Office").Channel(36).Vht80(2).Rsn({AKM_PSK}), 1, -50)
//       .Profile("Office").Connected(1).At(60'000, R"({"do": "scan"})").Build()
// The access point of number n has the BSSID 02-50-00-00-00-n. There is no shadowing.
class WorldBuilder {
 public:
  WorldBuilder();

  WorldBuilder& Adapter(std::u16string description = u"Vantor Wi-Fi 6 AX200");
  // Heard at `dbm` for all time. Its key, where it is secured, is "secret" as in Profile.
  WorldBuilder& Ap(const Beacon& beacon, int number, double dbm);
  // The last access point follows these signals instead: pairs of time in ms and dBm.
  WorldBuilder& Signal(std::vector<platform::sim::SignalPoint> track);
  WorldBuilder& Hidden();  // the last access point hides its SSID
  // A profile that fits the access points of this SSID that are there.
  WorldBuilder& Profile(const std::string& ssid, bool autoConnect = true,
                        bool nonBroadcast = false);
  WorldBuilder& Network(const std::string& ssid, platform::LONG category, bool internet = true);
  WorldBuilder& Connected(int number);  // the last adapter is on this access point at the start
  WorldBuilder& Traffic(std::uint64_t fromMs, std::uint64_t toMs, double inMbps, int adapter = 0);
  // An entry of the timeline as its JSON object, which names only what is there already.
  WorldBuilder& At(std::uint64_t ms, const std::string& action);
  // The adapter acts by itself: PassiveSuggestMode 0 and this ScanInterval, some seconds after
  // start.
  WorldBuilder& AutoSwitch(int scanIntervalSecs = 10, int adapter = 0);

  platform::sim::World Build() const { return m_World; }
  platform::sim::World* operator->() { return &m_World; }  // for what has no word of its own

 private:
  platform::sim::World m_World;
};

platform::sim::Mac ApBssid(int number);

}  // namespace corvane::test
