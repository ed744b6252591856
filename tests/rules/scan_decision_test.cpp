#include "rules/scan_decision.h"

#include <gtest/gtest.h>

#include <vector>

namespace corvane {
namespace {

// A connected adapter with a short interval that has just passed, idle, nothing asked for.
ScanInputs Due() {
  ScanInputs in;
  in.connected = true;
  in.deltaMs = 12000;
  in.intervalSecs = 10;
  in.mainLoopSleepMs = 10000;
  in.gateLow = 0.04;
  in.gateHigh = 0.06;
  return in;
}

struct Case {
  const char* name;
  ScanRule rule;
  void (*change)(ScanInputs&);
};

TEST(ScanDecision, FirstRuleThatAppliesDecides) {
  const Case cases[] = {
      {"idle", ScanRule::kIdle, [](ScanInputs&) {}},
      {"rate at the low gate is not idle", ScanRule::kTraffic,
       [](ScanInputs& in) { in.rate = 0.04; }},
      {"user-led scans: connected and idle does not scan", ScanRule::kTraffic,
       [](ScanInputs& in) { in.ulScan = true; }},
      {"disconnected scans whatever the traffic", ScanRule::kDisconnected,
       [](ScanInputs& in) { in.connected = false, in.rate = 9.0, in.ulScan = true; }},
      {"disconnected waits for the interval", ScanRule::kTooEarly,
       [](ScanInputs& in) { in.connected = false, in.deltaMs = 9999; }},
      {"the interval itself is enough", ScanRule::kIdle,
       [](ScanInputs& in) { in.deltaMs = 10000; }},
      {"forced inside the interval and under load", ScanRule::kForced,
       [](ScanInputs& in) { in.force_scan = true, in.deltaMs = 1, in.rate = 9.0; }},
      {"counter scans before the interval", ScanRule::kForcedCount,
       [](ScanInputs& in) { in.forceCounter = 1, in.intervalSecs = 300; }},
      {"counter waits for the sleep", ScanRule::kTooEarly,
       [](ScanInputs& in) { in.forceCounter = 1, in.intervalSecs = 300, in.deltaMs = 9999; }},
      {"counter waits for idleness", ScanRule::kTooEarly,
       [](ScanInputs& in) { in.forceCounter = 1, in.intervalSecs = 300, in.rate = 0.05; }},
      {"counter is not for user-led scans", ScanRule::kTooEarly,
       [](ScanInputs& in) { in.forceCounter = 1, in.intervalSecs = 300, in.ulScan = true; }},
      {"counter goes before a force, so that it falls", ScanRule::kForcedCount,
       [](ScanInputs& in) { in.forceCounter = 2, in.force_scan = true; }},
      {"three deferrals and almost idle", ScanRule::kDeferrals,
       [](ScanInputs& in) { in.deferrals = 3, in.rate = 0.05, in.deltaMs = 1; }},
      {"two deferrals are too few", ScanRule::kTraffic,
       [](ScanInputs& in) { in.deferrals = 2, in.rate = 0.05; }},
      {"deferrals under real traffic", ScanRule::kTraffic,
       [](ScanInputs& in) { in.deferrals = 9, in.rate = 0.06; }},
      {"30 seconds is a short interval", ScanRule::kDeferrals,
       [](ScanInputs& in) {
         in.deferrals = 3, in.intervalSecs = 30, in.rate = 0.05, in.deltaMs = 90000;
       }},
      {"31 seconds is a long one: held back until 60 more have passed", ScanRule::kTraffic,
       [](ScanInputs& in) {
         in.deferrals = 3, in.intervalSecs = 31, in.rate = 0.05, in.deltaMs = 90999;
       }},
      {"31 seconds and 60 more", ScanRule::kLongHeldBack,
       [](ScanInputs& in) { in.intervalSecs = 31, in.rate = 0.05, in.deltaMs = 91000; }},
      {"long interval at 320 of 360 seconds", ScanRule::kTraffic,
       [](ScanInputs& in) { in.intervalSecs = 300, in.rate = 0.05, in.deltaMs = 320000; }},
      {"long interval at 360 seconds", ScanRule::kLongHeldBack,
       [](ScanInputs& in) { in.intervalSecs = 300, in.rate = 0.05, in.deltaMs = 360000; }},
      {"long interval under real traffic never", ScanRule::kTraffic,
       [](ScanInputs& in) { in.intervalSecs = 300, in.rate = 0.06, in.deltaMs = 3600000; }},
      {"user-led scans when held back for long", ScanRule::kLongHeldBack,
       [](ScanInputs& in) { in.intervalSecs = 300, in.ulScan = true, in.deltaMs = 360000; }},
  };
  for (const Case& one : cases) {
    ScanInputs in = Due();
    one.change(in);
    EXPECT_EQ(DecideScan(in).rule, one.rule) << one.name;
  }
}

TEST(ScanDecision, BusyRoundBeforeVetoesIdleness) {
  const std::vector<double> busy = {0.0, 0.04}, quiet = {0.0, 0.039};
  ScanInputs in = Due();
  in.previousRates = busy;
  EXPECT_EQ(DecideScan(in).rule, ScanRule::kTraffic);
  EXPECT_TRUE(DecideScan(in).idleVetoed);
  in.previousRates = quiet;
  EXPECT_EQ(DecideScan(in).rule, ScanRule::kIdle);
  // The almost idle test knows no history.
  in.previousRates = busy;
  in.deferrals = 3;
  EXPECT_EQ(DecideScan(in).rule, ScanRule::kDeferrals);
}

TEST(ScanDecision, OnlyShortIntervalsCountDeferrals) {
  ScanInputs in = Due();
  in.rate = 1.5;
  in.deltaMs = 60000;
  for (const std::uint32_t interval : {10u, 30u}) {
    in.intervalSecs = interval;
    EXPECT_TRUE(DecideScan(in).countsDeferral) << interval;
  }
  in.intervalSecs = 31;
  EXPECT_EQ(DecideScan(in).rule, ScanRule::kTraffic);
  EXPECT_FALSE(DecideScan(in).countsDeferral);
}

}  // namespace
}  // namespace corvane
