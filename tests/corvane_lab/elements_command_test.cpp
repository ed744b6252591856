// The captured beacons of tests/data, decoded, against what an independent dissector reads in them.

#include <rapidjson/document.h>

#include <algorithm>
#include <string_view>

#include "corvane_lab/commands.h"
#include "platform/sim/world/captured_beacons.h"
#include "platform/text_file.h"
#include "support/pc_fixture.h"
#include "support/source_dir.h"

namespace corvane::lab {
namespace {

using platform::sim::CapturedBeacon;
using rapidjson::Value;

// Bytes of a text of hexadecimal digits; none where the dissector read nothing.
std::vector<unsigned> Bytes(const Value& hex) {
  std::vector<unsigned> bytes;
  if (!hex.IsString()) return bytes;
  const std::string_view text = hex.GetString();
  for (std::size_t i = 0; i + 2 <= text.size(); i += 2) {
    bytes.push_back(static_cast<unsigned>(std::stoul(std::string(text.substr(i, 2)), nullptr, 16)));
  }
  return bytes;
}

// Types of the suites of one maker, "000fac:4" by "000fac".
std::vector<unsigned> Types(const Value& suites, std::string_view oui) {
  std::vector<unsigned> types;
  const auto add = [&](const Value& suite) {
    const std::string_view text = suite.GetString();
    if (text.substr(0, text.find(':')) != oui) return;
    types.push_back(
        static_cast<unsigned>(std::stoul(std::string(text.substr(text.find(':') + 1)))));
  };
  if (suites.IsString()) add(suites);
  if (suites.IsArray()) std::for_each(suites.Begin(), suites.End(), add);
  return types;
}

bool Any(const std::vector<unsigned>& of, std::initializer_list<unsigned> wanted) {
  return std::find_first_of(of.begin(), of.end(), wanted.begin(), wanted.end()) != of.end();
}

// Strength classes that the suites stand for: four bits of personal networks, and the same four of
// enterprise ones above.
unsigned SecurityOf(const Value& oracle) {
  constexpr char kRsn[] = "000fac", kWpa[] = "0050f2";
  unsigned mask = 0;
  const auto add = [&mask](const std::vector<unsigned>& suites, unsigned ccmp, bool enterprise) {
    for (const unsigned suite : suites) {
      const unsigned bits = suite == 1 || suite == 5 ? 1 : suite == 2 ? 2 : suite == 4 ? ccmp : 0;
      mask |= enterprise ? bits << 4 : bits;
    }
  };
  if (oracle["rsn"].IsObject() && oracle["rsn"]["akm"].IsArray()) {
    const Value& rsn = oracle["rsn"];
    const auto akms = Types(rsn["akm"], kRsn);
    const bool sae = Any(akms, {8, 9}), sha256 = Any(akms, {4, 6});
    const bool required = rsn["mfpr"].IsBool() && rsn["mfpr"].GetBool();
    const unsigned ccmp = sae || (required && !sha256) ? 8 : 4;
    const bool enterprise = !Any(akms, {2, 4, 6, 8, 9});
    add(Types(rsn["group"], kRsn), ccmp, enterprise);
    add(Types(rsn["pairwise"], kRsn), ccmp, enterprise);
  }
  if (oracle["wpa"].IsObject() && oracle["wpa"]["akm"].IsArray()) {
    const Value& wpa = oracle["wpa"];
    constexpr unsigned kNone = 0;  // CCMP in the older element counts for nothing
    const bool enterprise = Any(Types(wpa["akm"], kWpa), {1});
    add(Types(wpa["group"], kWpa), kNone, enterprise);
    add(Types(wpa["pairwise"], kWpa), kNone, enterprise);
  }
  return mask;
}

int MaxLegacyKbps(const Value& oracle) {
  // Of 802.11, a, b and g and the optional ones; what a bit error makes of a rate is none.
  constexpr unsigned kRates[] = {2, 4, 11, 12, 18, 22, 24, 36, 44, 48, 66, 72, 96, 108};
  unsigned units = 0;
  for (const char* name : {"supported_rates_hex", "extended_rates_hex"}) {
    for (const unsigned rate : Bytes(oracle[name])) {
      if (std::ranges::count(kRates, rate & 0x7F)) units = std::max(units, rate & 0x7F);
    }
  }
  return static_cast<int>(units) * 500;
}

void CheckHt(const Value& got, const Value& oracle) {
  const auto capabilities = Bytes(oracle["ht_cap"]);
  EXPECT_EQ(got["HTPresent"].GetInt(), capabilities.size() == 26);
  if (capabilities.size() != 26) return;
  EXPECT_EQ(got["HT40Capable"].GetUint(), capabilities[0] >> 1 & 1);
  EXPECT_EQ(got["HTShortGI20"].GetUint(), capabilities[0] >> 5 & 1);
  EXPECT_EQ(got["HTShortGI40"].GetUint(), capabilities[0] >> 6 & 1);
  const std::string bitmap = got["HTMcsBitmap"].GetString();
  EXPECT_EQ(std::stoul(bitmap.substr(0, 2), nullptr, 16), capabilities[3]);
  if (!oracle["ht_op"].IsObject()) return;
  EXPECT_EQ(got["HTPrimaryChannel"].GetUint(), oracle["ht_op"]["primary_channel"].GetUint());
  EXPECT_EQ(got["HTOpInfo1"].GetUint() & 3, oracle["ht_op"]["secondary_offset"].GetUint());
}

void CheckVhtAndHe(const Value& got, const Value& oracle) {
  const auto bytes = Bytes(oracle["vht_cap_hex"]);
  EXPECT_EQ(got["VHTPresent"].GetInt(), bytes.size() == 12);
  if (bytes.size() == 12) {
    const unsigned capabilities = bytes[0] | bytes[1] << 8 | bytes[2] << 16 | bytes[3] << 24;
    EXPECT_EQ(got["VHTSupportedWidthSet"].GetUint(), capabilities >> 2 & 3);
    EXPECT_EQ(got["VHTShortGI80"].GetUint(), capabilities >> 5 & 1);
    EXPECT_EQ(got["VHTShortGI160"].GetUint(), capabilities >> 6 & 1);
    EXPECT_EQ(got["VHTSUBeamformer"].GetUint(), capabilities >> 11 & 1);
    EXPECT_EQ(got["VHTMUBeamformer"].GetUint(), capabilities >> 19 & 1);
  }
  if (const Value& vht = oracle["vht_op"]; vht.IsObject()) {
    EXPECT_EQ(got["VHTChannelWidth"].GetUint(), vht["width"].GetUint() == 0 ? 20u : 80u);
    EXPECT_EQ(got["VHTSeg0Channel"].GetUint(), vht["seg0"].GetUint());
    EXPECT_EQ(got["VHTSeg1Channel"].GetUint(), vht["seg1"].GetUint());
  }
  // Capabilities whose length is not that of one, two or three maps are passed over.
  const std::size_t he = oracle["he_cap"].GetBool() ? Bytes(oracle["he_cap_hex"]).size() : 0;
  EXPECT_EQ(got["HECapsSeen"].GetInt(), oracle["he_cap"].GetBool());
  EXPECT_EQ(got["HECapsGood"].GetInt(), he == 22 || he == 26 || he >= 29);
  EXPECT_EQ(got["HEOperGood"].GetInt(), oracle["he_op"].GetBool());
}

void CheckTheRest(const Value& got, const Value& oracle) {
  EXPECT_EQ(got["MaxLegacyRateKbps"].GetInt(), MaxLegacyKbps(oracle));
  if (oracle["ds_channel"].IsUint()) {
    EXPECT_EQ(got["DSChannel"].GetUint(), oracle["ds_channel"].GetUint());
  }
  // The dissector reports the first of two security elements.
  if (!oracle.HasMember("rsn_more")) {
    EXPECT_EQ(got["SecurityMask"].GetUint(), SecurityOf(oracle));
  }
  if (const Value& load = oracle["qbss"]; load.IsObject()) {
    EXPECT_DOUBLE_EQ(got["QBSSLoadPct"].GetDouble(),
                     load["channel_utilisation"].GetUint() / 255.0 * 100.0);
    EXPECT_EQ(got["StationCount"].GetUint(), load["station_count"].GetUint());
  } else {
    EXPECT_EQ(got["QBSSLoadPct"].GetDouble(), -1.0);
    EXPECT_EQ(got["StationCount"].GetUint(), 65535u);
  }
}

void CheckSsid(const Value& got, const Value& oracle) {
  const auto names = std::count_if(oracle["elements"].Begin(), oracle["elements"].End(),
                                   [](const Value& element) { return element[0].GetUint() == 0; });
  if (names != 1) return;  // the dissector reports the first, the decoder keeps the last
  const std::string hex = oracle["ssid_hex"].GetString();
  if (hex.size() > 64) return;  // longer than a name can be
  EXPECT_EQ(got["SSID"].GetString(), hex);
}

class CapturedBeacons : public test::KernelTest {};

TEST_F(CapturedBeacons, AreReadAsAnIndependentDissectorReadsThem) {
  const std::string path = test::SourceDir() + "/tests/data/beacons.jsonl";
  int compared = 0;
  platform::sim::ForEachCapturedLine(
      platform::ReadTextFile(path), path, [&](const std::string& line, const std::string& place) {
        const CapturedBeacon beacon = platform::sim::ReadCapturedBeacon(line, place);
        SCOPED_TRACE(beacon.id);
        if (!beacon.freqMhz) return;
        rapidjson::Document whole, got;
        whole.Parse(line.c_str());
        got.Parse(ElementsLine(beacon).c_str());
        ASSERT_FALSE(got.HasParseError());
        EXPECT_EQ(got["id"].GetString(), beacon.id);
        const Value& oracle = whole["oracle"];
        // Where the dissector gave up, or the bytes end in the middle, its silence says nothing.
        if (!oracle["complete"].GetBool() || !whole["tlv_clean"].GetBool()) return;
        CheckSsid(got, oracle);
        CheckTheRest(got, oracle);
        CheckHt(got, oracle);
        CheckVhtAndHe(got, oracle);
        ++compared;
      });
  EXPECT_GT(compared, 80);
}

}  // namespace
}  // namespace corvane::lab
