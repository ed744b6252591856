#include "model/wlan_bss_entry.h"

#include <algorithm>

#include "foundation/log_lines.h"
#include "model/global_wireless_maps.h"
#include "model/wlan_network.h"
#include "support/beacon.h"
#include "support/pc_fixture.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;
using platform::WLAN_BSS_ENTRY;
using test::Beacon;

// Takes the lines of the log.
class LineSink : public ILogSink {
 public:
  void Write(std::uint32_t, const char* tag, WStringView text) override {
    lines.push_back(tag + Narrow(text));
  }
  void Write(std::uint32_t, const char*, std::string_view) override {}
  std::string GetMemoryLog() override { return {}; }
  std::vector<std::string> lines;
};

class WlanModel : public test::KernelTest {
 protected:
  static WLAN_BSS_ENTRY Bss(const std::string& ssid, std::uint8_t last, std::uint32_t quality = 80,
                            std::uint32_t khz = 5180000) {
    WLAN_BSS_ENTRY bss;
    bss.dot11Ssid.uSSIDLength = static_cast<platform::ULONG>(ssid.size());
    std::copy_n(ssid.begin(), std::min<std::size_t>(ssid.size(), 32), bss.dot11Ssid.ucSSID);
    const std::uint8_t mac[] = {0x02, 0xAB, 0, 0, 0x0C, last};
    std::copy(std::begin(mac), std::end(mac), bss.dot11Bssid);
    bss.uLinkQuality = quality;
    bss.ulChCenterFrequency = khz;
    return bss;
  }
  void Update(CWlanBssEntry& entry, const WLAN_BSS_ENTRY& bss,
              const std::vector<platform::BYTE>& ies = {}, const CWlanBssEntry::Facts& facts = {}) {
    entry.UpdateFromBss(bss, ies.empty() ? nullptr : ies.data(),
                        static_cast<std::uint32_t>(ies.size()), facts, -1, context);
  }
  static std::shared_ptr<const KnownNetworks> Known(const WString& ssid, std::int32_t category,
                                                    std::uint32_t connectivity) {
    return std::make_shared<KnownNetworks>(KnownNetworks{{ssid, {category, connectivity}}});
  }

  ScoreContext context;  // of the adapter: nothing is known
};

TEST_F(WlanModel, AnEntryTakesOverTheRecord) {
  const auto entry = CWlanBssEntry::CreateObject();
  EXPECT_EQ(entry->GetScore(true, context), -1);
  EXPECT_EQ(entry->GetPhyMode(), u"802.11");
  CWlanBssEntry::Facts facts;
  facts.grantedAccess = 7;
  facts.autoConnect = facts.nonBroadcast = facts.hasTempProfile = true;
  facts.securityEnabled = 1;
  facts.internetState = 0;
  entry->m_unscanned_count = 10;
  entry->m_candidate_counter = 2;
  Update(*entry, Bss(std::string("Caf\xC3\xA9\0Bar", 9), 0xF0, 80, 5500000), {}, facts);
  EXPECT_EQ(entry->m_SSIDA, "Caf\xC3\xA9");  // up to the first NUL
  EXPECT_EQ(entry->m_SSIDW, u"Café");
  EXPECT_EQ(entry->m_BSSIDText, u"02-ab-00-00-0c-f0");
  EXPECT_EQ(entry->m_Channel, 100u);
  EXPECT_EQ(entry->m_Width, 20u);
  EXPECT_TRUE(entry->m_bss_scanned && entry->m_AutoConnect && entry->m_bNonBroadcast &&
              entry->m_bHasTempProfile);
  EXPECT_EQ(entry->m_unscanned_count, 0u);
  EXPECT_EQ(entry->m_candidate_counter, 2);
  EXPECT_EQ(entry->m_GrantedAccess, 7u);
  EXPECT_EQ(entry->m_SecurityEnabled, 1);
  EXPECT_FALSE(entry->m_IEBlob);
  // The network list knows nothing of it, and that counts as internet.
  EXPECT_TRUE(entry->m_bInternet && entry->m_bInternetLatch);

  Update(*entry, Bss("Lab-5G ", 0xF1, 80, 5160000));  // another name and address, in no table
  EXPECT_EQ(entry->m_SSIDW, u"Lab-5G ");
  EXPECT_EQ(entry->m_BaseNetname, u"Lab");
  EXPECT_EQ(entry->m_BSSIDText, u"02-ab-00-00-0c-f1");
  EXPECT_EQ(entry->m_Channel + entry->m_Width, 0u);
  EXPECT_EQ(entry->m_SecurityEnabled, -1);
  Update(*entry, Bss(std::string(40, 'n'), 0xF1));
  EXPECT_EQ(entry->m_SSIDA, std::string(32, 'n'));
  Update(*entry, Bss("", 0xF1));
  EXPECT_EQ(entry->m_SSIDW + entry->m_BaseNetname, u"");
}

