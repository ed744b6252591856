// The service program from outside: what a user, a client and a supervisor see of it.

#include "host/program.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <fstream>
#include <thread>

#include "any_host/temp_directory.h"
#include "platform/linux/host_options.h"
#include "support/source_dir.h"

namespace corvane::test {

namespace {

using namespace std::chrono_literals;

constexpr auto kLimit = 60s;

}  // namespace

class ProgramTest : public testing::Test {
 protected:
  std::map<std::string, std::string> Environment() const {
    return {{"CORVANE_HOME", home}, {"CORVANE_SPEED", "50"}};
  }
  // What the sqlite3 shell reads from the store; empty for no row.
  std::string Value(const std::string& name) const {
    const std::string command = "sqlite3 -readonly " + home +
                                "/registry.db \"SELECT value FROM registry WHERE name = '" + name +
                                "'\" 2>/dev/null";
    std::FILE* pipe = popen(command.c_str(), "r");
    std::string text;
    char block[4096];
    while (std::fgets(block, sizeof(block), pipe)) text += block;
    pclose(pipe);
    if (text.ends_with('\n')) text.pop_back();
    return text;
  }
  template <typename Predicate>
  bool WaitUntil(Predicate&& holds) const {
    const auto end = std::chrono::steady_clock::now() + kLimit;
    while (!holds()) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(50ms);
    }
    return true;
  }
  bool WaitForValue(const std::string& name, const std::string& value) const {
    return WaitUntil([&] { return Value(name) == value; });
  }

  TempDirectory directory;
  const std::string home = directory / "home";
};

TEST_F(ProgramTest, PublishesItsStateRefusesASecondInstanceAndStopsInOrder) {
  Program service(directory / "output", Environment());
  ASSERT_TRUE(WaitForValue("ConnectStatus", "connected")) << service.Output();
  ASSERT_TRUE(WaitUntil([&] { return Value("CandidatesCSV") != ""; })) << service.Output();
  EXPECT_NE(Value("ConnectedNetwork"), "");
  EXPECT_EQ(Value("BootCounter"), "1");

  Program second(directory / "second", Environment());
  EXPECT_EQ(second.Wait(kLimit), 1);
  EXPECT_NE(second.Output().find("another instance"), std::string::npos) << second.Output();
  ASSERT_TRUE(service.IsRunning());

  service.Signal(SIGTERM);
  EXPECT_EQ(service.Wait(kLimit), 0) << service.Output();
  EXPECT_TRUE(std::filesystem::exists(home + "/OstrelNetworks/Corvane/aps.log"));
  EXPECT_FALSE(std::filesystem::exists(home + "/registry.db-wal"));  // the store was closed

  // The next start counts, and goes on with what was stored.
  Program next(directory / "next", Environment());
  EXPECT_TRUE(WaitForValue("BootCounter", "2"));
  next.Signal(SIGINT);
  EXPECT_EQ(next.Wait(kLimit), 0) << next.Output();
}

TEST_F(ProgramTest, WhatCannotStartSaysWhyAndLeavesNothingBehind) {
  const std::string world = directory / "world.json";
  std::ofstream(world) << R"({"adapters": "two"})";
  auto environment = Environment();
  environment["CORVANE_WORLD"] = world;
  Program badWorld(directory / "output", environment);
  EXPECT_EQ(badWorld.Wait(kLimit), 1);
  EXPECT_NE(badWorld.Output().find(world), std::string::npos) << badWorld.Output();
  EXPECT_NE(badWorld.Output().find("adapters"), std::string::npos) << badWorld.Output();
  EXPECT_FALSE(std::filesystem::exists(home));

  environment = Environment();
  environment["CORVANE_HOME"] = world + "/home";
  Program badHome(directory / "output", environment);
  EXPECT_EQ(badHome.Wait(kLimit), 1);
  EXPECT_NE(badHome.Output().find("home directory"), std::string::npos) << badHome.Output();
}

TEST_F(ProgramTest, ExplainsItself) {
  Program help(directory / "output", Environment(), {"--help"});
  EXPECT_EQ(help.Wait(kLimit), 0);
  EXPECT_NE(help.Output().find("--postfile=filename"), std::string::npos);
  EXPECT_NE(help.Output().find("CORVANE_WORLD"), std::string::npos);
  EXPECT_LT(help.Output().find("--postfile"), help.Output().find("CORVANE_WORLD"));
  Program unknown(directory / "output", Environment(), {"--nonsense"});
  EXPECT_EQ(unknown.Wait(kLimit), 2);
  EXPECT_NE(unknown.Output().find("--nonsense"), std::string::npos);
}

// Whoever asks the wrapper hears the program's own words.
TEST(RunScript, HelpHoldsThatOfTheProgram) {
  std::FILE* pipe = popen(("bash " + SourceDir() + "/run --help").c_str(), "r");
  ASSERT_TRUE(pipe);
  std::string text;
  char block[4096];
  while (std::fgets(block, sizeof(block), pipe)) text += block;
  EXPECT_EQ(pclose(pipe), 0);
  EXPECT_NE(text.find(platform::linux_host::kHostHelp), std::string::npos) << text;
}

}  // namespace corvane::test
