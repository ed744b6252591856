#include <cmath>
#include <map>

#include "log/log.h"
#include "monitors/bluetooth_monitor_singleton.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_files.h"
#include "platform/sim/kernel/sim_registry.h"
#include "support/pc_fixture.h"

namespace corvane::test {

using platform::DWORD;
using platform::PDH_STATUS;
using platform::sim::FaultPlan;

namespace {

constexpr char16_t kClass[] =
    u"SYSTEM\\CurrentControlSet\\Control\\Class\\{e0cbf06c-cd8b-4647-bb8a-263b43f0f974}";

// Counters by their paths, in bytes a second; a negative one can't be read.
class RadioCounters : public platform::PerfCounterApi {
 public:
  PDH_STATUS PdhOpenQueryW(platform::LPCWSTR, std::uintptr_t,
                           platform::PDH_HQUERY* query) override {
    if (Fails("PdhOpenQueryW")) return 1;
    ++open;
    *query = this;
    return 0;
  }
  PDH_STATUS PdhAddCounterW(platform::PDH_HQUERY, platform::LPCWSTR path, std::uintptr_t,
                            platform::PDH_HCOUNTER* counter) override {
    const std::string text = Narrow(path);
    if (Fails("PdhAddCounterW") || text == missing) return 1;
    ++open;
    paths.push_back(text);
    *counter = &values[text];
    return 0;
  }
  PDH_STATUS PdhCollectQueryData(platform::PDH_HQUERY) override {
    ++collections;
    return Fails("PdhCollectQueryData") ? collectStatus : 0;
  }
  PDH_STATUS PdhGetFormattedCounterValue(platform::PDH_HCOUNTER counter, DWORD format, DWORD*,
                                         platform::PDH_FMT_COUNTERVALUE* value) override {
    EXPECT_EQ(format, 0x1200u);
    value->doubleValue = *static_cast<double*>(counter);
    return Fails("PdhGetFormattedCounterValue") || value->doubleValue < 0 ? 1 : 0;
  }
  PDH_STATUS PdhRemoveCounter(platform::PDH_HCOUNTER) override {
    --open;
    return Fails("PdhRemoveCounter") ? 1 : 0;
  }
  PDH_STATUS PdhCloseQuery(platform::PDH_HQUERY) override {
    --open;
    return Fails("PdhCloseQuery") ? 1 : 0;
  }
  bool Fails(const std::string& operation) const {
    if (operation == failing && faults) throw platform::PlatformFault{0xC0000005};
    return operation == failing;
  }

  std::map<std::string, double> values;
  std::vector<std::string> paths;
  std::string missing, failing;
  bool faults = false;
  PDH_STATUS collectStatus = 1;
  int open = 0, collections = 0;
};

}  // namespace

class BluetoothTest : public KernelTest {
 protected:
  BluetoothTest() : pdh(Install<RadioCounters>()) {}
  void TearDown() override {
    KernelTest::TearDown();
    EXPECT_EQ(pdh.open, 0) << "counters and queries";
  }
  static CBluetoothMonitorSingleton& Monitor() { return CBluetoothMonitorSingleton::GetInstance(); }

  void Device(const std::u16string& subkey, std::u16string_view description) {
    kernel.Registry().SetText(std::u16string(kClass) + u"\\" + subkey, u"DriverDesc", description);
  }
  void StartLog() {
    kernel.Files().MakeDirectories(u"/data");
    StartLogger("/data/bt");
  }
  static std::string Count(bool verbose = false) {
    std::list<WString> found{u"earlier"};
    const auto count = CBluetoothMonitorSingleton::CountBTAdaptersInRegistry(&found, verbose);
    std::string names = std::to_string(count) + ":";
    for (const WString& name : found) names += " " + WideToUtf8(name);
    return names;
  }
  void Poll(std::chrono::milliseconds later = 2000ms) {
    RunFor(later);
    Monitor().Poll();
  }
  std::uint64_t Left() {
    const std::uint64_t end = Monitor().GetActivityEndTick(), now = Os().clock.GetTickCount64();
    return end > now ? end - now : 0;
  }
  bool Printed(const std::string& text) {
    return kernel.Console().Text().find(text) != std::string::npos;
  }

