// The captured beacons, decoded, against what an independent dissector reads in them.

#include <rapidjson/document.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "corvane_lab/commands.h"
#include "platform/sim/world/captured_beacons.h"
#include "support/pc_fixture.h"
#include "support/source_dir.h"

namespace corvane::lab {
namespace {

using platform::sim::CapturedBeacon;
using platform::sim::ReadCapturedBeacon;

// What the dissector says of one frame: texts by field name, several occurrences joined by commas.
class Oracle {
 public:
  explicit Oracle(const rapidjson::Value& fields) : m_Fields(fields) {}

  bool Has(const char* name) const { return m_Fields.HasMember(name); }
  std::string Text(const char* name) const { return Has(name) ? m_Fields[name].GetString() : ""; }
  std::vector<unsigned> Numbers(const char* name) const {
    std::vector<unsigned> numbers;
    std::istringstream parts(Text(name));
    for (std::string part; std::getline(parts, part, ',');) {
      numbers.push_back(static_cast<unsigned>(std::stoul(part, nullptr, 0)));
    }
    return numbers;
  }
  unsigned First(const char* name) const { return Numbers(name).at(0); }
  bool Lists(const char* name, std::initializer_list<unsigned> wanted) const {
    const auto numbers = Numbers(name);
    return std::find_first_of(numbers.begin(), numbers.end(), wanted.begin(), wanted.end()) !=
           numbers.end();
  }

