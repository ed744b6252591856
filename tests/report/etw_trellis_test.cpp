#include "report/etw_trellis.h"

#include <optional>

#include "notify/notification_manager.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_event_trace.h"
#include "report/trellis_events.h"
#include "report/trellis_provider.h"
#include "support/report_fixture.h"

namespace corvane::test {
namespace {

using platform::TraceEvent;

const WString kBssid1 = u"02-00-00-00-00-01";
const WString kBssid2 = u"02-00-00-00-00-02";

std::string Line(const TraceEvent& event) { return TraceEventJson(event, "t"); }

// ---- the bytes of the metadata

TEST(TrellisMetadata, IsLaidOutAsTheFormatSays) {
  const std::string provider = std::string("\x16\0", 2) + "TRBUILD_ETWProvider" + '\0';
  EXPECT_EQ(std::string(trellis::kProviderMetadata.begin(), trellis::kProviderMetadata.end()),
            provider);

  const std::string best = std::string("\x4B\0\0", 3) + std::string("TRELLIS_N_BEST_AP\0", 18) +
                           std::string("EventType\0\7", 11) + std::string("EventCategory\0\7", 15) +
                           std::string("ssid\0\1", 6) + std::string("bssid\0\1", 7) +
                           std::string("InterfaceGUID\0\1", 15);
  EXPECT_EQ(std::string(trellis::kBest.metadata1.begin(), trellis::kBest.metadata1.end()), best);

  const std::string suggest2 =
      std::string("\0", 1) + std::string("TRELLIS_N_SUGGEST_AP_2\0", 23) +
      std::string("EventType\0\7", 11) + std::string("EventCategory\0\7", 15) +
      std::string("EventToClear\0\7", 14) + std::string("ssid\0\1", 6) +
      std::string("bssid\0\1", 7) + std::string("InterfaceGUID\0\1", 15) +
      std::string("Percentage\0\7", 12) + std::string("SignalQuality\0\x8", 15);
  const auto& blob = trellis::kSuggest.metadata2;
  EXPECT_EQ(std::string(blob.begin() + 2, blob.end()), suggest2);
  EXPECT_EQ(blob[0] + 256u * blob[1], suggest2.size() + 2);
}

// ---- the reporter

class EtwTest : public ReportTest {
 protected:
  void Start(int index) {
    etw.emplace();
    etw->Start(index, &config, u"{guid}", u"Wi-Fi", u"Radio 7");
  }
  void TearDown() override {
    etw.reset();
    ReportTest::TearDown();
  }
  std::vector<TraceEvent> Take() { return kernel.EventTrace().TakeEvents(); }
  std::vector<std::string> TakeNames() {
    std::vector<std::string> names;
    for (const TraceEvent& event : Take()) names.push_back(event.name);
    return names;
  }
  CapabilityMismatch Mismatch(const WString& bssid) {
    return {7, 4, 33, u"Office", bssid, u"802.11ax", u"802.11n", 300, 200};
  }
  bool Suggest(const WString& ssid, const WString& bssid, std::int32_t percent = 30) {
    return etw->SuggestAP(Ap(ssid, bssid), percent, 77, u"new", u"old");
  }