TEST_F(WlanModel, ElementsAreKeptForAMinuteWithoutNewOnes) {
  const auto entry = CWlanBssEntry::CreateObject();
  const auto bytes = Beacon(u8"Lab").Channel(36).Vht80(2).QbssLoad(7, 51).Bytes();
  WLAN_BSS_ENTRY bss = Bss("Lab", 1);
  bss.wlanRateSet.uRateSetLength = 6;
  bss.wlanRateSet.usRateSet[0] = 0x8000 | 12;
  bss.wlanRateSet.usRateSet[1] = 36;
  bss.wlanRateSet.usRateSet[2] = 0x8000 | 97;  // 48.5 Mbps
  bss.wlanRateSet.usRateSet[3] = 200;          // behind the length
  Update(*entry, bss);
  EXPECT_FALSE(entry->m_IEBlob);
  EXPECT_EQ(entry->GetMaxRate(context), 48);
  EXPECT_EQ(entry->GetMaxRateHalved(context), 48);
  EXPECT_EQ(entry->GetRawLoadPct(), -1.0);
  EXPECT_EQ(entry->GetLoadPct(context), -1.0);
  EXPECT_EQ(entry->GetStationCount(), 65535);
  EXPECT_EQ(entry->GetChannelWidthText(), u"20");

  Update(*entry, bss, bytes);
  const std::int32_t rate = entry->GetMaxRate(context);
  EXPECT_GT(rate, 400);
  EXPECT_EQ(entry->GetMaxRateHalved(context), rate / 2);
  EXPECT_DOUBLE_EQ(entry->GetLoadPct(context), 20.0);
  EXPECT_EQ(entry->GetStationCount(), 7);
  EXPECT_EQ(entry->GetChannelWidthText(), u"80");
  EXPECT_EQ(entry->GetPhyModes(), u"a/n/ac");

  RunFor(60s);
  Update(*entry, bss);
  EXPECT_EQ(entry->GetMaxRate(context), rate);
  entry->UpdateFromBss(bss, bytes.data(), 1, {}, -1, context);  // one byte is none
  EXPECT_EQ(entry->GetMaxRate(context), rate);
  RunFor(1ms);
  Update(*entry, bss);
  ASSERT_TRUE(entry->m_IEBlob);
  EXPECT_EQ(entry->GetMaxRate(context),
            0);  // not the platform's rates: there is an object, and it is empty
  EXPECT_FALSE(entry->m_IEBlob->m_RawIEs);
  EXPECT_EQ(entry->GetPhyMode(), u"11");
}

