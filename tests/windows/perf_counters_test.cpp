// Performance counters: each operation through a library's functions onto simulated counters.

#include "platform/windows/windows_perf_counters.h"
#include "windows/system_functions.h"

namespace corvane::test {

using platform::windows::SystemLibrary;
using platform::windows::WindowsPerfCounters;

namespace {

const SystemFunction kFunctions[] = {
    FunctionOf<&PerfCounterApi::PdhOpenQueryW, decltype(::PdhOpenQueryW)>("PdhOpenQueryW"),
    FunctionOf<&PerfCounterApi::PdhAddCounterW, decltype(::PdhAddEnglishCounterW)>(
        "PdhAddEnglishCounterW"),
    FunctionOf<&PerfCounterApi::PdhCollectQueryData, decltype(::PdhCollectQueryData)>(
        "PdhCollectQueryData"),
    FunctionOf<&PerfCounterApi::PdhGetFormattedCounterValue,
               decltype(::PdhGetFormattedCounterValue)>("PdhGetFormattedCounterValue"),
    FunctionOf<&PerfCounterApi::PdhRemoveCounter, decltype(::PdhRemoveCounter)>("PdhRemoveCounter"),
    FunctionOf<&PerfCounterApi::PdhCloseQuery, decltype(::PdhCloseQuery)>("PdhCloseQuery"),
};
const SystemLibrary kSimulated(+[](const char* name) { return FindIn(kFunctions, name); });

std::vector<Operation<PerfCounterApi>> Operations() {
  static PDH_HQUERY query;
  static PDH_HCOUNTER counter;
  static PDH_FMT_COUNTERVALUE value;
  return {
      {"PdhOpenQueryW", [](auto& it) { return it.PdhOpenQueryW(nullptr, 0, &query); }},
      {"PdhAddCounterW", [](auto& it) { return it.PdhAddCounterW(query, u"a", 0, &counter); }},
      {"PdhCollectQueryData", [](auto& it) { return it.PdhCollectQueryData(query); }},
      {"PdhGetFormattedCounterValue",
       [](auto& it) { return it.PdhGetFormattedCounterValue(counter, 0, nullptr, &value); }},
      {"PdhRemoveCounter", [](auto& it) { return it.PdhRemoveCounter(counter); }},
      {"PdhCloseQuery", [](auto& it) { return it.PdhCloseQuery(query); }},
  };
}

class WindowsPerfCountersTest : public SystemPcTest {
 protected:
  WindowsPerfCounters counters{kSimulated};
};

}  // namespace

TEST_F(WindowsPerfCountersTest, ARateComesThroughEachOfTheSystemsFunctions) {
  World world = TwoNetworks();
  world.adapters[0].connectedTo = Mac{2, 0, 0, 0, 1, 1};
  world.traffic = {{.adapter = 0, .span = {0, 60'000}, .inMbps = 8.0}};
  Start(world, {.perfCounters = &counters});
  PerfCounterApi& pdh = Os().perfCounters;
  PDH_HQUERY query = nullptr;
  PDH_HCOUNTER counter = nullptr, none = nullptr;
  ASSERT_EQ(pdh.PdhOpenQueryW(nullptr, 0, &query), 0);
  const std::u16string object = u"\\Network Adapter(Simulated Wireless [2] _3)\\";
  ASSERT_EQ(pdh.PdhAddCounterW(query, (object + u"Bytes Received/sec").c_str(), 0, &counter), 0);
  EXPECT_NE(pdh.PdhAddCounterW(query, (object + u"Luck").c_str(), 0, &none), 0);
  ASSERT_EQ(pdh.PdhCollectQueryData(query), 0);
  RunFor(10s);
  ASSERT_EQ(pdh.PdhCollectQueryData(query), 0);
  PDH_FMT_COUNTERVALUE value;
  DWORD type = 0;
  ASSERT_EQ(
      pdh.PdhGetFormattedCounterValue(counter, PDH_FMT_DOUBLE | PDH_FMT_NOSCALE, &type, &value), 0);
  EXPECT_EQ(value.CStatus, 0u);
  EXPECT_NEAR(value.doubleValue, 1'000'000.0, 0.5);
  EXPECT_EQ(pdh.PdhRemoveCounter(counter), 0);
  EXPECT_EQ(pdh.PdhCloseQuery(query), 0);
  for (const SystemFunction& function : kFunctions) EXPECT_GT(*function.calls, 0) << function.name;
}

TEST(WindowsPerfCounters, AFaultOrAMissingLibraryIsTheFailureOfOneOperation) {
  WindowsPerfCounters missing(kMissing), faulting(kFaulting);
  ExpectFailures<PerfCounterApi>(Operations(), missing, faulting);
}

// This machine's own counters, whatever they are: a query opens, and closes once.
TEST(WindowsPerfCounters, TheSystemsOwnLibraryAnswers) {
  WindowsPerfCounters pdh;
  PDH_HQUERY query = nullptr;
  ASSERT_EQ(pdh.PdhOpenQueryW(nullptr, 0, &query), 0);
  PDH_HCOUNTER counter = nullptr;
  ASSERT_EQ(pdh.PdhAddCounterW(query, u"\\System\\System Up Time", 0, &counter), 0);
  EXPECT_EQ(pdh.PdhCollectQueryData(query), 0);
  EXPECT_EQ(pdh.PdhRemoveCounter(counter), 0);
  EXPECT_EQ(pdh.PdhCloseQuery(query), 0);
  EXPECT_NE(pdh.PdhCloseQuery(query), 0);
}

}  // namespace corvane::test
