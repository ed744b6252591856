// The whole service on the host, started and stopped over and over.

#include <gtest/gtest.h>

#include <thread>

#include "any_host/temp_directory.h"
#include "foundation/smart_obj.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_console.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_host.h"
#include "platform/windows/windows_instance.h"
#include "platform/windows/windows_threads.h"
#include "service/service_main.h"
#include "support/source_dir.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;

namespace {

constexpr int kStarts = 10;
constexpr int kWarmUp = 3;  // what the system's libraries keep is theirs from then on
constexpr DWORD kRunMs = 2500;

DWORD OpenHandlesOfProcess() {
  ::DWORD count = 0;
  ::GetProcessHandleCount(::GetCurrentProcess(), &count);
  return count;
}

}  // namespace

TEST(WindowsService, StartsAndStopsTenTimesAndLeavesNothing) {
  const TempDirectory directory;
  const WindowsOptions options{.home = directory.Path(),
                               .worldFile = SourceDir() + "/worlds/home.json"};
  DWORD handles = 0;
  std::size_t ofDevices = 0;
  for (int start = 0; start < kStarts; ++start) {
    int exitCode = -1;
    {
      WindowsHost host(options);
      EXPECT_THROW(WindowsHost{options}, WindowsError);  // one instance at a time
      std::thread service([&] {
        const char16_t* arguments[] = {u"corvane"};
        exitCode = ServiceMain(1, arguments);
      });
      ::Sleep(kRunMs);
      if (start % 2 == 0) {
        host.Console().PressKey();
      } else {
        EXPECT_EQ(WindowsInstance::RequestStop(0), WAIT_TIMEOUT);  // asked for, not yet done
      }
      service.join();
      // Those of the simulated devices, which make them as they need them.
      if (start == 0) ofDevices = host.Threads().OpenHandles();
      EXPECT_EQ(host.Threads().OpenHandles(), ofDevices) << start;
    }
    EXPECT_EQ(exitCode, 0);
    EXPECT_EQ(LiveObjectCount(), 0u);
    if (start == kWarmUp) handles = OpenHandlesOfProcess();
  }
  EXPECT_LE(OpenHandlesOfProcess(), handles);
}

}  // namespace corvane::test
