#include "monitors/interface_pdh.h"

#include <cmath>
#include <cstring>
#include <map>

#include "support/pc_fixture.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;
using platform::DWORD;
using platform::PDH_STATUS;

class OneAdapter : public platform::IpHelperApi {
 public:
  DWORD GetIfTable(platform::MIB_IFTABLE* table, platform::ULONG* size, platform::BOOL) override {
    if (*size < sizeof(*table)) return platform::ERROR_INSUFFICIENT_BUFFER;
    table->dwNumEntries = 1;
    platform::MIB_IFROW& row = table->table[0];
    row.dwIndex = 7;
    row.dwDescrLen = static_cast<DWORD>(description.size());
    std::memcpy(row.bDescr, description.data(), description.size());
    return platform::ERROR_SUCCESS;
  }
  std::string description = "Wireless (2) #3";
};

// Counters by the part of their path behind the last backslash.
class Counters : public platform::PerfCounterApi {
 public:
  PDH_STATUS PdhOpenQueryW(platform::LPCWSTR, std::uintptr_t,
                           platform::PDH_HQUERY* query) override {
    if (failOpen) return 1;
    ++open;
    *query = this;
    return 0;
  }
  PDH_STATUS PdhAddCounterW(platform::PDH_HQUERY, platform::LPCWSTR path, std::uintptr_t,
                            platform::PDH_HCOUNTER* counter) override {
    const std::string text = Narrow(path);
    paths.push_back(text);
    const std::string name = text.substr(text.rfind('\\') + 1);
    if (missing == name) return 1;
    ++open;
    *counter = &values[name];
    return 0;
  }
  PDH_STATUS PdhCollectQueryData(platform::PDH_HQUERY) override {
    ++collections;
    if (fault) throw platform::PlatformFault{0xC0000005};
    return failCollect ? 1 : 0;
  }
  PDH_STATUS PdhGetFormattedCounterValue(platform::PDH_HCOUNTER counter, DWORD format, DWORD*,
                                         platform::PDH_FMT_COUNTERVALUE* value) override {
    EXPECT_EQ(format, 0x1200u);
    value->doubleValue = *static_cast<double*>(counter);
    return value->doubleValue < 0 ? 1 : 0;  // a negative value can't be read
  }
  PDH_STATUS PdhRemoveCounter(platform::PDH_HCOUNTER) override { return GiveBack(); }
  PDH_STATUS PdhCloseQuery(platform::PDH_HQUERY) override { return GiveBack(); }
  PDH_STATUS GiveBack() {
    --open;
    if (faultInClose) throw platform::PlatformFault{0xC0000005};
    return 0;
  }

  std::map<std::string, double> values;
  std::vector<std::string> paths;
  std::string missing;
  bool failOpen = false, failCollect = false, fault = false, faultInClose = false;
  int open = 0, collections = 0;
};

class InterfacePdh : public test::KernelTest {
 protected:
  InterfacePdh() : adapter(Install<OneAdapter>()), pdh(Install<Counters>()) {}
  void TearDown() override {
    traffic.reset();
    EXPECT_EQ(pdh.open, 0) << "counters and queries";
    KernelTest::TearDown();
  }