TEST_F(WlanModel, ElementsAreReadAnewWhenTheySayOrLogSomethingElse) {
  const auto entry = CWlanBssEntry::CreateObject();
  const auto readsAnew = [&](const WLAN_BSS_ENTRY& bss, const auto& bytes) {
    const auto before = entry->m_IEBlob;  // lives on, so that no new object takes its place
    Update(*entry, bss, bytes);
    return entry->m_IEBlob.get() != before.get();
  };
  const auto bytes = Beacon(u8"Lab").Channel(36).Vht80(2).QbssLoad(7, 51).Bytes();
  const auto busier = Beacon(u8"Lab").Channel(36).Vht80(2).QbssLoad(7, 52).Bytes();
  EXPECT_TRUE(readsAnew(Bss("Lab", 1, 60, 5180000), bytes));
  EXPECT_EQ(entry->m_IEBlob->GetChannelWidthString(false, u",", false), u"20,40,80");
  RunFor(60s);
  EXPECT_FALSE(readsAnew(Bss("Lab", 1, 80, 5180000), bytes));
  EXPECT_EQ(entry->m_IEBlob->GetChannelWidthString(true, u",", false), u"80,40,20");
  RunFor(60s);
  EXPECT_FALSE(readsAnew(Bss("Lab", 1, 80, 5180000), bytes))
      << "they are as new as the last beacon";
  EXPECT_TRUE(readsAnew(Bss("Lab", 1, 80, 5180000), busier));
  EXPECT_DOUBLE_EQ(entry->GetRawLoadPct(), 52 * 100 / 255.0);
  EXPECT_TRUE(readsAnew(Bss("Lab", 1, 80, 5200000), busier));
  g_DebugMask = kDefaultDebugMask | DBG(44);
  EXPECT_TRUE(readsAnew(Bss("Lab", 1, 80, 5200000), busier)) << "its security is to be logged";
  g_DebugMask = kDefaultDebugMask;
}

TEST_F(WlanModel, ScoreHistoryHoldsTheNewestFiveWithoutRepeats) {
  const auto entry = CWlanBssEntry::CreateObject();
  for (const std::uint32_t quality : {60u, 60u, 70u, 60u, 80u, 90u, 100u, 100u})
    Update(*entry, Bss("Lab", 1, quality));
  EXPECT_EQ(entry->m_ScoreHistory, (std::vector<std::int32_t>{30, 24, 18, 6, 12}));
  CWlanBssEntry::Facts peg;
  peg.pegLQ = 90;
  Update(*entry, Bss("Lab", 1, 60), {}, peg);
  EXPECT_EQ(entry->m_ScoreHistory.front(), 24);
  EXPECT_EQ(entry->m_PeggedLQ, 90u);
  EXPECT_EQ(entry->GetLQ(), 60u);
}

TEST_F(WlanModel, EachFactReachesItsTermOfTheSubtotal) {
  const auto entry = CWlanBssEntry::CreateObject();
  const auto beacon =
      Beacon(u8"Lab").Channel(36).He160(4).MuBeamformer().Rsn({test::AKM_SAE}).QbssLoad(3, 51);
  const auto log = [&] {
    Update(*entry, Bss("Lab", 1), beacon.Bytes());
    return entry->ScoreLog();
  };
  EXPECT_EQ(log(),
            "SIGQ(18/30),PRIV(0),N(5),AC(5),AX(5),SEC(9),MUMIMO(5),MBPS(14/1733),QBSS(8/20),"
            "NOISE(0),NEG_SIGQ(0),ALLOW(0),INTERNET(0/NO_NLM),SUBTOTAL(69)");

  context.weights = {11, 40, 2, 7, 2, 20, 9};
  context.heCapable = true;
  const auto map = std::make_shared<ChannelLoadMap>();
  context.loadMap = map;
  context.loadMapValid = true;
  context.networks = Known(u"Lab", kCategoryPrivate, 0x1);
  context.filters = std::make_shared<NetworkFilters>(NetworkFilters{{u"Lab", kFilterPermitted}});
  context.allowBonus = 13;
  EXPECT_EQ(log(),
            "SIGQ(24/40),PRIV(2),N(5),AC(5),AX(5),SEC(9),MUMIMO(7),MBPS(7/2402),QBSS(16/20),"
            "NOISE(10),NEG_SIGQ(0),ALLOW(13),INTERNET(-11),SUBTOTAL(91)");

  const auto expect = [&log](std::initializer_list<const char*> terms) {
    const std::string text = log();
    for (const char* term : terms) EXPECT_NE(text.find(term), std::string::npos) << text;
  };
  map->low.noise[42] = 11;  // the centre of the 80 MHz
  context.networks = Known(u"Lab", kCategoryPublic, 0x40);
  context.filters = std::make_shared<NetworkFilters>(NetworkFilters{{u"Lab", kFilterDenied}});
  expect({",PRIV(0)", ",NOISE(0)", ",ALLOW(0)", ",INTERNET(0),"});
  context.networks = Known(u"Lab", kCategoryUnknown, 0x1);
  context.vpnFound = true;
  expect({",INTERNET(0/VPN_MUTED)"});
  EXPECT_TRUE(entry->m_bVpnMuted && entry->m_bConnectivityKnown && !entry->m_bInternetLatch);
  context.networks = Known(u"Lab", kCategoryUnknown, 0);
  context.vpnFound = false;
  expect({",INTERNET(0/DISCON-VPN_MUTED)"});  // as the entry remembers

  // Of the two halves of 80+80 MHz, one that is quiet is enough.
  entry->m_IEBlob->m_VHT80Plus80 = true;
  entry->m_IEBlob->m_LoadSeg0Channel = 42;
  entry->m_IEBlob->m_LoadSeg1Channel = 155;
  for (const auto& [first, second, isQuiet] :
       {std::tuple{10, 99, true}, {99, 10, true}, {99, 99, false}}) {
    map->low.noise[42] = static_cast<std::uint8_t>(first);
    map->low.noise[155] = static_cast<std::uint8_t>(second);
    entry->ComputeSubtotal(0, context);
    EXPECT_EQ(entry->ScoreLog().find(",NOISE(10)") != std::string::npos, isQuiet) << first;
  }
}

