// Bluetooth beside 2.4 GHz: what it costs the access points there, and radios that come and go.

#include "scenario/service_fixture.h"

namespace corvane::test {

class BluetoothScenario : public ServiceTest {
 protected:
  // On a good access point of 2.4 GHz; another one, of 5 GHz, is second.
  static WorldBuilder TwoBands() {
    WorldBuilder world;
    world.Adapter()
        .Ap(Beacon(u8"Office").Channel(6).Ht20(2).Rsn({AKM_PSK}), 1, -45.0)
        .Ap(OfficeBeacon(36), 2, -84.0)
        .Profile("Office")
        .Network("Office", 1)
        .Connected(1)
        .AutoSwitch();
    world->bluetooth.push_back({.name = u"Radio (R) 5", .on = true, .traffic = {}});
    // The settings are read at the start of a pass; a fresh home would get the defaults.
    for (const auto& [name, number] :
         {std::pair(u"BTPenaltyEnabled", 1u), std::pair(u"BTPenaltyValue", 60u),
          std::pair(u"FreshDone", 1u)}) {
      platform::sim::RegistryWrite write;
      write.key = platform::sim::kHomeKey;
      write.name = name;
      write.number = number;
      world->registry.push_back(write);
    }
    return world;
  }
  // The best candidate of the latest round.
  int Best() const {
    const std::string rows = WideToUtf8(Text(value::kCandidatesCSV));
    const std::size_t one = rows.find(ApText(1)), two = rows.find(ApText(2));
    if (one == rows.npos || two == rows.npos) return 0;
    return one < two ? 1 : 2;
  }
};

TEST_F(BluetoothScenario, TrafficPutsTheOtherBandFirstUntilThirtySecondsAfterIt) {
  Start(TwoBands().At(60'000, R"({"do": "bluetoothTraffic", "radio": "Radio (R) 5", "for": "15s",
                                  "link": "sco", "writtenKbps": 64})"));
  RunUntil(58'000);
  ASSERT_EQ(Best(), 1);
  ASSERT_TRUE(RunUntilTrue([&] { return Best() == 2; }, 15s))
      << WideToUtf8(Text(value::kCandidatesCSV));
  RunUntil(75'000 + 27'000);
  EXPECT_EQ(Best(), 2) << "the activity counts for 30 s after its end";
  // A poll every 2 s sees the last traffic at 77 s at the latest, a round every 10 s the end of it.
  RunUntil(77'000 + 30'000 + 14'000);
  EXPECT_EQ(Best(), 1);
}

TEST_F(BluetoothScenario, WithThePenaltyOffNothingIsTouched) {
  WorldBuilder world = TwoBands();
  world->registry[0].number = 0;
  Start(world.At(60'000, R"({"do": "bluetoothTraffic", "radio": "Radio (R) 5", "readKbps": 700})"));
  RunUntil(100'000);
  EXPECT_EQ(Best(), 1);
}

TEST_F(BluetoothScenario, ARadioThatGoesOrComesStartsTheAdaptersAnew) {
  Start(TwoBands()
            .At(60'000, R"({"do": "bluetooth", "radio": "Radio (R) 5", "on": false})")
            .At(120'000, R"({"do": "bluetooth", "radio": "Radio (R) 5", "on": true})"));
  constexpr char kRestart[] = "BT adapter count changed! restarting...";
  const auto restarts = [&] {
    const std::string text = Pc().ConsoleText();
    int found = 0;
    for (std::size_t at = 0; (at = text.find(kRestart, at)) != text.npos; at += sizeof kRestart)
      ++found;
    return found;
  };
  RunUntil(58'000);
  EXPECT_EQ(restarts(), 0);
  RunUntil(118'000);
  EXPECT_EQ(restarts(), 1) << "once for each change";
  EXPECT_TRUE(IsOn(1));
  RunUntil(180'000);
  EXPECT_EQ(restarts(), 2);
  EXPECT_GE(CountRounds(14s), 1);
  EXPECT_EQ(HomeNumber(u"BootCounter"), 1u);
}

}  // namespace corvane::test
