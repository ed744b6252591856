// Merges of the platform's lists: what of long ones counts, and when one is passed over.

#include "model/global_wireless_maps.h"
#include "store/process_flags.h"
#include "support/beacon.h"
#include "wlan/adapter_fixture.h"
#include "wlan/strongest.h"
#include "wlan/wlan_limits.h"

namespace corvane::test {
namespace {

using namespace platform;

TEST(Strongest, KeepsTheHighestInTheirOrder) {
  const std::vector<int> ranks = {5, 9, 1, 9, 5, 7};
  const auto kept = [&](std::uint32_t limit) {
    return StrongestOf(static_cast<std::uint32_t>(ranks.size()), limit,
                       [&](std::uint32_t place) { return ranks[place]; });
  };
  using Places = std::vector<std::uint32_t>;
  EXPECT_EQ(kept(3), (Places{1, 3, 5}));
  EXPECT_EQ(kept(4), (Places{0, 1, 3, 5})) << "of equal ones the earlier";
  EXPECT_EQ(kept(0), Places{});
  EXPECT_EQ(kept(6), (Places{0, 1, 2, 3, 4, 5}));
}

class CountingSink : public ILogSink {
 public:
  CountingSink() { SetLogSink(this); }
  ~CountingSink() { SetLogSink(nullptr); }
  void Write(std::uint32_t, const char*, WStringView text) override {
    if (text.find(u"strongest") != WStringView::npos) ++cuts;
  }
  void Write(std::uint32_t, const char*, std::string_view) override {}
  std::string GetMemoryLog() override { return {}; }
  int cuts = 0;
};

class NetworkListsTest : public AdapterTest {
 protected:
  static constexpr std::uint32_t kMarked = 199;  // a channel that no list tells of

  NetworkListsTest() {
    CountElements();
    wlan.networks = {"Office", "Cafe"};
    wlan.profiles[u"Office"] = u"<xml/>";
  }
  ~NetworkListsTest() override { g_bVPNFound = false; }