  std::optional<CEtwTrellis> etw;
};

using Names = std::vector<std::string>;

// Every event of either adapter, with its numbers and fields, as a reader of the stream decodes it.
TEST_F(EtwTest, AllEventsOfBothAdaptersReadAsTheTableSays) {
  const auto line = [](const char* name, int type, int category, int clear,
                       const std::string& rest) {
    std::string text = "{\"time\":\"t\",\"event\":\"" + std::string(name) +
                       "\",\"EventType\":" + std::to_string(type) +
                       ",\"EventCategory\":" + std::to_string(category);
    if (clear != 0) text += ",\"EventToClear\":" + std::to_string(clear);
    return text + "," + rest + "}";
  };
  const std::string pair = R"("ssid":"Office","bssid":"02-00-00-00-00-01")";
  const std::string guid = R"("InterfaceGUID":"{guid}")";
  const std::string classes = R"("adapterClass":"802.11ax","apClass":"802.11n")";
  for (const int index : {0, 1}) {
    SCOPED_TRACE(index);
    Start(index);
    const bool two = index == 1;
    etw->SuggestAP(Ap(u"Office", kBssid1), 30, 77, u"", u"");
    etw->NotifyAlreadyBestAP(Ap(u"Office", kBssid1));
    etw->CapabilityMismatchAPBetter(Mismatch(kBssid1));
    etw->CapabilityMismatchClearLast(u"Office", kBssid1, u"802.11ax", u"802.11n");
    etw->CapabilityMismatchWifiBetter(Mismatch(kBssid1));
    etw->CapabilityMismatchClearLast(u"Office", kBssid1, u"802.11ax", u"802.11n");
    etw->NotifySignalQualityBAD(u"Office", kBssid1, u"[Channel 36]", 31);
    etw->NotifyClearPreviousSignalQualityBAD();
    etw->NotifySignalQualityGOOD(u"Office", kBssid1, u"[Channel 36]", 81);
    etw->APConnected(u"Office", kBssid1, 866700, 780000, -1, 4000000000u, u"802.11ax", u"802.11n");
    etw->APDisconnected();
    etw->NotifyAPContention(u"Office", kBssid1, 36, u"x[1(SQ 2)]", u"x[1]", u"x", u"1", u"2");
    etw->NotifyNoAPContention(u"Office", kBssid1, 36);

    const std::string expected[] = {
        line(two ? "TRELLIS_N_SUGGEST_AP_2" : "TRELLIS_N_SUGGEST_AP", two ? 31 : 11, 3,
             two ? 40 : 20, pair + "," + guid + R"(,"Percentage":30,"SignalQuality":77)"),
        line(two ? "TRELLIS_N_BEST_AP_2" : "TRELLIS_N_BEST_AP", two ? 40 : 20, 2, 0,
             pair + "," + guid),
        line(two ? "TRELLIS_N_MISMATCH_AP_BETTER_NIC2" : "TRELLIS_N_MISMATCH_AP_BETTER_NIC1",
             two ? 61 : 41, 3, two ? 100 : 80, pair + "," + guid + "," + classes),
        line(two ? "TRELLIS_N_MISMATCH_CLEAR1_NIC2" : "TRELLIS_N_MISMATCH_CLEAR1_NIC1",
             two ? 100 : 80, 2, 0, pair + "," + guid + "," + classes),
        line(two ? "TRELLIS_N_MISMATCH_WIFI_BETTER_NIC2" : "TRELLIS_N_MISMATCH_WIFI_BETTER_NIC1",
             two ? 71 : 51, 3, two ? 110 : 90, pair + "," + guid + "," + classes),
        line(two ? "TRELLIS_N_MISMATCH_CLEAR2_NIC2" : "TRELLIS_N_MISMATCH_CLEAR2_NIC1",
             two ? 110 : 90, 2, 0, pair + "," + guid + "," + classes),
        line(two ? "TRELLIS_N_WIFI_QUALITY_NIC2_BAD" : "TRELLIS_N_WIFI_QUALITY_NIC1_BAD",
             two ? 91 : 81, 3, two ? 60 : 50, "\"SignalQuality\":31," + pair + "," + guid),
        line(two ? "TRELLIS_N_WIFI_QUALITY_NIC2_GOOD" : "TRELLIS_N_WIFI_QUALITY_NIC1_GOOD",
             two ? 60 : 50, 2, 0, "\"SignalQuality\":100," + pair + "," + guid),
        line(two ? "TRELLIS_N_WIFI_QUALITY_NIC2_GOOD" : "TRELLIS_N_WIFI_QUALITY_NIC1_GOOD",
             two ? 60 : 50, 2, 0, "\"SignalQuality\":81," + pair + "," + guid),
        line(two ? "TRELLIS_N_AP_CONNECTED_NIC2" : "TRELLIS_N_AP_CONNECTED_NIC1", two ? 130 : 120,
             2, 0,
             pair + "," + guid +
                 R"(,"LinkSpeedTxKbps":866700,"LinkSpeedRxKbps":780000,"ApScore":-1,)" + classes +
                 R"(,"LQ":4000000000,"AdapterDescription":"Radio 7")"),
        line(two ? "TRELLIS_N_AP_DISCONNECTED_NIC2" : "TRELLIS_N_AP_DISCONNECTED_NIC1",
             two ? 150 : 140, 2, two ? 130 : 120, pair + "," + guid),
        line(two ? "TRELLIS_N_WIFI_AP_CONTENTION_NIC2" : "TRELLIS_N_WIFI_AP_CONTENTION_NIC1",
             two ? 211 : 201, 3, two ? 210 : 200,
             pair +
                 R"(,"Channel":36,"opp_summary_csv":"x[1(SQ 2)]",)"
                 R"("opp_ssids_csv":"x","opp_bssids_csv":"1",)" +
                 R"("opp_sqs_csv":"2",)" + guid),
        line(two ? "TRELLIS_N_NO_WIFI_AP_CONTENTION_NIC2" : "TRELLIS_N_NO_WIFI_AP_CONTENTION_NIC1",
             two ? 210 : 200, 2, 0, pair + ",\"Channel\":36," + guid),
    };
    const auto events = Take();
    ASSERT_EQ(events.size(), std::size(expected));
    for (std::size_t i = 0; i < events.size(); ++i) {
      EXPECT_EQ(Line(events[i]), expected[i]);
      EXPECT_EQ(events[i].provider, "TRBUILD_ETWProvider");
      const auto& d = events[i].descriptor;
      EXPECT_TRUE(d.Id == 0 && d.Version == 0 && d.Channel == 11 && d.Level == 4 &&
                  d.Opcode == 0xCD && d.Keyword == 0);
    }
  }
}

TEST_F(EtwTest, StartZeroesTheCountersOfItsAdapterInEventModeOnly) {
  config.etwMode = false;
  Start(0);
  EXPECT_TRUE(config.numbers.empty());
  config.etwMode = true;
  Start(0);
  EXPECT_EQ(config.numbers,
            (std::map<WString, std::uint32_t>{{u"SuggestCount", 0}, {u"BestCount", 0}}));
  config.numbers.clear();
  Start(1);
  EXPECT_EQ(config.numbers,
            (std::map<WString, std::uint32_t>{{u"SuggestCount2", 0}, {u"BestCount2", 0}}));
  EXPECT_EQ(kernel.EventTrace().Traits().size(), trellis::kProviderMetadata.size());
}

TEST_F(EtwTest, OneSuggestionForANetworkUntilItIsResolved) {
  Start(1);
  EXPECT_TRUE(Suggest(u"Office", kBssid1));
  EXPECT_FALSE(Suggest(u"Office", kBssid2));
  EXPECT_TRUE(etw->GetMemo().HasAp(u"Office", kBssid1));
  EXPECT_FALSE(etw->GetMemo().HasAp(u"Office", kBssid2));
  EXPECT_EQ(config.numbers[u"SuggestCount"], 1u) << "one name for both adapters here";
  EXPECT_TRUE(Suggest(u"Home", kBssid2)) << "a new network beside it";
  EXPECT_EQ(config.texts[u"SuggestedNetwork"], u"Home [02-00-00-00-00-02] [Channel 36] [5Ghz]");
  EXPECT_EQ(etw->GetSuggestedNetworkText(), config.texts[u"SuggestedNetwork"]);
  EXPECT_EQ(TakeNames(), Names(2, "TRELLIS_N_SUGGEST_AP_2"));

  etw->ClearSuggestedAP_If_Equal(u"Office", kBssid2);
  EXPECT_TRUE(HasLog("ClearSuggestedAP_If_Equal: AP not found: Office [02-00-00-00-00-02]"));
  EXPECT_FALSE(Suggest(u"Office", kBssid1));
  etw->ClearSuggestedAP_If_Equal(u"Office", kBssid1);
  etw->ClearSuggestedAP_If_Equal(u"Home", u"");
  EXPECT_TRUE(HasLog("ClearSuggestedAP_If_Equal: found & removed Network: Home"));
  EXPECT_TRUE(Suggest(u"Office", kBssid2));
}

TEST_F(EtwTest, ASuggestionThatImprovesOnNothingIsSentAsAHundredPercent) {
  Start(0);
  EXPECT_TRUE(Suggest(u"Office", kBssid1, 0));
  EXPECT_EQ(config.reason, 103);
  EXPECT_TRUE(HasLog("FORCE pct: 0 --> 100"));
  EXPECT_TRUE(Suggest(u"Home", kBssid1, 12));
  EXPECT_EQ(config.reason, -12);
  const auto events = Take();
  ASSERT_EQ(events.size(), 2u);
  EXPECT_EQ(events[0].Number("Percentage"), 100);
  EXPECT_EQ(events[1].Number("Percentage"), 12);
}

TEST_F(EtwTest, BestIsToldOnceUntilItChangesOrIsReset) {
  Start(1);
  EXPECT_TRUE(etw->NotifyAlreadyBestAP(Ap(u"Office", kBssid1)));
  EXPECT_FALSE(etw->NotifyAlreadyBestAP(Ap(u"Office", kBssid1)));
  EXPECT_TRUE(etw->NotifyAlreadyBestAP(Ap(u"Office", kBssid2)));
  EXPECT_EQ(config.numbers[u"BestCount2"], 2u);
  EXPECT_EQ(config.texts[u"BestNetwork"], u"Office [02-00-00-00-00-02] [Channel 36] [5Ghz]");
  EXPECT_EQ(config.texts[u"BestNetwork2"], config.texts[u"BestNetwork"]) << "under both names";
  etw->ResetBest();
  EXPECT_EQ(etw->GetBestNetworkText(), u"");
  EXPECT_TRUE(etw->NotifyAlreadyBestAP(Ap(u"Office", kBssid2)));
}

TEST_F(EtwTest, QualityIsToldAtEachChange) {
  Start(1);
  const auto bad = [&] { return etw->NotifySignalQualityBAD(u"Office", kBssid1, u"", 30); };
  const auto good = [&] { return etw->NotifySignalQualityGOOD(u"Office", kBssid1, u"", 90); };
  EXPECT_FALSE(etw->NotifyClearPreviousSignalQualityBAD()) << "no BAD was told";
  EXPECT_TRUE(bad());
  EXPECT_FALSE(bad());
  EXPECT_TRUE(etw->NotifyClearPreviousSignalQualityBAD());
  EXPECT_TRUE(etw->NotifyClearPreviousSignalQualityBAD()) << "until the reset";
  EXPECT_FALSE(bad()) << "clearing changes no record";
  EXPECT_TRUE(good());
  EXPECT_FALSE(good());
  EXPECT_TRUE(bad());
  EXPECT_EQ(config.numbers[u"QualityBadCount2"], 2u);
  EXPECT_EQ(config.numbers[u"QualityGoodCount2"], 1u);
  EXPECT_EQ(config.texts[u"QualityBadNetwork2"], u"Office");
  etw->ResetQualityBad();
  EXPECT_FALSE(etw->NotifyClearPreviousSignalQualityBAD());
  EXPECT_TRUE(bad());
  EXPECT_TRUE(good());
  etw->ResetQualityGood();
  EXPECT_TRUE(good());
}

TEST_F(EtwTest, ConnectionIsToldOnceAndItsEndOnce) {
  Start(0);
  const auto connected = [&](const WString& bssid) {
    return etw->APConnected(u"Office", bssid, 1, 2, 3, 4, u"a", u"b");
  };
  EXPECT_FALSE(etw->APDisconnected());
  EXPECT_TRUE(connected(kBssid1));
  EXPECT_FALSE(connected(kBssid1));
  EXPECT_TRUE(etw->APDisconnected());
  EXPECT_FALSE(etw->APDisconnected());
  EXPECT_FALSE(connected(kBssid1)) << "back to the pair told last";
  EXPECT_FALSE(etw->APDisconnected());
  EXPECT_TRUE(connected(kBssid2));
  EXPECT_TRUE(etw->APDisconnected());
  EXPECT_EQ(TakeNames().size(), 4u);
}

TEST_F(EtwTest, AStandingMismatchIsClosedBeforeTheNext) {
  Start(0);
  EXPECT_TRUE(etw->CapabilityMismatchAPBetter(Mismatch(kBssid1)));
  EXPECT_TRUE(HasLog("FAKE DISCONNECT CapabilityMismatchClearLast(), BEFORE new CAPS MISMATCH..."));
  EXPECT_TRUE(HasLog("NOTHING TO CLEAR!"));
  EXPECT_FALSE(etw->CapabilityMismatchAPBetter(Mismatch(kBssid1)));
  EXPECT_EQ(TakeNames(), Names{"TRELLIS_N_MISMATCH_AP_BETTER_NIC1"});
  EXPECT_TRUE(etw->CapabilityMismatchWifiBetter(Mismatch(kBssid1)));
  EXPECT_EQ(TakeNames(),
            (Names{"TRELLIS_N_MISMATCH_CLEAR1_NIC1", "TRELLIS_N_MISMATCH_WIFI_BETTER_NIC1"}));
  EXPECT_TRUE(etw->CapabilityMismatchClearLast(u"Office", kBssid2, u"x", u"y"));
  EXPECT_FALSE(etw->CapabilityMismatchClearLast(u"Office", kBssid2, u"x", u"y"));
  EXPECT_EQ(TakeNames(), Names{"TRELLIS_N_MISMATCH_CLEAR2_NIC1"});
}

TEST_F(EtwTest, ContentionIsRememberedForItsFakeEnd) {
  Start(0);
  EXPECT_FALSE(etw->ClearLastAPContentionNotification());
  EXPECT_FALSE(etw->IsContentionReported(u""))
      << "the first report is made even without contenders";
  etw->NotifyNoAPContention(u"Office", kBssid1, 36);
  EXPECT_TRUE(etw->IsContentionReported(u""));
  EXPECT_FALSE(etw->IsContentionReported(u"x[1]"));
  EXPECT_FALSE(etw->ClearLastAPContentionNotification()) << "nothing stands";
  EXPECT_FALSE(etw->IsContentionReported(u""));
  EXPECT_EQ(TakeNames(), Names{"TRELLIS_N_NO_WIFI_AP_CONTENTION_NIC1"});

  etw->NotifyAPContention(u"Office", kBssid1, 36, u"x[1(SQ 2)]", u"x[1]", u"x", u"1", u"2");
  EXPECT_TRUE(etw->IsContentionReported(u"x[1]"));
  EXPECT_TRUE(
      HasLog("[Adapter 0] Wifi contention for ssid Office, bssid 02-00-00-00-00-01, channel 36"));
  Take();
  EXPECT_TRUE(etw->ClearLastAPContentionNotification());
  EXPECT_FALSE(etw->ClearLastAPContentionNotification());
  const auto events = Take();
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].name, "TRELLIS_N_NO_WIFI_AP_CONTENTION_NIC1");
  EXPECT_EQ(events[0].Text("bssid"), kBssid1);
}