TEST_F(WlanModel, FinalScoreUsesNameBandAndBluetooth) {
  const auto guest = CWlanBssEntry::CreateObject();
  Update(*guest, Bss("My GUEST net", 1, 100, 2437000));
  guest->m_BTPenalty = 5;
  // 30 points; the load of a channel that is not known counts as none.
  EXPECT_EQ(guest->GetScore(true, context), 32);
  EXPECT_EQ(guest->FinalScoreLog(), ",QBSS_2a(10),GUEST(-3),BT(-5)");
  guest->m_BTPenalty = 0;
  EXPECT_EQ(guest->GetScore(false, context), 37);
  EXPECT_EQ(guest->FinalScoreLog(), ",QBSS_2a(10),GUEST(-3),BT(-5)");  // of the score before

  const auto office = CWlanBssEntry::CreateObject();
  Update(*office, Bss("Office", 2, 100), Beacon(u8"Office").Channel(36).Bytes());
  office->m_BTPenalty = 5;
  office->GetScore(true, context);
  EXPECT_EQ(office->FinalScoreLog(), ",QBSS_2c(5)");  // 5 GHz, and no load known on its channel
  context.weights.QBSSBumpMax = 40;
  office->GetScore(true, context);
  EXPECT_EQ(office->FinalScoreLog(), ",QBSS_2c(20)");

  // What the adapter knows of the band, and of the channel.
  context.averageScore5 = 8, context.averageScore2 = 6;
  context.averageLoad5 = 20.5, context.averageLoad2 = 40.5;
  office->GetScore(true, context);
  EXPECT_EQ(office->FinalScoreLog(), ",QBSS_2b(8)");
  EXPECT_EQ(office->GetLoadPct(context), 20.5);
  office->m_Bss.ulChCenterFrequency = 2437000;
  office->m_BTPenalty = 0;
  office->GetScore(true, context);
  EXPECT_EQ(office->FinalScoreLog(), ",QBSS_2b(6)");
  EXPECT_EQ(office->GetLoadPct(context), 40.5);
  const auto map = std::make_shared<ChannelLoadMap>();
  map->low.load[36] = 50;
  context.loadMap = map;
  office->GetScore(true, context);
  EXPECT_EQ(office->FinalScoreLog(), ",QBSS_2a(20)");
}

