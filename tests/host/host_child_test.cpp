#include "platform/linux/host_child.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <thread>

namespace corvane::test {

using namespace platform;
using linux_host::HostChild;

namespace {

DWORD EndOf(HostChild& child) {
  DWORD exitCode = 0;
  for (int i = 0; i < 500 && !child.HasEnded(&exitCode); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return exitCode;
}

}  // namespace

TEST(HostChild, GivesBothOutputsAndItsExitCode) {
  const auto child = HostChild::Start("/bin/sh", {"-c", "echo out; echo err >&2; exit 7"});
  ASSERT_TRUE(child);
  EXPECT_EQ(EndOf(*child), 7u);
  EXPECT_EQ(child->Output(), "out\nerr\n");
  EXPECT_EQ(HostChild::Start("/no/such/program", {}), nullptr);
}

TEST(HostChild, OneThatHangsOrFloodsIsEnded) {
  const auto hanging = HostChild::Start("/bin/sh", {"-c", "echo half; exec sleep 100"});
  ASSERT_TRUE(hanging);
  DWORD exitCode = 0;
  EXPECT_FALSE(hanging->HasEnded(&exitCode));
  hanging->End();
  EXPECT_TRUE(hanging->HasEnded(&exitCode));
  EXPECT_EQ(exitCode, 128u + SIGKILL);
  const auto flooding = HostChild::Start("/bin/sh", {"-c", "exec cat /dev/zero"});
  ASSERT_TRUE(flooding);
  for (int i = 0; i < 500 && flooding->Output().size() < HostChild::kMaxOutput; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_EQ(flooding->Output().size(), HostChild::kMaxOutput);
}

}  // namespace corvane::test