// ---- who listens

TEST_F(EtwTest, NothingIsWrittenBelowTheLevelButEverythingIsRemembered) {
  kernel.EventTrace().Listen(4);
  Start(0);
  EXPECT_TRUE(Suggest(u"Office", kBssid1));
  EXPECT_TRUE(Take().empty());
  EXPECT_EQ(config.numbers[u"SuggestCount"], 1u);
  kernel.EventTrace().Listen(5);
  EXPECT_FALSE(Suggest(u"Office", kBssid1)) << "it was said, as far as the reporter knows";
  EXPECT_TRUE(Suggest(u"Home", kBssid1));
  EXPECT_EQ(Take().size(), 1u);
  kernel.EventTrace().Control(platform::EVENT_CONTROL_CODE_CAPTURE_STATE, 0);
  EXPECT_TRUE(Suggest(u"Second", kBssid1));
  EXPECT_EQ(Take().size(), 1u) << "a question for the state ended the listening";
  kernel.EventTrace().Control(platform::EVENT_CONTROL_CODE_ENABLE_PROVIDER, 0);
  EXPECT_TRUE(etw->NotifyNoAPContention(u"Office", kBssid1, 36));
  EXPECT_EQ(Take().size(), 1u) << "level 0 is all levels";
  kernel.EventTrace().Listen(0);
  EXPECT_TRUE(Suggest(u"Third", kBssid1));
  kernel.EventTrace().Listen(5);
  EXPECT_TRUE(Take().empty());
}