TEST_F(WlanModel, FiveGHzIsTheBandOfItsChannels) {
  const std::pair<std::uint32_t, bool> cases[] = {
      {5149999, false}, {5150000, true}, {5924999, true}, {5925000, false}};
  for (const auto& [khz, inside] : cases) {
    const auto entry = CWlanBssEntry::CreateObject();
    entry->m_Bss.ulChCenterFrequency = khz;
    EXPECT_EQ(entry->IsIn5GHzRange(), inside) << khz;
  }
}

TEST_F(WlanModel, StatusLine) {
  const auto entry = CWlanBssEntry::CreateObject();
  Update(*entry, Bss("Lab", 0x0A, 75, 2437000));
  const auto line = [this, &entry] {
    WString text = entry->GetStatusLine(context);
    std::replace(text.begin(), text.end(), u'\v', u'|');
    return Narrow(text);
  };
  EXPECT_EQ(line(),
            "Lab|02-ab-00-00-0c-0a|2.4Ghz|25|75|unknown|unknown|good|-1.00|6|802.11|0|0|20|no|0");
  CWlanBssEntry::Facts facts;
  facts.grantedAccess = 1;
  facts.authAlgorithm = 7;
  const auto beacon = Beacon(u8"Lab").Channel(36).Vht80(4).MuBeamformer().QbssLoad(3, 51);
  Update(*entry, Bss("Lab", 0x0A, 75), beacon.Bytes(), facts);
  entry->m_ApCountOnChannel = 3;
  entry->m_bss_scanned = false;
  const std::string score = std::to_string(entry->GetScore(false, context));
  EXPECT_EQ(line(), "Lab|02-ab-00-00-0c-0a|5Ghz|" + score +
                        "|75|unknown|not-auto|pending|20.00|36|a/n/ac|7|1|20,40,80|no|3");
  entry->m_unscanned_count = 1;
  entry->m_AutoConnect = true;
  context.networks = Known(u"Lab", kCategoryDomain, 0x40);
  EXPECT_NE(line().find("|Domain|auto|bad|"), std::string::npos);
}

TEST_F(WlanModel, CandidateCounterFallsWithAMissingScan) {
  const auto entry = CWlanBssEntry::CreateObject();
  Update(*entry, Bss("Lab", 1));
  EXPECT_EQ(entry->IncrementCandidate(0), 1);
  EXPECT_EQ(entry->IncrementCandidate(-1), 2);
  EXPECT_EQ(entry->IncrementCandidate(7), 7);
  entry->m_bss_scanned = false;  // a pass without a scan: nothing is missing yet
  EXPECT_EQ(entry->GetCandidate(), 7);
  EXPECT_EQ(entry->IncrementCandidate(0), 8);
  entry->m_unscanned_count = 1;
  EXPECT_EQ(entry->GetCandidate(), 0);
  EXPECT_EQ(entry->m_candidate_counter, 0);
  entry->m_candidate_counter = 4;
  EXPECT_EQ(entry->IncrementCandidate(9), 0);
  entry->m_bss_scanned = true;
  EXPECT_EQ(entry->GetCandidate(), 0);
  EXPECT_EQ(entry->IncrementCandidate(0), 1);
}

