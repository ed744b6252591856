// What is refused in a world's JSON, and with which words.

#include <gtest/gtest.h>

#include <string>

#include "platform/sim/world/world_loader.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {
namespace {

std::string ErrorOf(const std::string& text) {
  try {
    ParseWorld(text, "w.json");
  } catch (const WorldError& error) {
    return error.what();
  }
  return "accepted";
}

struct BadWorld {
  const char* text;
  const char* error;
};

TEST(WorldJson, RefusesWithFilePathAndReason) {
  const BadWorld kCases[] = {
      {"", "w.json: line 1, column 1: The document is empty."},
      {"{\n  \"name\": }", "w.json: line 2, column 11: Invalid value."},
      {"{} {}",
       "w.json: line 1, column 4: The document root must not be followed by other values."},
      {"{\"name\": \"\xFF\"}", "w.json: line 1, column 11: Invalid encoding in string."},
      {"[]", "w.json: /: wants an object"},
      {R"({"nmae": "x"})", "w.json: /nmae: is not a member that belongs here"},
      {R"({"a/b~": 1})", "w.json: /a~1b~0: is not a member that belongs here"},
      {R"({"name": "x", "name": "y"})", "w.json: /name: is given twice"},
      {R"({"name": 7})", "w.json: /name: wants a text"},
      {R"({"name": "a\u0000b"})", "w.json: /name: wants a text without NUL"},
      {R"({"duration": "10"})",
       "w.json: /duration: wants a time such as \"90s\", \"1m30s\" or a number of milliseconds"},
      {R"({"duration": -1})",
       "w.json: /duration: wants a time such as \"90s\", \"1m30s\" or a number of milliseconds"},
      {R"({"adapters": {}})", "w.json: /adapters: wants a list"},
      {R"({"adapters": [{"connectionName": "Wi-Fi"}]})",
       "w.json: /adapters/0: \"description\" is missing"},
      {R"({"adapters": [{"description": "A", "connectionName": "B", "phys": ["n"]}]})",
       "w.json: /adapters/0/phys/0: \"n\" is not one of b, a, g, ht, vht, he"},
      {R"({"adapters": [{"description": "A", "connectionName": "B", "bands": [3]}]})",
       "w.json: /adapters/0/bands/0: is none of the bands 2, 5 and 6"},
      {R"({"adapters": [{"description": "A", "connectionName": "B",
                         "connectedTo": "02-00-00-00-00-01"}]})",
       "w.json: /adapters/0/connectedTo: no access point has this BSSID"},
      {R"({"adapters": [{"description": "A", "connectionName": "B", "ifIndex": 5},
                        {"description": "C", "connectionName": "D", "ifIndex": 5}]})",
       "w.json: /adapters/1: another adapter has its ifIndex"},
      {R"({"accessPoints": [{"ssid": "S", "channel": 1, "bssid": "02-00-00-00-01"}]})",
       "w.json: /accessPoints/0/bssid: wants six pairs of hexadecimal digits such as "
       "\"02-00-00-00-00-01\""},
      {R"({"accessPoints": [{"ssid": "S", "channel": 1, "bssid": "02-00-00-00-00-01"},
                            {"ssid": "T", "channel": 6, "bssid": "02:00:00:00:00:01"}]})",
       "w.json: /accessPoints/1/bssid: another access point has it"},
      {R"({"accessPoints": [{"ssid": "", "channel": 1, "bssid": "02-00-00-00-00-01"}]})",
       "w.json: /accessPoints/0/ssid: wants an SSID of 1 to 32 bytes"},
      {R"({"accessPoints": [{"ssid": "S", "channel": 0, "bssid": "02-00-00-00-00-01"}]})",
       "w.json: /accessPoints/0/channel: wants a whole number from 1 to 177"},
      {R"({"accessPoints": [{"ssid": "S", "channel": 6, "phy": "ht", "widthMHz": 80,
                             "bssid": "02-00-00-00-00-01"}]})",
       "w.json: /accessPoints/0/widthMHz: is no width of \"ht\""},
      {R"({"accessPoints": [{"ssid": "S", "channel": 6, "phy": "vht", "widthMHz": 80,
                             "bssid": "02-00-00-00-00-01"}]})",
       "w.json: /accessPoints/0: 2.4 GHz has no channel above 40 MHz"},
      {R"({"accessPoints": [{"ssid": "S", "channel": 144, "phy": "vht", "widthMHz": 160,
                             "bssid": "02-00-00-00-00-01"}]})",
       "w.json: /accessPoints/0: channel 144 is not part of one of 160 MHz"},
      {R"({"accessPoints": [{"elementsHex": "000", "frequencyMHz": 2412,
                             "bssid": "02-00-00-00-00-01"}]})",
       "w.json: /accessPoints/0/elementsHex: wants pairs of hexadecimal digits"},
      {R"({"accessPoints": [{"ssid": "S", "channel": 1, "bssid": "02-00-00-00-00-01",
                             "signal": [["10s", -50], ["10s", -60]]}]})",
       "w.json: /accessPoints/0/signal/1: is not later than the one before it"},
      {R"({"accessPoints": [{"ssid": "S", "channel": 1, "bssid": "02-00-00-00-00-01",
                             "alive": [["2m", "1m"]]}]})",
       "w.json: /accessPoints/0/alive/0: ends before it begins"},
      {R"({"accessPoints": [{"ssid": "S", "channel": 1, "bssid": "02-00-00-00-00-01",
                             "network": "none"}]})",
       "w.json: /accessPoints/0/network: no network has this name"},
      {R"({"profiles": [{"xml": "<WLANProfile><name>x</name></WLANProfile>"}]})",
       "w.json: /profiles/0/xml: is not a WLAN profile with a name and an SSID"},
      {R"({"networks": [{"name": "N", "ip": {"gateways": ["10.0.0.256"]}}]})",
       "w.json: /networks/0/ip/gateways/0: wants an address such as \"192.168.1.2/24\" or "
       "\"fe80::1/64\""},
      {R"({"machine": {"at": [1]}})", "w.json: /machine/at: wants a place, [x, y] in metres"},
      {R"({"machine": {"at": [0, 0], "walk": [{"from": "0s", "to": [10, 0], "speed": 1},
                                              {"from": "9s", "to": [0, 0]}]}})",
       "w.json: /machine/walk/1: starts before the machine has reached the place before it"},
      {R"({"air": {"shadowingDb": 21}})", "w.json: /air/shadowingDb: wants a number from 0 to 20"},
      {R"({"traffic": [{"inMbps": 1}]})", "w.json: /traffic/0: the world has no adapter"},
      {R"({"registry": [{"name": "X"}]})",
       "w.json: /registry/0: wants one of \"dword\", \"qword\", \"text\" and \"remove\""},
      {R"({"registry": [{"name": "X", "dword": 4294967296}]})",
       "w.json: /registry/0/dword: wants a whole number from 0 to 4294967295"},
      {R"({"timeline": [{"do": "suspend"}]})", "w.json: /timeline/0: \"at\" is missing"},
      {R"({"timeline": [{"at": "1s", "do": "suspend", "on": true}]})",
       "w.json: /timeline/0/on: is not a member that belongs here"},
      {R"({"timeline": [{"at": "1s", "do": "radio", "adapter": 0, "on": false}]})",
       "w.json: /timeline/0/adapter: the world has no adapter 0"},
      {R"({"timeline": [{"at": "1s", "do": "interface", "interface": "LAN", "on": true}]})",
       "w.json: /timeline/0/interface: no other adapter has this name"},
  };
  for (const BadWorld& bad : kCases) EXPECT_EQ(ErrorOf(bad.text), bad.error) << bad.text;
}

