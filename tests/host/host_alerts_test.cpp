#include "platform/linux/host_alerts.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace corvane::test {

using namespace platform::linux_host;

TEST(HostAlerts, DoesNotSleepForAMomentThatHasPassed) {
  HostAlerts alerts;
  std::thread waker([&alerts] {
    std::this_thread::sleep_for(std::chrono::seconds(1));
    alerts.Wake();
  });
  const auto start = HostTime::RealClock::now();
  for (const auto moment :
       {HostTime::RealClock::time_point::min(), HostTime::RealClock::time_point(), start}) {
    EXPECT_TRUE(alerts.Poll(moment).empty());
  }
  EXPECT_LT(HostTime::RealClock::now() - start, std::chrono::milliseconds(500));
  waker.join();
}

}  // namespace corvane::test