TEST_F(WlanModel, ANetworkUpdatesAKnownBssAndKeepsWhatItLearned) {
  const auto network = CWlanNetwork::CreateObject();
  platform::WLAN_AVAILABLE_NETWORK record;
  record.dot11Ssid = Bss("Lab 5GHz", 1).dot11Ssid;
  network->Update(record, -1);
  EXPECT_EQ(network->m_SSIDW, u"Lab 5GHz");
  EXPECT_EQ(network->m_BaseNetname, u"Lab");

  CWlanBssEntry::Facts facts;
  facts.internetState = 1;
  facts.nonBroadcast = true;
  std::int32_t delta = 99;
  network->AddOrUpdateBss(Bss("Lab 5GHz", 1, 60), nullptr, 0, facts, context, &delta);
  EXPECT_EQ(delta, 0);
  const auto entry = network->m_BssMap.begin()->second;
  EXPECT_TRUE(entry->m_bNonBroadcast);
  entry->m_bVpnMuted = true;
  entry->m_candidate_counter = 2;
  entry->m_bss_scanned = false;
  entry->m_unscanned_count = 10;

  facts.nonBroadcast = false;
  network->AddOrUpdateBss(Bss("Lab 5GHz", 1, 45), nullptr, 0, facts, context, &delta);
  EXPECT_EQ(delta, -15);
  network->AddOrUpdateBss(Bss("Lab 5GHz", 2, 45), nullptr, 0, facts, context, nullptr);
  EXPECT_EQ(network->m_BssMap.size(), 2u);
  EXPECT_EQ(network->m_BssMap.begin()->second, entry);
  EXPECT_TRUE(entry->m_bss_scanned && entry->m_bVpnMuted && !entry->m_bNonBroadcast);
  EXPECT_EQ(entry->m_unscanned_count, 0u);
  EXPECT_EQ(entry->m_candidate_counter, 2);
  EXPECT_EQ(entry->m_ScoreHistory.size(), 2u);
}

TEST_F(WlanModel, ProfileMarksNeedALongEnoughText) {
  const auto profile = CWlanProfileData::CreateObject();
  const WString automatic = u"<connectionMode>auto</connectionMode>";  // 37 characters
  const WString hidden = u"<nonBroadcast>true</nonBroadcast>";
  const struct {
    WString xml;
    bool automatic, hidden;
  } cases[] = {
      {automatic + u"123", false, false},  // 40 characters
      {automatic + u"1234", true, false},
      {automatic + hidden, true, true},
      {u"<connectionMode>manual</connectionMode>" + hidden, false, true},
      {u"<connectionMode> auto </connectionMode>   <nonBroadcast>TRUE</nonBroadcast>", false,
       false},
      {u"", false, false},
  };
  for (const auto& one : cases) {
    profile->SetData(u"Lab", one.xml, 3, 5);
    EXPECT_EQ(profile->m_bAutoConnect, one.automatic) << Narrow(one.xml);
    EXPECT_EQ(profile->m_bNonBroadcast, one.hidden) << Narrow(one.xml);
    EXPECT_TRUE(profile->m_Xml == one.xml && profile->m_Flags == 3 &&
                profile->m_GrantedAccess == 5);
  }
}

TEST_F(WlanModel, HiddenNetworksInTheOrderOfTheirNames) {
  auto& maps = CGlobalWirelessMaps::GetInstance();
  const auto add = [&maps](const WString& name, bool hidden, const std::string& ssid) {
    const auto profile = CWlanProfileData::CreateObject();
    profile->m_Name = name;
    profile->m_bNonBroadcast = hidden;
    profile->m_SSIDA = ssid;
    maps.m_MapOfProfiles[name] = profile;
  };
  add(u"b\u00e9", true, "");
  add(u"a", true, "known");
  add(u"c", false, "");
  maps.m_MapOfProfiles[u"d"] = nullptr;
  std::list<std::string> ssids;
  maps.GetHiddenSsids(&ssids);
  EXPECT_EQ(ssids, (std::list<std::string>{"known", "b\xC3\xA9"}));
  EXPECT_EQ(maps.m_MapOfProfiles[u"b\u00e9"]->m_SSIDA, "b\xC3\xA9");

  maps.m_MapOfProfiles2[u"x"] = maps.m_MapOfProfiles[u"a"];
  LineSink sink;
  SetLogSink(&sink);
  g_DebugMask = DBG(29);
  maps.Shutdown();
  SetLogSink(nullptr);
  EXPECT_EQ(sink.lines,
            (std::vector<std::string>{
                "<I>CGlobalWirelessMaps::Shutdown: clearing m_MapOfProfiles, size=4",
                "<I>CGlobalWirelessMaps::Shutdown: clearing m_MapOfProfiles2, size=1"}));
  EXPECT_TRUE(maps.m_MapOfProfiles.empty() && maps.m_MapOfProfiles2.empty());
}

