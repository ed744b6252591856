// A PC that sleeps, is carried elsewhere and wakes: from the window that hears of it to the
// connection made anew.

#include "platform/sim/kernel/fault_plan.h"
#include "scenario/service_fixture.h"

namespace corvane::test {

class SleepScenario : public ServiceTest {
 protected:
  // On access point 1 of "Office" until the lid is closed; access point 2 is all that is heard
  // where it is opened. No scan is due, and the system connects nothing by itself.
  static WorldBuilder CarriedAsleep() {
    WorldBuilder world;
    world.Adapter()
        .Ap(OfficeBeacon(36), 1, -55.0)
        .Signal({{0, -55.0}, {70'000, -55.0}, {70'001, -95.0}})
        .Ap(OfficeBeacon(149), 2, -95.0)
        .Signal(HeardFrom(70'000, -50.0))
        .Profile("Office")
        .Network("Office", 1)
        .Connected(1)
        .AutoSwitch(300);
    world->adapters[0].autoConnect = false;
    return world.At(60'000, R"({"do": "suspend"})").At(90'000, R"({"do": "resume"})");
  }
  static constexpr char kSuspend[] = "_POWER SUSPEND_";
  static constexpr char kResume[] = "_POWER RESUME_ --> force_scan";
};

TEST_F(SleepScenario, WakesElsewhereAndConnectsToWhatIsThere) {
  Start(CarriedAsleep());
  RunUntil(59'000);
  ASSERT_TRUE(IsOn(1));
  EXPECT_FALSE(Printed(kSuspend));
  RunUntil(89'000);
  EXPECT_TRUE(Printed(kSuspend));
  EXPECT_FALSE(Printed(kResume));
  EXPECT_EQ(ConnectedBssid(), "");
  RunUntil(103'000);
  EXPECT_TRUE(Printed(kResume));
  EXPECT_GE(Count(AirEvent::kScanStarted, 90'000), 1u) << "nobody looks around after waking";
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 60s));
  EXPECT_EQ(Count(AirEvent::kConnected, 90'000), 1u);
}

// The window is the only way by which a worker hears of it; whoever hears nothing finds its way by
// the ordinary rounds.
TEST_F(SleepScenario, GoesOnWithoutTheNewsOfSleep) {
  Start(CarriedAsleep());
  Pc().Faults().FailAlways("RegisterSuspendResumeNotification", platform::ERROR_GEN_FAILURE);
  RunUntil(110'000);
  EXPECT_FALSE(Printed(kSuspend));
  EXPECT_FALSE(Printed(kResume));
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 300s));
}

}  // namespace corvane::test
