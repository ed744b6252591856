#include "platform/linux/host_event_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "any_host/temp_directory.h"
#include "platform/linux/host_clock.h"

namespace corvane::test {

using namespace platform;

TEST(HostEventFile, TakesALineForEachEventAndTurnsOverAtItsLimit) {
  TempDirectory directory;
  linux_host::HostTime time{1.0};
  linux_host::HostClock clock{time};
  const std::string path = directory / "events.json", older = path + ".1";
  linux_host::HostEventFile file(path, clock);
  TraceEvent event;
  event.name = "TRELLIS_N_BEST_AP";
  event.fields = {{"EventType", 20}, {"ssid", u"Office"}};
  const auto text = [&] {
    std::ostringstream all;
    all << std::ifstream(path, std::ios::binary).rdbuf();
    return all.str();
  };
  const std::string line = R"(\{"time":"20\d\d-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z",)"
                           R"("event":"TRELLIS_N_BEST_AP","EventType":20,)"
                           R"("ssid":"Office"\}\n)";
  linux_host::HostEventFile::Append(event, &file);
  linux_host::HostEventFile::Append(event, &file);
  EXPECT_TRUE(std::regex_match(text(), std::regex("(" + line + "){2}"))) << text();

  std::ofstream(older) << "an older one";
  std::filesystem::resize_file(path, linux_host::HostEventFile::kMaxBytes);
  linux_host::HostEventFile::Append(event, &file);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_GT(std::filesystem::file_size(older), linux_host::HostEventFile::kMaxBytes);
  linux_host::HostEventFile::Append(event, &file);
  EXPECT_TRUE(std::regex_match(text(), std::regex(line))) << text();
}

}  // namespace corvane::test