class LoadOfTheAir : public WlanModel {
 protected:
  void TearDown() override {
    networks.clear();
    WlanModel::TearDown();
  }
  CWlanBssEntry& Add(const std::string& ssid, std::uint8_t last, std::uint32_t khz,
                     const Beacon& beacon) {
    auto& network = networks[Widen(ssid)];
    if (!network) network = CWlanNetwork::CreateObject();
    const auto bytes = beacon.Bytes();
    network->AddOrUpdateBss(Bss(ssid, last, 80, khz), bytes.data(),
                            static_cast<std::uint32_t>(bytes.size()), {}, context, nullptr);
    return *network->m_BssMap.at(ToMac(Bss(ssid, last).dot11Bssid));
  }
  // Works the map out; the context has what it came to.
  void Compute(NetworkMap& heard) {
    auto& maps = CGlobalWirelessMaps::GetInstance();
    maps.ComputeNoiseLevelArray(heard);
    context.loadMap = maps.LoadMap(&context.loadMapValid);
  }
  NetworkMap networks;
};

TEST_F(LoadOfTheAir, IsWorkedOutAnewFromWhatIsHeard) {
  CGlobalWirelessMaps::GetInstance().LoadMap(&context.loadMapValid);
  EXPECT_FALSE(context.loadMapValid);
  CWlanBssEntry& first = Add("A", 1, 5180000, Beacon(u8"A").Channel(36).QbssLoad(1, 128));
  CWlanBssEntry& second = Add("B", 2, 2437000, Beacon(u8"B").Channel(6));
  Compute(networks);
  EXPECT_TRUE(context.loadMapValid);
  EXPECT_EQ(first.m_FootprintText, "{34}-{38}");
  EXPECT_EQ(context.LoadMap().LoadOf(5, 36), 50);
  EXPECT_EQ(context.LoadMap().ApCountOf(2, 6), 1);
  first.UpdateApCount(context);
  EXPECT_EQ(first.m_ApCountOnChannel, 1u);

  // Silent for two scans it still counts, for three not.
  first.m_bss_scanned = second.m_bss_scanned = false;
  first.m_unscanned_count = 3;
  second.m_unscanned_count = 2;
  Compute(networks);
  EXPECT_EQ(context.LoadMap().ApCountOf(5, 36), 0);
  EXPECT_EQ(context.LoadMap().LoadOf(5, 36), 255);
  EXPECT_EQ(context.LoadMap().ApCountOf(2, 6), 1);
  first.UpdateApCount(context);
  EXPECT_EQ(first.m_ApCountOnChannel, 0u);
  first.m_bss_scanned = true;  // heard again
  Compute(networks);
  EXPECT_EQ(context.LoadMap().ApCountOf(5, 36), 1);

  NetworkMap none;
  Compute(none);
  EXPECT_EQ(context.LoadMap().ApCountOf(5, 36), 0);
  EXPECT_TRUE(context.loadMapValid);
}

TEST_F(LoadOfTheAir, ABadChannelIsToldAndTheOthersGoOn) {
  CWlanBssEntry& lost = Add("A", 1, 5160000, Beacon(u8"A").Rates({0x8c}));
  CWlanBssEntry& good = Add("B", 2, 5180000, Beacon(u8"B").Channel(36));
  lost.m_IEBlob = nullptr;
  LineSink sink;
  SetLogSink(&sink);
  g_DebugMask = 0;
  Compute(networks);
  SetLogSink(nullptr);
  EXPECT_EQ(sink.lines, (std::vector<std::string>{"<E>CGlobalWirelessMaps::ComputeNoiseLevelArray:["
                                                  "02-ab-00-00-0c-01][A] BAD Channel #: 0"}));
  EXPECT_TRUE(lost.m_Footprint.empty());
  EXPECT_EQ(good.m_Footprint.size(), 5u);
}

}  // namespace
}  // namespace corvane
