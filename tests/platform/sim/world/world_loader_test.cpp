#include "platform/sim/world/world_loader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "platform/sim/world/radio_model.h"
#include "platform/sim/world/world_profile.h"
#include "platform/sim/world/world_text.h"
#include "platform/text_file.h"
#include "support/beacon.h"
#include "support/source_dir.h"

namespace corvane::platform::sim {
namespace {

using test::Beacon;

World Shipped(const std::string& name) {
  const std::string path = test::SourceDir() + "/worlds/" + name + ".json";
  return ParseWorld(ReadTextFile(path), name);
}

TEST(ShippedWorlds, LoadAndTellAStoryThatIsTheirs) {
  for (const char* name : {"home", "office-walk", "two-adapters", "two-hours", "ten-minutes",
                           "eight-hours", "office-day"}) {
    const World world = Shipped(name);
    EXPECT_EQ(world.name, name);
    EXPECT_FALSE(world.adapters.empty()) << name;
    EXPECT_GT(world.durationMs, 0u) << name;
    // What happens after the end would never be seen.
    for (const Action& action : world.timeline)
      EXPECT_LT(action.atMs, world.durationMs) << action.line;
    // Each profile that connects by itself fits some access point.
    for (const Profile& profile : world.profiles) {
      if (!profile.autoConnect) continue;
      EXPECT_TRUE(std::any_of(world.accessPoints.begin(), world.accessPoints.end(),
                              [&](const AccessPoint& ap) { return Admits(ap, profile); }))
          << name << ": " << profile.ssid;
    }
  }
}

TEST(ShippedWorlds, TheBuiltInOneIsHome) {
  const World world = BuiltInWorld();
  EXPECT_EQ(world.name, "home");
  EXPECT_EQ(world.accessPoints.size(), Shipped("home").accessPoints.size());
}

// The walk must lead from access point to access point by more than chance.
TEST(ShippedWorlds, OnTheOfficeWalkEachStopHasItsAccessPoint) {
  const World world = Shipped("office-walk");
  constexpr std::uint64_t kStops[] = {60'000, 8 * 60'000, 19 * 60'000};
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    for (std::size_t stop = 0; stop < 3; ++stop) {
      const std::uint64_t ms = kStops[stop];
      const Point machine = PositionAt(world.path, ms);
      for (std::size_t ap = 0; ap < 3; ++ap) {
        const double dbm = SignalDbm(world, world.accessPoints[ap], machine, ms, seed);
        if (ap == stop) {
          EXPECT_GT(dbm, -56.0) << "stop " << stop;
        } else {
          EXPECT_LT(dbm, -62.0) << "stop " << stop << ", access point " << ap;
        }
      }
    }
  }
}

TEST(WorldLoader, FieldsOfAnAccessPointBecomeItsElements) {
  const World world = ParseWorld(R"({
    "networks": [{"name": "Office 2", "ssid": "Office", "category": "domain", "internet": false}],
    "accessPoints": [
      {"ssid": "Office", "bssid": "02-50-00-00-00-01", "channel": 36, "phy": "vht", "widthMHz": 80,
       "security": "wpa2", "key": "k", "load": {"stations": 3, "utilisation": 40},
       "network": "Office 2", "alive": [["1m", "2m"], ["3m"]]},
      {"bssid": "02-50-00-00-00-02", "frequencyMHz": 2412, "elementsHex": "0003414243010182",
       "signal": -61, "adHoc": true}
    ]})",
                                 "w");
  const AccessPoint& built = world.accessPoints[0];
  EXPECT_EQ(built.elements,
            Beacon("Office").Channel(36).Vht80(2).Rsn({test::AKM_PSK}).QbssLoad(3, 40).Bytes());
  EXPECT_EQ(built.frequencyMhz, 5180u);
  EXPECT_EQ(built.phy, dot11_phy_type_vht);
  EXPECT_EQ(built.security.auth, DOT11_AUTH_ALGO_RSNA_PSK);
  EXPECT_EQ(built.capability, 0x0011);
  EXPECT_EQ(built.network, 0);
  EXPECT_FALSE(IsAlive(built, 59'999));
  EXPECT_TRUE(IsAlive(built, 60'000));
  EXPECT_FALSE(IsAlive(built, 120'000));
  EXPECT_TRUE(IsAlive(built, 1'000'000));

  const AccessPoint& bytes = world.accessPoints[1];
  EXPECT_EQ(bytes.ssid, "ABC");
  EXPECT_EQ(bytes.phy, dot11_phy_type_hrdsss);
  EXPECT_EQ(bytes.capability, 0x0002);
  EXPECT_EQ(bytes.bssType, dot11_BSS_type_independent);
  EXPECT_EQ(TrackSignalAt(bytes.track, 5'000), -61.0);

  EXPECT_EQ(world.networks[0].category, 2);
  EXPECT_EQ(world.networks[0].connectivity, 0x20u);
}

TEST(WorldLoader, TimelineIsOrderedByTimeAndKeepsTheFilesOrderWithinIt) {
  const World world = ParseWorld(R"({
    "adapters": [{"description": "A", "connectionName": "B",
                  "guid": "{11111111-2222-3333-4444-555555555555}"}],
    "timeline": [
      {"at": "2s", "do": "suspend"},
      {"at": "1s", "do": "registry", "adapter": 0, "name": "ScanInterval", "dword": 20},
      {"at": 2000, "do": "resume"},
      {"at": "3s", "do": "registry", "name": "DCInfo", "text": "x"},
      {"at": "4s", "do": "traffic", "for": "10s", "inMbps": 2},
      {"at": "5s", "do": "profile", "add": {"ssid": "New", "nonBroadcast": true}}
    ]})",
                                 "w");
  ASSERT_EQ(world.timeline.size(), 6u);
  const Action& write = world.timeline[0];
  EXPECT_EQ(write.registry.key,
            u"SOFTWARE\\OstrelNetworks\\Corvane\\{11111111-2222-3333-4444-555555555555}");
  EXPECT_EQ(write.registry.type, REG_DWORD);
  EXPECT_EQ(write.registry.number, 20u);
  EXPECT_EQ(write.line, "registry adapter 0 name ScanInterval dword 20");
  EXPECT_EQ(world.timeline[1].kind, ActionKind::kSuspend);
  EXPECT_EQ(world.timeline[2].kind, ActionKind::kResume);
  EXPECT_EQ(world.timeline[3].registry.key, kHomeKey);
  EXPECT_EQ(world.timeline[4].traffic.span.toMs, 10'000u);
  EXPECT_TRUE(world.timeline[5].profile.nonBroadcast);
}

TEST(WorldLoader, LeavesAsItWasWhatAnActionDoesNotName) {
  const World world = ParseWorld(R"({"networks": [{"name": "N"}]})", "w");
  const Action action =
      ParseAction(R"({"do": "network", "network": "N", "internet": false})", world);
  EXPECT_EQ(action.internet, 0);
  EXPECT_EQ(action.category, -1);
  EXPECT_EQ(action.connected, -1);
  EXPECT_EQ(action.connectivity, -1);
}

TEST(WorldProfile, XmlReadsBackWhateverItsTextsHold) {
  Profile profile;
  profile.name = u"A & B <\"guest's\">";
  profile.ssid = "caf\xC3\xA9";
  profile.autoConnect = false;
  profile.nonBroadcast = true;
  profile.security = {DOT11_AUTH_ALGO_WPA3_SAE, DOT11_CIPHER_ALGO_CCMP, u"<&amp;>"};
  Profile read;
  ASSERT_TRUE(ReadProfileXml(ProfileXml(profile), &read));
  EXPECT_EQ(read.name, profile.name);
  EXPECT_EQ(read.ssid, profile.ssid);
  EXPECT_FALSE(read.autoConnect);
  EXPECT_TRUE(read.nonBroadcast);
  EXPECT_EQ(read.security.auth, profile.security.auth);
  EXPECT_EQ(read.security.cipher, profile.security.cipher);
  EXPECT_EQ(read.security.key, profile.security.key);
}

TEST(WorldProfile, AdmitsTheRightKeyOnly) {
  AccessPoint ap;
  ap.ssid = "Office";
  ap.security = {DOT11_AUTH_ALGO_RSNA_PSK, DOT11_CIPHER_ALGO_CCMP, u"right"};
  Profile profile;
  profile.ssid = "Office";
  EXPECT_FALSE(Admits(ap, profile));  // an open profile
  profile.security = ap.security;
  EXPECT_TRUE(Admits(ap, profile));
  profile.security.key = u"wrong";
  EXPECT_FALSE(Admits(ap, profile));
}

TEST(WorldFromAir, KeepsTheLastLineOfABssid) {
  const World world = WorldFromAir(
      "{\"bssid\":\"02-00-00-00-00-01\",\"freq_mhz\":2412,\"rssi_dbm\":-40,\"ie_hex\":\"00026162\"}"
      "\n"
      "\n"
      "{\"bssid\":\"02-00-00-00-00-02\",\"freq_mhz\":5180,\"rssi_dbm\":null,\"ie_hex\":\"0000\"}"
      "\r\n"
      "{\"bssid\":\"02-00-00-00-00-03\",\"freq_mhz\":null,\"rssi_dbm\":-50,\"ie_hex\":\"\"}\n"
      "{\"bssid\":\"02-00-00-00-00-01\",\"freq_mhz\":2437,\"ie_hex\":\"00026364\",\"id\":\"x\"}",
      "air.jsonl");
  ASSERT_EQ(world.accessPoints.size(), 2u);
  EXPECT_EQ(world.accessPoints[0].ssid, "cd");
  EXPECT_EQ(world.accessPoints[0].frequencyMhz, 2437u);
  EXPECT_EQ(TrackSignalAt(world.accessPoints[0].track, 0), -60.0);
  EXPECT_EQ(world.accessPoints[1].ssid, "");
  ASSERT_EQ(world.adapters.size(), 1u);
  EXPECT_EQ(world.adapters[0].connectedTo, Mac{});
  EXPECT_TRUE(world.networks.empty());
  EXPECT_TRUE(world.profiles.empty());
}

// Captures are wild: what no receiver can have read is passed over and counted.
TEST(WorldFromAir, PassesOverWildReadings) {
  AirCount count;
  const World world =
      WorldFromAir(R"({"bssid":"02-00-00-00-00-01","freq_mhz":2412,"rssi_dbm":20,"ie_hex":""})"
                   "\n"
                   R"({"bssid":"02-00-00-00-00-02","freq_mhz":99,"rssi_dbm":-50,"ie_hex":""})"
                   "\n"
                   R"({"bssid":"00-00-00-00-00-00","freq_mhz":5180,"rssi_dbm":-40,"ie_hex":""})"
                   "\n"
                   R"({"bssid":"02-00-00-00-00-03","freq_mhz":5180,"rssi_dbm":-1e300,"ie_hex":""})",
                   "air.jsonl", &count);
  ASSERT_EQ(world.accessPoints.size(), 2u)
      << "a BSSID of zeros is where an adapter is not connected";
  EXPECT_EQ(world.accessPoints[0].track[0].dbm, -60.0);
  EXPECT_EQ(count.lines, 4u);
  EXPECT_EQ(count.wild, 3u);
  EXPECT_EQ(count.noFrequency, 1u);
  EXPECT_EQ(count.noBssid, 1u);
}

TEST(WorldFromAir, NamesTheBadLine) {
  struct Case {
    const char* line;
    const char* error;
  };
  const Case kCases[] = {
      {"{", "a: line 2: line 1, column 2: Missing a name for object member."},
      {"[]", "a: line 2: /: wants an object"},
      {"{\"bssid\":\"02-00-00-00-00-01\",\"freq_mhz\":2412}",
       "a: line 2: /: \"ie_hex\" is missing"},
      {"{\"bssid\":\"02-00-00-00-00-01\",\"freq_mhz\":2412,\"ie_hex\":\"0\"}",
       "a: line 2: /ie_hex: wants pairs of hexadecimal digits"},
      {"{\"bssid\":\"02-00-00-00-00-01\",\"freq_mhz\":\"99\",\"ie_hex\":\"\"}",
       "a: line 2: /freq_mhz: wants a number or null"},
  };
  for (const Case& each : kCases) {
    try {
      WorldFromAir(std::string("\n") + each.line, "a");
      ADD_FAILURE() << "accepted: " << each.line;
    } catch (const WorldError& error) {
      EXPECT_STREQ(error.what(), each.error);
    }
  }
}

}  // namespace
}  // namespace corvane::platform::sim