TEST(WorldJson, RefusesRadiosOfBluetoothThatAreNone) {
  const BadWorld kCases[] = {
      {R"({"bluetooth": [{"name": "R"}],
           "timeline": [{"at": "1s", "do": "bluetooth", "radio": "r", "on": true}]})",
       "w.json: /timeline/0/radio: no Bluetooth radio has this name"},
      {R"({"bluetooth": [{"name": ""}]})", "w.json: /bluetooth/0/name: is empty"},
      {R"({"bluetooth": [{"name": "R", "traffic": [{"from": "2s", "to": "2s"}]}]})",
       "w.json: /bluetooth/0/traffic/0: ends before it begins"},
  };
  for (const BadWorld& bad : kCases) EXPECT_EQ(ErrorOf(bad.text), bad.error) << bad.text;
}

TEST(WorldJson, ABssidOfZerosIsThatOfNoAccessPoint) {
  EXPECT_EQ(
      ErrorOf(R"({"accessPoints": [{"ssid": "S", "channel": 1, "bssid": "00-00-00-00-00-00"}]})"),
      "w.json: /accessPoints/0/bssid: is no address of an access point");
}

TEST(WorldJson, DepthOfBracketsDoesNotUseUpTheStack) {
  const std::string deep =
      R"({"name": )" + std::string(100'000, '[') + std::string(100'000, ']') + "}";
  EXPECT_EQ(ErrorOf(deep), "w.json: /name: wants a text");
}

TEST(WorldJson, TellsAnUnknownActionByItsName) {
  try {
    ParseAction(R"({"do": "dance"})", World());
    FAIL() << "accepted";
  } catch (const WorldError& error) {
    EXPECT_EQ(std::string(error.what()).substr(0, 46),
              "action: /do: \"dance\" is not one of move, scan,");
  }
}

TEST(WorldText, Durations) {
  struct Case {
    const char* text;
    std::int64_t ms;  // -1: refused
  };
  const Case kCases[] = {{"250ms", 250},  {"90s", 90'000},   {"1m30s", 90'000},
                         {"1.5s", 1'500}, {"2h", 7'200'000}, {"1h1m1s1ms", 3'661'001},
                         {"0s", 0},       {"", -1},          {"s", -1},
                         {"10", -1},      {"-1s", -1},       {"1 s", -1},
                         {"infs", -1},    {"1d", -1},        {"1e3s", -1}};
  for (const Case& each : kCases) {
    std::uint64_t ms = 0;
    const bool read = ReadDuration(each.text, &ms);
    EXPECT_EQ(read ? static_cast<std::int64_t>(ms) : -1, each.ms) << each.text;
  }
}

TEST(WorldText, AddressesOfBothFamilies) {
  IpAddress address;
  ASSERT_TRUE(ReadIpAddress("10.1.2.3/8", &address));
  EXPECT_EQ(address.family, IpAddress::kV4);
  EXPECT_EQ(address.prefix, 8);
  EXPECT_EQ(address.bytes[3], 3);
  ASSERT_TRUE(ReadIpAddress("fe80::ad:1", &address));
  EXPECT_EQ(address.family, IpAddress::kV6);
  EXPECT_EQ(address.prefix, 128);
  EXPECT_EQ(address.bytes[0], 0xFE);
  EXPECT_EQ(address.bytes[13], 0xAD);
  EXPECT_EQ(address.bytes[15], 1);
  ASSERT_TRUE(ReadIpAddress("1:2:3:4:5:6:7:8", &address));
  EXPECT_EQ(address.bytes[14], 0);
  EXPECT_EQ(address.bytes[15], 8);
  ASSERT_TRUE(ReadIpAddress("::", &address));
  EXPECT_EQ(address.bytes[15], 0);
  for (const char* bad : {"", "10.1.2", "10.1.2.3.4", "10.1.2.3/33", "1:2:3", "1:2:3:4:5:6:7:8:9",
                          "::1::2", "fe80::1/129", "1:2:3:4:5:6:7:", "12345::"}) {
    EXPECT_FALSE(ReadIpAddress(bad, &address)) << bad;
  }
}

TEST(WorldText, GuidTextReadsBack) {
  GUID guid;
  ASSERT_TRUE(ReadGuid("{0123abcd-4567-89AB-CDEF-0123456789ab}", &guid));
  EXPECT_EQ(GuidText(guid), u"{0123ABCD-4567-89AB-CDEF-0123456789AB}");
  EXPECT_FALSE(ReadGuid("0123abcd-4567-89AB-CDEF-0123456789ab", &guid));
}

TEST(WorldText, BadUtf8BecomesTheReplacementCharacter) {
  EXPECT_EQ(FromUtf8("caf\xC3\xA9 \xF0\x9F\x93\xB6"), u"caf\u00E9 \xD83D\xDCF6");
  EXPECT_EQ(FromUtf8("a\xC3"), u"a\uFFFD");
  EXPECT_EQ(FromUtf8("\xC0\x80x"), u"\uFFFDx");    // overlong
  EXPECT_EQ(FromUtf8("\xED\xA0\x80"), u"\uFFFD");  // half of a surrogate pair
}

}  // namespace
}  // namespace corvane::platform::sim
