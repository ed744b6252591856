#include "model/global_wireless_maps.h"
#include "store/value_names.h"
#include "wlan/adapter_fixture.h"

namespace corvane::test {
namespace {

using namespace platform;

class ProfilesTest : public AdapterTest {
 protected:
  WString Json() { return Value(value::kProfiledNetworksJson); }
  std::size_t Reads() {
    return static_cast<std::size_t>(
        std::count(wlan.calls.begin(), wlan.calls.end(), "WlanGetProfile"));
  }
};

TEST_F(ProfilesTest, JsonFollowsTheStoredProfiles) {
  Start();
  EXPECT_EQ(Json(), u"[]");
  wlan.profiles[u"Office"] = u"<xml/>";
  wlan.profiles[u"Cafe"] = u"<xml/>";
  adapter->RefreshProfiledAPList();
  EXPECT_EQ(Json(), u"[\"Cafe\",\"Office\"]");

  const std::size_t reads = Reads();
  adapter->RefreshProfiledAPList();
  EXPECT_EQ(Reads(), reads) << "nothing changed, nothing is read";
  wlan.profiles.erase(u"Cafe");
  wlan.profiles[u"Bar"] = u"<xml/>";
  adapter->RefreshProfiledAPList();
  EXPECT_EQ(Json(), u"[\"Bar\",\"Office\"]") << "the names count, not their number";
}

TEST_F(ProfilesTest, FailuresKeepWhatIsKnown) {
  wlan.profiles[u"Office"] = u"<xml/>";
  Start();
  for (const DWORD code : {ERROR_GEN_FAILURE, FakeWlan::kFault}) {
    wlan.codes["WlanGetProfileList"] = code;
    adapter->RefreshProfiledAPList();
    adapter->EnumerateALLAPProfiles();
    EXPECT_EQ(Json(), u"[\"Office\"]");
  }
  wlan.codes.clear();
  wlan.claims["WlanGetProfileList"] = 0x00800000;
  adapter->EnumerateALLAPProfiles();
  EXPECT_EQ(Json(), u"[\"Office\"]") << "an impossible count";
  wlan.claims.clear();
  wlan.codes["WlanGetProfile"] = ERROR_GEN_FAILURE;
  adapter->EnumerateALLAPProfiles();
  EXPECT_EQ(Json(), u"[]") << "a profile that can't be read is left out";
  wlan.codes.clear();
  adapter->RefreshProfiledAPList();
  EXPECT_EQ(Json(), u"[\"Office\"]") << "and comes back at the next check";
}

TEST_F(ProfilesTest, PropertiesComeFromTheMapTheNetworkOrThePlatform) {
  constexpr char16_t kHidden[] =
      u"<WLANProfile><config><nonBroadcast>true</nonBroadcast></config></WLANProfile>";
  wlan.networks = {"Office", "Cafe"};
  wlan.profiles[u"Office"] = kHidden;
  Start();
  Discover();
  bool hidden = false;
  EXPECT_TRUE(adapter->GetProfileProperties(u"Office", &hidden));
  EXPECT_TRUE(hidden);
  EXPECT_FALSE(adapter->GetProfileProperties(u"Cafe", &hidden));
  EXPECT_TRUE(hidden) << "left as it was for a network without a profile";
  EXPECT_FALSE(adapter->GetProfileProperties(u"Nowhere", &hidden));
  EXPECT_FALSE(hidden);
  EXPECT_FALSE(adapter->GetProfileProperties(u"", &hidden));
  wlan.profiles[u"Far"] = kHidden;
  EXPECT_TRUE(adapter->GetProfileProperties(u"Far", &hidden));
  EXPECT_TRUE(hidden);
  wlan.profiles.clear();
  EXPECT_TRUE(adapter->GetProfileProperties(u"Far", &hidden)) << "looked up once, remembered";
}

TEST_F(ProfilesTest, DeleteTellsWhetherItWorked) {
  Start();
  EXPECT_TRUE(adapter->DeleteWlanProfile(u"Office"));
  EXPECT_EQ(wlan.deleted, std::vector<std::u16string>{u"Office"});
  wlan.codes["WlanDeleteProfile"] = ERROR_ACCESS_DENIED;
  EXPECT_FALSE(adapter->DeleteWlanProfile(u"Office"));
}

TEST_F(ProfilesTest, DenyFiltersWinOverPermitFilters) {
  auto& global = CGlobalConfigContainer::GetInstance();
  Start();
  wlan.filters[wlan_filter_list_type_gp_permit] = {"Office", "Lab", ""};
  wlan.filters[wlan_filter_list_type_user_permit] = {"Home", "Lab"};
  wlan.filters[wlan_filter_list_type_user_deny] = {"Office", "Cafe"};
  adapter->RefreshNetworkAllowDenyFilters();
  EXPECT_EQ(global.GetNetworkFilter(u"Lab"), 1u);
  EXPECT_EQ(global.GetNetworkFilter(u"Home"), 1u);
  EXPECT_EQ(global.GetNetworkFilter(u"Office"), 2u);
  EXPECT_EQ(global.GetNetworkFilter(u"Cafe"), 2u);
  EXPECT_EQ(global.m_PermitFilterCount, 4u);
  EXPECT_EQ(Value(u"AllowListCSV"), u"Office\tLab\tHome");
  EXPECT_EQ(Value(u"DenyListCSV"), u"Office\tCafe");

  // Entries are never taken out; a list that fails counts as empty in the texts.
  wlan.claims["WlanGetFilterList"] = 0x10000000;
  adapter->RefreshNetworkAllowDenyFilters();
  EXPECT_EQ(global.GetNetworkFilter(u"Lab"), 1u);
  EXPECT_EQ(global.m_PermitFilterCount, 0u);
}

}  // namespace
}  // namespace corvane::test
