#include "model/ap_list_marks.h"

#include "support/pc_fixture.h"

namespace corvane {
namespace {

MacAddress Mac(std::uint8_t last) { return {0x00, 0x11, 0x22, 0x33, 0x44, last}; }

class ApListMarks : public test::KernelTest {
 protected:
  void SetUp() override {
    Add(u"Lab", 1);
    Add(u"Lab", 2);
    Add(u"LAB", 3);
    Add(u"Office", 4);
  }
  void TearDown() override {
    networks.clear();
    KernelTest::TearDown();
  }
  void Add(const WString& ssid, std::uint8_t last) {
    auto& network = networks[ssid];
    if (!network) network = CWlanNetwork::CreateObject();
    auto entry = CWlanBssEntry::CreateObject();
    entry->m_bss_scanned = true;
    network->m_BssMap[Mac(last)] = entry;
  }
  CWlanBssEntry& Entry(std::uint8_t last) {
    for (auto& [ssid, network] : networks) {
      const auto at = network->m_BssMap.find(Mac(last));
      if (at != network->m_BssMap.end()) return *at->second;
    }
    throw std::out_of_range("no such entry");
  }
  std::string Denied() {
    std::string denied;
    for (std::uint8_t last = 1; last <= 4; ++last) denied += Entry(last).m_bDenied ? '1' : '0';
    return denied;
  }

  NetworkMap networks;
};

TEST_F(ApListMarks, DenyTheExactNetworkOrElseTheFirstOfThatName) {
  const struct {
    ApListRow row;
    const char* denied;
  } cases[] = {
      {{u"Lab", "any", kAnyMac}, "1100"},
      {{u"Lab", "", Mac(2)}, "0100"},
      {{u"Lab", "", Mac(3)}, "0000"},
      {{u"lab", "any", kAnyMac}, "0010"},  // "LAB" sorts first
      {{u"OFFICE", "", Mac(4)}, "0001"},
      {{u"Office", "?", {}}, "0000"},
      {{u"Offic", "any", kAnyMac}, "0000"},
      {{u"", "any", kAnyMac}, "0000"},
  };
  for (const auto& one : cases) {
    for (std::uint8_t last = 1; last <= 4; ++last) Entry(last).m_bDenied = false;
    MarkDenied({one.row}, &networks);
    EXPECT_EQ(Denied(), one.denied) << Narrow(one.row.ssid) << one.row.bssid;
  }
  MarkDenied({{u"Lab", "any", kAnyMac}}, &networks);
  MarkDenied({}, &networks);
  EXPECT_EQ(Denied(), "1100");  // a row taken off goes on acting
}

PreferredApRow Preferred(WStringView ssid, const MacAddress& mac, std::uint32_t min_lq) {
  PreferredApRow row;
  row.ssid = ssid;
  row.mac = mac;
  row.min_lq = min_lq;
  return row;
}

TEST_F(ApListMarks, PreferInTheOrderOfTheRows) {
  MarkPreferred({Preferred(u"Lab", Mac(2), 60), Preferred(u"Away", kAnyMac, 0),
                 Preferred(u"Office", kAnyMac, 30)},
                &networks);
  EXPECT_EQ(Entry(1).m_arbitrary_priority, 0);
  EXPECT_EQ(Entry(1).m_arbitrary_min_lq, 101u);
  EXPECT_EQ(Entry(2).m_arbitrary_priority, 100);
  EXPECT_EQ(Entry(2).m_arbitrary_min_lq, 60u);
  EXPECT_EQ(Entry(4).m_arbitrary_priority, 98);
  MarkPreferred({Preferred(u"office", kAnyMac, 1)}, &networks);  // exact names only
  EXPECT_EQ(Entry(4).m_arbitrary_priority, 98);
}

TEST_F(ApListMarks, PreferenceStartsAboveTheNumberOfRows) {
  for (const auto& [rows, first] : {std::pair{99, 100}, {100, 200}, {199, 200}, {200, 300}}) {
    PreferredApRows list{Preferred(u"Office", kAnyMac, 0)};
    list.resize(static_cast<std::size_t>(rows), Preferred(u"Away", kAnyMac, 0));
    MarkPreferred(list, &networks);
    EXPECT_EQ(Entry(4).m_arbitrary_priority, first) << rows;
  }
}

TEST_F(ApListMarks, PreferenceLeavesEntriesAloneThatAreLongUnseen) {
  const struct {
    bool scanned;
    std::uint32_t unscanned;
    bool marked;
  } cases[] = {{true, 3, true}, {false, 2, true}, {false, 3, false}};
  for (const auto& one : cases) {
    Entry(4).m_arbitrary_priority = 0;
    Entry(4).m_bss_scanned = one.scanned;
    Entry(4).m_unscanned_count = one.unscanned;
    MarkPreferred({Preferred(u"Office", kAnyMac, 0)}, &networks);
    EXPECT_EQ(Entry(4).m_arbitrary_priority != 0, one.marked) << one.unscanned;
  }
}

}  // namespace
}  // namespace corvane