TEST_F(EtwTest, AThirdAdapterCountsAndSendsNothing) {
  Start(2);
  EXPECT_TRUE(Suggest(u"Office", kBssid1));
  EXPECT_TRUE(etw->APConnected(u"Office", kBssid1, 1, 2, 3, 4, u"a", u"b"));
  EXPECT_TRUE(etw->CapabilityMismatchAPBetter(Mismatch(kBssid1)));
  EXPECT_EQ(config.numbers[u"SuggestCount"], 1u);
  EXPECT_TRUE(HasLog("INVALID m_ConfigIdx=2"));
  EXPECT_TRUE(Take().empty());
}

TEST_F(EtwTest, WithoutARegistrationNothingHappensAtAll) {
  kernel.Faults().FailCall("EventRegister", 1, 5);
  Start(0);
  EXPECT_TRUE(HasLog("EventRegister() failed 0x80070005"));
  config.numbers.clear();
  EXPECT_FALSE(Suggest(u"Office", kBssid1));
  EXPECT_TRUE(
      HasLog("[0]CEtwTrellis::SuggestAP: HANDLE IS NULL! FAILED to suggest: ssid=Office, "
             "bssid=02-00-00-00-00-01"));
  EXPECT_FALSE(etw->NotifyAlreadyBestAP(Ap(u"Office", kBssid1)));
  EXPECT_FALSE(etw->NotifySignalQualityBAD(u"Office", kBssid1, u"", 3));
  EXPECT_FALSE(etw->APConnected(u"Office", kBssid1, 1, 2, 3, 4, u"a", u"b"));
  EXPECT_FALSE(etw->CapabilityMismatchWifiBetter(Mismatch(kBssid1)));
  EXPECT_FALSE(etw->CapabilityMismatchClearLast(u"Office", kBssid1, u"ax", u"ac"));
  EXPECT_TRUE(HasLog("CapabilityMismatchClearLast: HANDLE IS NULL!"));
  EXPECT_FALSE(etw->NotifyNoAPContention(u"Office", kBssid1, 36));
  EXPECT_FALSE(etw->GetMemo().HasNetwork(u"Office"));
  EXPECT_TRUE(config.numbers.empty());
  EXPECT_FALSE(etw->IsContentionReported(u""));
}

