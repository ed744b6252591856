#pragma once
#include <gtest/gtest.h>

#include "foundation/log_lines.h"
#include "foundation/singleton.h"
#include "foundation/smart_obj.h"
#include "support/basic_platform.h"

namespace corvane::test {

// A test on a BasicPlatform of its own, with the gates at their defaults. Afterwards no object,
// handle, lock or open file may be left.
class PlatformTest : public testing::Test {
 protected:
  PlatformTest() {
    g_DebugMask = kDefaultDebugMask;
    g_DebugIFMask = kDefaultDebugIFMask;
    g_EnableFileLogging = 1;
  }
  void TearDown() override {
    singletons::DropAll();
    os.threads.JoinAll();
    EXPECT_EQ(LiveObjectCount(), 0u);
    EXPECT_EQ(live_objects::Size(), 0u);
    EXPECT_EQ(os.threads.OpenHandles(), 0u);
    EXPECT_EQ(os.threads.OpenSections(), 0);
    EXPECT_EQ(os.files.OpenFiles(), 0);
  }

  BasicPlatform os;
};

}  // namespace corvane::test