  bool Open() {
    traffic = CInterfacePDH::CreateObject();
    return traffic->Initialize(7, 0, 0.06, 0.04);
  }
  void Send(double mbps) { pdh.values["Bytes Sent/sec"] = mbps * 125'000; }
  void Receive(double mbps) { pdh.values["Bytes Received/sec"] = mbps * 125'000; }
  void Poll(std::chrono::milliseconds later = 1000ms) {
    RunFor(later);
    traffic->PollPDHCollection();
  }

  OneAdapter& adapter;
  Counters& pdh;
  CSmartPointer<CInterfacePDH> traffic;
};

TEST_F(InterfacePdh, CounterPathsCarryTheCleanedDescription) {
  ASSERT_TRUE(Open());
  EXPECT_EQ(pdh.paths, (std::vector<std::string>{
                           "\\Network Adapter(Wireless [2] _3)\\Bytes Received/sec",
                           "\\Network Adapter(Wireless [2] _3)\\Bytes Sent/sec",
                           "\\Network Adapter(Wireless [2] _3)\\Packets Outbound Errors",
                           "\\Network Adapter(Wireless [2] _3)\\Packets Received Errors"}));
  EXPECT_EQ(pdh.collections, 1) << "the first of the two samples that a rate takes";
}

TEST_F(InterfacePdh, FaultWhileClosingLeavesTheRestToBeClosed) {
  ASSERT_TRUE(Open());
  pdh.faultInClose = true;
  traffic.reset();
  EXPECT_EQ(pdh.open, 0);
}

TEST_F(InterfacePdh, WithoutCountersTheRatesStayZero) {
  const auto opens = [&](std::uint32_t index) {
    traffic = CInterfacePDH::CreateObject();
    const bool opened = traffic->Initialize(index, 0, 0.06, 0.04);
    Send(50);
    Poll();
    return opened;
  };
  EXPECT_FALSE(opens(0xFFFFFFFF));
  EXPECT_FALSE(opens(8)) << "no such interface";
  pdh.failOpen = true;
  EXPECT_FALSE(opens(7));
  pdh.failOpen = false;
  pdh.failCollect = true;
  EXPECT_FALSE(opens(7));
  EXPECT_EQ(pdh.open, 0) << "all is closed at once";
  EXPECT_EQ(traffic->GetTxMbps(), 0.0);
  pdh.failCollect = false;
  pdh.fault = true;
  EXPECT_FALSE(opens(7));
  pdh.fault = false;
  pdh.missing = "Bytes Received/sec";
  EXPECT_FALSE(opens(7));
  EXPECT_EQ(traffic->GetTxMbps(), 0.0);
  pdh.missing = "Packets Outbound Errors";
  EXPECT_TRUE(opens(7)) << "works without one error count";
  EXPECT_EQ(traffic->GetTxMbps(), 50.0);
}

TEST_F(InterfacePdh, PollsAtMostOnceInHalfASecondAndKeepsWhatItCannotRead) {
  ASSERT_TRUE(Open());
  Send(1.0);
  Receive(8.0);
  Poll(500ms);
  EXPECT_EQ(traffic->GetTxMbps(), 0.0) << "too early";
  Poll(1ms);
  EXPECT_EQ(traffic->GetTxMbps(), 1.0);
  EXPECT_EQ(traffic->GetRxMbps(), 8.0);
  Receive(2.0);
  for (const double unreadable : {-1.0, std::nan(""), HUGE_VAL}) {
    Send(unreadable);
    Poll();
    EXPECT_EQ(traffic->GetTxMbps(), 1.0);
    EXPECT_EQ(traffic->GetRxMbps(), 2.0);
  }
  EXPECT_EQ(traffic->GetMaxRxMbps(), 8.0);
  Send(5.0);
  pdh.failCollect = true;
  Poll();
  pdh.fault = true;
  Poll();
  EXPECT_EQ(traffic->GetTxMbps(), 1.0);
}

TEST_F(InterfacePdh, ErrorRatesRiseAndNeverFallBelowZero) {
  ASSERT_TRUE(Open());
  pdh.values["Packets Outbound Errors"] = 10;
  pdh.values["Packets Received Errors"] = 3;
  Poll(2s);
  EXPECT_EQ(traffic->GetTxErrors(), 10.0);
  EXPECT_EQ(traffic->GetTxErrorsPerSec(), 5.0);
  EXPECT_EQ(traffic->GetRxErrorsPerSec(), 1.5);
  pdh.values["Packets Outbound Errors"] = 4;
  Poll(1s);
  EXPECT_EQ(traffic->GetTxErrorsPerSec(), 0.0);
  EXPECT_EQ(traffic->GetTxErrors(), 4.0) << "the lower value is the new start";
  pdh.values["Packets Outbound Errors"] = 6;
  Poll(1s);
  EXPECT_EQ(traffic->GetTxErrorsPerSec(), 2.0);
}

TEST_F(InterfacePdh, OnlyATrickleIsSampled) {
  ASSERT_TRUE(Open());
  for (const double mbps : {0.0, 0.1, 5.0}) {
    Send(mbps);
    Poll();
  }
  EXPECT_EQ(traffic->GetIdleSecs(), 0.0);
  EXPECT_EQ(traffic->GetPercentAboveLow(), 0.0);

  // The plain mean of the first nine samples.
  double sum = 0.0;
  for (int i = 1; i <= 9; ++i) {
    Send(0.01 * i);
    sum += 0.01 * i;
    Poll();
    EXPECT_NEAR(traffic->GetIdleMean(), sum / i, 1e-12) << i;
  }
  EXPECT_EQ(traffic->GetIdleSecs(), 8.0);
  EXPECT_NEAR(traffic->GetPercentAboveLow(), 500.0 / 9, 1e-9)
      << "0.05 to 0.09; 0.04 itself is not above";
  // From then on a new sample weighs a tenth.
  Send(0.01);
  Receive(0.01);
  Poll();
  EXPECT_NEAR(traffic->GetIdleMean(), 0.9 * 0.05 + 0.1 * 0.02, 1e-12);
}

TEST_F(InterfacePdh, AResetForgetsTheConnectionAndKeepsTheRates) {
  ASSERT_TRUE(Open());
  Send(0.05);
  pdh.values["Packets Outbound Errors"] = 2;
  Poll();
  traffic->SetIdleSettled(true);
  traffic->ResetIdleMeasure(0.06, 0.05);
  EXPECT_EQ(traffic->GetIdleMean(), 0.0);
  EXPECT_EQ(traffic->GetIdleSecs(), 0.0);
  EXPECT_EQ(traffic->GetMaxTxMbps(), 0.0);
  EXPECT_FALSE(traffic->IsIdleSettled());
  EXPECT_EQ(traffic->GetTxMbps(), 0.05);
  EXPECT_EQ(traffic->GetTxErrors(), 2.0);
  Poll();
  EXPECT_EQ(traffic->GetIdleMean(), 0.05);
  EXPECT_EQ(traffic->GetPercentAboveLow(), 0.0) << "the gate of the reset counts";
}

}  // namespace
}  // namespace corvane
