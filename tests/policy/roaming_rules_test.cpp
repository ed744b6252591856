#include "policy/roaming_rules.h"

#include "support/pc_fixture.h"

namespace corvane {
namespace {

constexpr MacAddress kA{1}, kB{2}, kC{3};

class Roaming : public test::KernelTest {};  // the rules write log lines

TEST_F(Roaming, GatewaysMatchByPosition) {
  struct Case {
    const char* what;
    GatewayMacs current, candidate;
    bool match;
  };
  const Case cases[] = {
      {"same", {{kA, kB}, {kC}}, {{kA, kB}, {kC}}, true},
      {"nothing known", {}, {}, true},
      {"another order", {{kA, kB}, {}}, {{kB, kA}, {}}, false},
      {"one IPv6 too many", {{kA}, {}}, {{kA}, {kC}}, false},
      {"one IPv4 too few", {{kA, kB}, {}}, {{kA}, {}}, false},
      {"other family", {{kA}, {}}, {{}, {kA}}, false},
      {"IPv6 differs", {{kA}, {kB}}, {{kA}, {kC}}, false},
  };
  for (const Case& one : cases) {
    EXPECT_EQ(CheckGatewaysMatchesForRoaming(0, one.current.ip4, one.current.ip6, one.candidate.ip4,
                                             one.candidate.ip6),
              one.match)
        << one.what;
  }
}

TEST_F(Roaming, OneInstallationShowsByNameGatewayOrMemory) {
  struct Case {
    const char* what;
    bool sameSsid, gatewayRoaming;
    GatewayMacs current;
    MacAddress bssid;
    GatewayMacs candidate, remembered;
    bool roam, asked;
  };
  const GatewayMacs none;
  const Case cases[] = {
      {"same name", true, false, none, kA, none, none, true, false},
      {"switched off", false, false, {{kA}, {}}, kA, {{kA}, {}}, none, false, false},
      {"target is the IPv4 gateway",
       false,
       true,
       {{kB, kA}, {}},
       kA,
       {{kC}, {}},
       none,
       true,
       false},
      {"target is the IPv6 gateway", false, true, {{kB}, {kA}}, kA, none, none, true, false},
      {"own gateways match", false, true, {{kA}, {}}, kC, {{kA}, {}}, {{kB}, {}}, true, false},
      {"own gateways differ, memory not asked",
       false,
       true,
       {{kA}, {}},
       kC,
       {{kB}, {}},
       {{kA}, {}},
       false,
       false},
      {"memory matches", false, true, {{kA}, {}}, kC, none, {{kA}, {}}, true, true},
      {"memory differs", false, true, {{kA}, {}}, kC, none, {{kB}, {}}, false, true},
      {"nothing known on either side", false, true, none, kC, none, none, false, true},
  };
  for (const Case& one : cases) {
    bool asked = false;
    const RoamFacts facts{0,           one.sameSsid, one.gatewayRoaming,
                          one.current, one.bssid,    one.candidate};
    const auto remembered = [&] {
      asked = true;
      return one.remembered;
    };
    EXPECT_EQ(IsRoam(facts, remembered), one.roam) << one.what;
    EXPECT_EQ(asked, one.asked) << one.what;
  }
}

}  // namespace
}  // namespace corvane