  RadioCounters& pdh;
};

TEST_F(BluetoothTest, CountsWhatIsNoEnumeratorProtocolOrDevice) {
  EXPECT_EQ(Count(), "0:") << "no class key";
  kernel.Registry().SetDword(kClass, u"Flags", 1);
  EXPECT_EQ(Count(), "0:") << "no subkey";
  Device(u"0000", u"Intel(R) Wireless Bluetooth(R)");
  Device(u"0001", u"Microsoft Bluetooth Enumerator");
  Device(u"0002", u"Bluetooth Device (RFCOMM Protocol TDI)");
  Device(u"0003", u"Phone AVRCP Transport Protocol");
  Device(u"0004", u"Microsoft Bluetooth LE Enumerator");
  Device(u"0005", u"usb enum device protocol radio");
  Device(u"0006", u"");
  kernel.Registry().SetDword(std::u16string(kClass) + u"\\0007", u"DriverDesc", 7);
  kernel.Registry().SetDword(std::u16string(kClass) + u"\\Properties", u"Flags", 7);
  EXPECT_EQ(Count(), "3: Intel(R) Wireless Bluetooth(R) usb enum device protocol radio ");
}

TEST_F(BluetoothTest, PassesOverASubkeyThatTheRegistryRefuses) {
  StartLog();
  Device(u"0000", u"First");
  Device(u"0001", u"Second");
  Device(u"Properties", u"Third");
  struct Case {
    const char* operation;
    std::uint64_t call;
    const char* left;
    const char* printed;
  };
  const Case cases[] = {
      {"RegOpenKeyExW", 1, "0:", ""},
      {"RegQueryInfoKeyW", 1, "0:", ""},
      {"RegEnumKeyExW", 2, "2: First Third", ""},
      {"RegOpenKeyExW", 2, "2: Second Third", "RegOpenKeyEx(hKey, 0000,...) failed"},
      {"RegOpenKeyExW", 4, "2: First Second", ""},
      {"RegQueryValueExW", 2, "2: First Third",
       "RegQueryValueEx(hSubKey, 'DriverDesc',...) failed"},
  };
  for (const DWORD code : {platform::ERROR_ACCESS_DENIED, FaultPlan::kFault}) {
    for (const Case& one : cases) {
      kernel.Faults().FailCall(one.operation, one.call, code);
      EXPECT_EQ(Count(), one.left) << one.operation << " " << one.call;
      kernel.Faults().Clear();
      EXPECT_TRUE(Printed(one.printed)) << one.operation;
    }
  }
  EXPECT_FALSE(Printed("RegOpenKeyEx(hKey, Properties")) << "it is passed over without a word";
}

TEST_F(BluetoothTest, WithoutAnAdapterNothingIsAskedOf) {
  Monitor().InitPDHCounters();
  Poll();
  EXPECT_EQ(pdh.collections, 0);
  EXPECT_EQ(Monitor().GetActivityEndTick(), 0u);
  EXPECT_FALSE(Monitor().AdapterCountChanged());
}

TEST_F(BluetoothTest, TrafficAtOnePollLastsThirtySeconds) {
  StartLog();
  Device(u"0000", u"Radio (R) 5");
  Monitor().InitPDHCounters();
  ASSERT_EQ(pdh.paths.size(), 6u);
  EXPECT_EQ(pdh.paths[0], "\\Bluetooth Radio(Radio (R) 5)\\Classic ACL bytes read/sec");
  EXPECT_EQ(pdh.collections, 1) << "the first of the two samples that a rate takes";
  Poll(500ms);
  EXPECT_EQ(pdh.collections, 1) << "too early";
  Poll(1ms);
  EXPECT_EQ(pdh.collections, 2);
  EXPECT_EQ(Left(), 0u);
  const auto logged = [](const char* text) {
    return GetMemoryLog().find(text) != std::string::npos;
  };
  pdh.values[pdh.paths[5]] = 40.0;  // the last counter alone
  Poll();
  EXPECT_EQ(Left(), 30'000u);
  EXPECT_TRUE(logged("Bluetooth Activity detected."));
  pdh.values[pdh.paths[5]] = 0.0;
  Poll(29'999ms);
  EXPECT_EQ(Left(), 1u);
  EXPECT_FALSE(logged("Bluetooth Activity ended."));
  Poll();
  EXPECT_TRUE(logged("Bluetooth Activity ended."));
  for (const double unreadable : {-1.0, std::nan(""), HUGE_VAL}) {
    pdh.values[pdh.paths[0]] = unreadable;
    Poll();
    EXPECT_EQ(Left(), 0u) << unreadable;
  }
}

// A poll that finds the period over and traffic in a later counter tells both.
TEST_F(BluetoothTest, ALateCounterBeginsANewPeriodInTheSamePoll) {
  StartLog();
  Device(u"0000", u"Radio");
  Monitor().InitPDHCounters();
  pdh.values[pdh.paths[3]] = 1.0;
  Poll();
  Poll(31s);
  const std::string log = GetMemoryLog();
  const std::size_t ended = log.find("Bluetooth Activity ended.");
  ASSERT_NE(ended, log.npos);
  EXPECT_LT(log.find("Bluetooth Activity detected."), ended);
  EXPECT_NE(log.find("Bluetooth Activity detected.", ended), log.npos);
  EXPECT_EQ(Left(), 30'000u);
}

TEST_F(BluetoothTest, ARestartCountsAnewAndKeepsThePeriod) {
  Device(u"0000", u"Radio");
  Monitor().InitPDHCounters();
  pdh.values[pdh.paths[0]] = 8.0;
  Poll();
  Device(u"0001", u"Dongle");
  EXPECT_TRUE(Monitor().AdapterCountChanged());
  Monitor().ClosePDHCounters();
  EXPECT_EQ(pdh.open, 0);
  EXPECT_EQ(Left(), 30'000u);
  Monitor().InitPDHCounters();
  EXPECT_FALSE(Monitor().AdapterCountChanged());
  EXPECT_EQ(pdh.open, 1 + 12);
  EXPECT_EQ(Left(), 30'000u);
  Device(u"0000", u"Bluetooth Device");
  EXPECT_TRUE(Monitor().AdapterCountChanged());
}

TEST_F(BluetoothTest, CountersThatFailCostTheirTrafficOnly) {
  Device(u"0000", u"Radio");
  for (const bool faults : {false, true}) {
    pdh.faults = faults;
    for (const char* operation : {"PdhOpenQueryW", "PdhAddCounterW", "PdhCollectQueryData",
                                  "PdhGetFormattedCounterValue"}) {
      pdh.failing = operation;
      Monitor().InitPDHCounters();
      for (auto& [path, value] : pdh.values) value = 8.0;
      Poll();
      EXPECT_EQ(Left(), 0u) << operation;
    }
  }
  for (const auto& [status, text] :
       {std::pair(static_cast<PDH_STATUS>(0x800007D5), "rc=0x800007d5[PDH_NO_DATA]"),
        std::pair(PDH_STATUS{1}, "rc=0x00000001\n")}) {
    pdh.failing = "PdhCollectQueryData", pdh.faults = false, pdh.collectStatus = status;
    StartLog();
    Monitor().InitPDHCounters();
    EXPECT_TRUE(Printed(text)) << text;
    StopLogger();
  }
  pdh.failing.clear();
  pdh.missing = "\\Bluetooth Radio(Radio)\\LE ACL bytes read/sec";
  Monitor().InitPDHCounters();
  EXPECT_EQ(pdh.open, 1 + 5) << "the others go on";
  Poll();
  EXPECT_EQ(Left(), 30'000u);
  for (const char* operation : {"PdhRemoveCounter", "PdhCloseQuery"}) {
    Monitor().InitPDHCounters();
    pdh.failing = operation;
    Monitor().ClosePDHCounters();
    EXPECT_EQ(pdh.open, 0) << operation;
  }
}

}  // namespace corvane::test