 private:
  const rapidjson::Value& m_Fields;
};

// Strength classes of a personal network that the suites named by the dissector stand for. The
// captures hold no enterprise network.
unsigned PersonalSecurity(const Oracle& oracle) {
  unsigned mask = 0;
  const auto add = [&mask](const std::vector<unsigned>& suites, unsigned ccmp) {
    for (const unsigned suite : suites) {
      if (suite == 1 || suite == 5) mask |= 0x01;
      if (suite == 2) mask |= 0x02;
      if (suite == 4) mask |= ccmp;
    }
  };
  if (oracle.Has("wlan.rsn.akms.type")) {
    const bool sae = oracle.Lists("wlan.rsn.akms.type", {8, 9});
    const bool sha256 = oracle.Lists("wlan.rsn.akms.type", {4, 6});
    const bool protectedManagement = oracle.First("wlan.rsn.capabilities.mfpr") == 1;
    const unsigned ccmp = sae || (protectedManagement && !sha256) ? 0x08 : 0x04;
    add(oracle.Numbers("wlan.rsn.gcs.type"), ccmp);
    add(oracle.Numbers("wlan.rsn.pcs.type"), ccmp);
  }
  constexpr unsigned kNone = 0;  // CCMP in the older element counts for nothing
  add(oracle.Numbers("wlan.wfa.ie.wpa.mcs.type"), kNone);
  add(oracle.Numbers("wlan.wfa.ie.wpa.ucs.type"), kNone);
  return mask;
}

int MaxLegacyKbps(const Oracle& oracle) {
  unsigned units = 0;
  for (const char* name : {"wlan.supported_rates", "wlan.extended_supported_rates"}) {
    for (const unsigned rate : oracle.Numbers(name)) units = std::max(units, rate & 0x7F);
  }
  return static_cast<int>(units) * 500;
}

void CheckHt(const rapidjson::Value& got, const Oracle& oracle) {
  EXPECT_EQ(got["HTPresent"].GetInt(), oracle.Has("wlan.ht.capabilities"));
  if (!oracle.Has("wlan.ht.capabilities")) return;
  const unsigned capabilities = oracle.First("wlan.ht.capabilities");
  EXPECT_EQ(got["HT40Capable"].GetUint(), capabilities >> 1 & 1);
  EXPECT_EQ(got["HTShortGI20"].GetUint(), capabilities >> 5 & 1);
  EXPECT_EQ(got["HTShortGI40"].GetUint(), capabilities >> 6 & 1);
  const std::string bitmap = got["HTMcsBitmap"].GetString();
  EXPECT_EQ(std::stoul(bitmap.substr(0, 2), nullptr, 16),
            oracle.First("wlan.ht.mcsset.rxbitmask.0to7"));
  EXPECT_EQ(got["HTPrimaryChannel"].GetUint(), oracle.First("wlan.ht.info.primarychannel"));
  EXPECT_EQ(got["HTOpInfo1"].GetUint() & 3, oracle.First("wlan.ht.info.secchanoffset"));
}

void CheckVhtAndHe(const rapidjson::Value& got, const Oracle& oracle) {
  EXPECT_EQ(got["VHTPresent"].GetInt(), oracle.Has("wlan.vht.capabilities"));
  if (oracle.Has("wlan.vht.capabilities")) {
    const unsigned capabilities = oracle.First("wlan.vht.capabilities");
    EXPECT_EQ(got["VHTSupportedWidthSet"].GetUint(), capabilities >> 2 & 3);
    EXPECT_EQ(got["VHTShortGI80"].GetUint(), capabilities >> 5 & 1);
    EXPECT_EQ(got["VHTShortGI160"].GetUint(), capabilities >> 6 & 1);
    EXPECT_EQ(got["VHTSUBeamformer"].GetUint(), capabilities >> 11 & 1);
    EXPECT_EQ(got["VHTMUBeamformer"].GetUint(), capabilities >> 19 & 1);
    EXPECT_EQ(got["VHTChannelWidth"].GetUint(),
              oracle.First("wlan.vht.op.channelwidth") == 0 ? 20u : 80u);
    EXPECT_EQ(got["VHTSeg0Channel"].GetUint(), oracle.First("wlan.vht.op.channelcenter0"));
    EXPECT_EQ(got["VHTSeg1Channel"].GetUint(), oracle.First("wlan.vht.op.channelcenter1"));
  }
  EXPECT_EQ(got["HECapsGood"].GetInt(), oracle.Lists("wlan.ext_tag.number", {35}));
  EXPECT_EQ(got["HEOperGood"].GetInt(), oracle.Lists("wlan.ext_tag.number", {36}));
  EXPECT_EQ(got["HEEdcaGood"].GetInt(), oracle.Lists("wlan.ext_tag.number", {38}));
}

void CheckTheRest(const rapidjson::Value& got, const Oracle& oracle) {
  EXPECT_EQ(got["SSID"].GetString(), oracle.Text("wlan.ssid"));
  EXPECT_EQ(got["MaxLegacyRateKbps"].GetInt(), MaxLegacyKbps(oracle));
  EXPECT_EQ(got["DSChannel"].GetUint(), oracle.First("wlan.ds.current_channel"));
  EXPECT_EQ(got["SecurityMask"].GetUint(), PersonalSecurity(oracle));
  if (oracle.Has("wlan.qbss.cu")) {
    EXPECT_DOUBLE_EQ(got["QBSSLoadPct"].GetDouble(), oracle.First("wlan.qbss.cu") / 255.0 * 100.0);
    EXPECT_EQ(got["StationCount"].GetUint(), oracle.First("wlan.qbss.scount"));
  } else {
    EXPECT_EQ(got["QBSSLoadPct"].GetDouble(), -1.0);
    EXPECT_EQ(got["StationCount"].GetUint(), 65535u);
  }
}

class CapturedBeacons : public test::KernelTest {};

TEST_F(CapturedBeacons, AreReadAsAnIndependentDissectorReadsThem) {
  std::ifstream file(test::SourceDir() + "/../shared/captures/beacons.jsonl");
  if (!file) GTEST_SKIP() << "there are no captured beacons beside this tree";
  int decoded = 0;
  for (std::string line; std::getline(file, line);) {
    const CapturedBeacon beacon = ReadCapturedBeacon(line, "beacons");
    SCOPED_TRACE(beacon.id);
    if (!beacon.freqMhz) continue;
    rapidjson::Document whole, got;
    whole.Parse(line.c_str());
    got.Parse(ElementsLine(beacon).c_str());
    ASSERT_FALSE(got.HasParseError());
    const Oracle oracle(whole["oracle"]);
    EXPECT_EQ(got["id"].GetString(), beacon.id);
    CheckTheRest(got, oracle);
    CheckHt(got, oracle);
    CheckVhtAndHe(got, oracle);
    ++decoded;
  }
  EXPECT_GT(decoded, 50);
}

}  // namespace
}  // namespace corvane::lab