TEST_F(EtwTest, AllReportersShareOneRegistration) {
  Start(0);
  {
    CEtwTrellis second;
    second.Start(1, &config, u"{2}", u"", u"");
    EXPECT_EQ(kernel.EventTrace().OpenHandles(), 1u);
    etw.reset();
    second.SuggestAP(Ap(u"Office", kBssid1), 5, 50, u"", u"");
    EXPECT_EQ(TakeNames(), Names{"TRELLIS_N_SUGGEST_AP_2"})
        << "the other one's end does not cut it off";
  }
  EXPECT_EQ(kernel.EventTrace().OpenHandles(), 0u);
  Start(0);
  EXPECT_TRUE(Suggest(u"Office", kBssid1));
  EXPECT_EQ(Take().size(), 1u) << "a later pass registers anew";
}

class Listener : public SmartObjEx<Listener, SmartObj<>>, public INotificationProvider {
 public:
  void SendNotification(CNotificationEvent* event) override {
    lines.push_back(WideToUtf8(event->GetJson()));
  }
  std::vector<std::string> lines;
};

TEST_F(EtwTest, TheOemSuiteHearsOfSuggestionsAndUpgrades) {
  config.optimizer = true;
  auto& manager = CNotificationManagerSingleton::GetInstance();
  const auto listener = Listener::CreateObject();
  manager.AddProvider(listener.get());
  manager.BeginThread();
  Start(0);
  Suggest(u"A", kBssid1);
  etw->CapabilityMismatchAPBetter(Mismatch(kBssid1));
  etw->CapabilityMismatchWifiBetter(Mismatch(kBssid2));
  RunFor(1s);
  manager.Shutdown(1000);
  ASSERT_EQ(listener->lines.size(), 3u);
  EXPECT_NE(listener->lines[0].find(R"("evtCategory":"Suggestion", "evtType":"AP")"),
            std::string::npos);
  EXPECT_NE(listener->lines[0].find(
                R"("evtData1":"\u0041", "evtData2":"new", "evtData3":"old", "evtData4":"{guid}", )"
                R"("evtData5":"Radio 7 of the registry")"),
            std::string::npos);
  EXPECT_NE(listener->lines[1].find(R"("evtCategory":"Hardware", "evtType":"UpgradeAdapter")"),
            std::string::npos);
  EXPECT_NE(listener->lines[1].find(
                R"("evtData1":"{guid},Radio 7", )"
                R"("evtData2":"02-00-00-00-00-01,\u004F\u0066\u0066\u0069\u0063\u0065", )"
                R"("evtData3":"33", "evtData4":"300,200", "evtData5":"802.11ax,802.11n")"),
            std::string::npos);
  EXPECT_NE(listener->lines[2].find(R"("evtType":"UpgradeAP")"), std::string::npos);
}

TEST_F(ReportTest, FaultInUnregisteringTheProviderEndsThere) {
  struct FaultyTrace : platform::EventTraceApi {
    platform::ULONG EventRegister(const platform::GUID*, EnableCallback, void*,
                                  platform::REGHANDLE* handle) override {
      return *handle = 1, platform::ERROR_SUCCESS;
    }
    platform::ULONG EventUnregister(platform::REGHANDLE) override {
      throw platform::PlatformFault{platform::sim::FaultPlan::kFault};
    }
  };
  Install<FaultyTrace>();
  platform::HRESULT status = platform::E_FAIL;
  auto provider = CTrellisProvider::Share(&status);
  ASSERT_TRUE(provider);
  CTrellisProvider::Leave(&provider);
  EXPECT_TRUE(HasLog("CTrellisProvider::EventUnregister: __EXCEPTION__"));
}

}  // namespace
}  // namespace corvane::test