  void CountElements() {
    const auto elements = Beacon(u8"Office").Channel(36).Bytes();
    wlan.entries = {{"Office", Bssid(1), 60, 5180000, elements},
                    {"Office", Bssid(2), 40, 5180000, elements},
                    {"Cafe", Bssid(3), 30, 2437000, elements}};
  }
  // A merge writes the channel anew.
  bool Merges(bool scan = false) {
    const auto entry = Entry(u"Office", 1);
    if (entry) entry->m_Channel = kMarked;
    Discover(scan);
    const auto after = Entry(u"Office", 1);
    return after && after->m_Channel != kMarked;
  }
};

TEST_F(NetworkListsTest, OneThatWouldChangeNothingIsPassedOver) {
  StartConnected("Office", Bssid(1));
  CGlobalConfigContainer::GetInstance().m_bULScan = false;
  EXPECT_TRUE(Merges(true));
  const auto& config = *adapter->Config();
  const auto score = [&] {
    return Entry(u"Office", 1)->GetScore(false, adapter->GetScoreContext());
  };
  const std::int32_t before = score();
  EXPECT_FALSE(Merges()) << "nothing has changed";
  EXPECT_FALSE(Merges());
  EXPECT_EQ(score(), before);

  const std::pair<const char*, std::function<void()>> changes[] = {
      {"a quality", [&] { wlan.entries[1].quality = 41; }},
      {"elements", [&] { wlan.entries[2].elements.back() ^= 1; }},
      {"an access point",
       [&] {
         wlan.entries.push_back({"Cafe", Bssid(4), 20, 2437000, {0, 0}});
       }},
      {"a network", [&] { wlan.networks.push_back("Lab"); }},
      {"a profile", [&] { wlan.profiles[u"Cafe"] = u"<xml/>"; }},
      {"what a profile allows", [&] { wlan.grantedAccess = WLAN_EXECUTE_ACCESS; }},
      {"the connection's quality",
       [&] {
         WLAN_CONNECTION_ATTRIBUTES attributes;
         wlan.Connect("Office", Bssid(1), 75);
         adapter->QueryCurrentConnection(&attributes, true);
       }},
      {"its access point", [&] { adapter->SetConnectedBssid(Bssid(2)); }},
      {"a VPN", [&] { g_bVPNFound = true; }},
      {"the adapter's standard", [&] { adapter->Config()->m_bHECapable = !config.m_bHECapable; }},
      {"a filter",
       [&] {
         wlan.filters[wlan_filter_list_type_user_deny] = {"Cafe"};
         adapter->RefreshNetworkAllowDenyFilters();
       }},
      {"a penalty", [&] { adapter->SetBTPenalty(3); }},
      {"a row of the deny list",
       [&] {
         adapter->ApplyDenyRows({{u"Cafe", "any", kAnyMac}});
       }},
      {"scores by somebody else", [&] { adapter->UpdateAllScores(); }},
  };
  for (const auto& [what, change] : changes) {
    change();
    EXPECT_TRUE(Merges()) << what;
    EXPECT_FALSE(Merges()) << "after " << what;
  }
  EXPECT_TRUE(Merges(true)) << "a scan counts what is missing";
  adapter->ClearNetworks();
  Discover(false);
  EXPECT_EQ(adapter->SnapshotEntries().size(), 4u) << "a tree that was dropped grows anew";
}

// Lists that a round has made hold while the stamp is the same.
TEST_F(NetworkListsTest, AChangeIsSeenThroughMergesThatFoundNothing) {
  StartConnected("Office", Bssid(1));
  CGlobalConfigContainer::GetInstance().m_bULScan = false;
  Merges(true);
  std::uint64_t stamp = adapter->TakeAirStamp();
  const auto isSame = [&] {
    EXPECT_FALSE(Merges());
    return std::exchange(stamp, adapter->TakeAirStamp()) == stamp;
  };
  EXPECT_TRUE(isSame());
  EXPECT_NE(adapter->TakeAirStamp(), stamp) << "without a merge nobody knows";
  EXPECT_FALSE(isSame());
  EXPECT_TRUE(isSame());

  wlan.entries[1].quality = 41;
  EXPECT_TRUE(Merges());
  EXPECT_FALSE(isSame()) << "the merge that changed it was not asked about";
  adapter->SetBTPenalty(3);
  EXPECT_TRUE(Merges());
  EXPECT_FALSE(isSame());
  EXPECT_TRUE(isSame());
}

TEST_F(NetworkListsTest, ElementsAreAsOldAsTheLastListThatHadThem) {
  StartConnected("Office", Bssid(1));
  CGlobalConfigContainer::GetInstance().m_bULScan = false;
  Discover();
  for (int i = 0; i < 10; ++i) {
    RunFor(10s);
    EXPECT_FALSE(Merges());
  }
  for (FakeBss& bss : wlan.entries) bss.elements.clear();
  RunFor(30s);
  Discover(false);
  EXPECT_FALSE(Entry(u"Office", 2)->m_IEBlob->m_RawIEs == nullptr) << "30 s old";
  RunFor(31s);
  EXPECT_TRUE(Merges()) << "a list without elements is never passed over: they grow old";
  EXPECT_TRUE(Entry(u"Office", 2)->m_IEBlob->m_RawIEs == nullptr) << "61 s old";
}

TEST_F(NetworkListsTest, OfTooManyNetworksTheConnectionAndTheStrongestCount) {
  for (std::uint32_t i = 0; i < kMaxNetworksTaken; ++i)
    wlan.networks.push_back("Weak " + std::to_string(i));
  std::swap(wlan.networks.front(), wlan.networks.back());  // Office is the last one
  wlan.networkQualities = {{"Office", 60}, {"Cafe", 30}};
  Start();
  CountingSink sink;
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(Discover(), 1);
    EXPECT_EQ(adapter->Networks().size(), kMaxNetworksTaken);
    EXPECT_TRUE(Entry(u"Office", 1));
    EXPECT_TRUE(Entry(u"Cafe", 3));
    EXPECT_EQ(sink.cuts, 1) << "told once";
  }
  wlan.networks.resize(100);
  Discover();
  wlan.networks.resize(kMaxNetworksTaken + 1, "More");
  Discover();
  EXPECT_EQ(sink.cuts, 2) << "and anew after a list that fitted";
}

}  // namespace
}  // namespace corvane::test
