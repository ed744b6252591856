// What may stand in the way of a start, and what the console does.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <map>
#include <string>

#include "any_host/temp_directory.h"
#include "platform/linux/host_console.h"
#include "platform/linux/host_crypto.h"
#include "platform/linux/host_error.h"
#include "platform/linux/host_gate.h"
#include "platform/linux/host_home.h"
#include "platform/linux/host_options.h"

namespace corvane::test {

using namespace platform::linux_host;

namespace {

std::map<std::string, std::string> g_Environment;

const char* TestEnvironment(const char* name) {
  const auto found = g_Environment.find(name);
  return found == g_Environment.end() ? nullptr : found->second.c_str();
}

HostOptions OptionsOf(std::map<std::string, std::string> environment) {
  g_Environment = std::move(environment);
  return ReadHostOptions(&TestEnvironment);
}

template <typename Action>
std::string ErrorOf(Action&& action) {
  try {
    action();
  } catch (const HostError& error) {
    return error.what();
  }
  return "no error";
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

TEST(HostOptions, TakesTheHomeFromTheEnvironment) {
  EXPECT_EQ(OptionsOf({{"CORVANE_HOME", "/c"}, {"XDG_STATE_HOME", "/x"}, {"HOME", "/h"}}).home,
            "/c");
  EXPECT_EQ(OptionsOf({{"CORVANE_HOME", ""}, {"XDG_STATE_HOME", "/x"}, {"HOME", "/h"}}).home,
            "/x/corvane");
  EXPECT_EQ(OptionsOf({{"XDG_STATE_HOME", "relative"}, {"HOME", "/h"}}).home,
            "/h/.local/state/corvane");
  EXPECT_TRUE(Contains(ErrorOf([] { OptionsOf({}); }), "CORVANE_HOME"));
}

TEST(HostOptions, RefusesASpeedThatIsNone) {
  const auto speed = [](const std::string& text) {
    return OptionsOf({{"HOME", "/h"}, {"CORVANE_SPEED", text}}).speed;
  };
  EXPECT_EQ(speed(""), 1.0);
  EXPECT_EQ(speed("2.5"), 2.5);
  EXPECT_EQ(speed("1000"), 1000.0);
  for (const std::string bad : {"0", "-1", "1001", "fast", "2x", " 2", "nan", "inf"}) {
    EXPECT_TRUE(Contains(ErrorOf([&] { speed(bad); }), "\"" + bad + "\"")) << bad;
  }
}

TEST(HostOptions, ABadWorldNamesFilePlaceAndReason) {
  const TempDirectory directory;
  const std::string file = directory / "bad.json";
  const auto error = [&] { return ErrorOf([&] { LoadWorld({.home = "/h", .worldFile = file}); }); };
  EXPECT_TRUE(Contains(error(), file + ": cannot open")) << error();
  std::ofstream(file) << "{\"adapters\": [{]}";
  EXPECT_TRUE(Contains(error(), file)) << error();
  std::ofstream(file) << "{\"noSuchMember\": 1}";
  EXPECT_TRUE(Contains(error(), file)) << error();
  EXPECT_TRUE(Contains(error(), "noSuchMember")) << error();
}

TEST(HostHome, BelongsToOneInstanceAtATime) {
  const TempDirectory directory;
  const std::string path = directory / "deep/er";
  {
    const HostHome home(path);
    EXPECT_EQ(home.Path(), path);
    const std::string error = ErrorOf([&] { const HostHome second(path); });
    EXPECT_TRUE(Contains(error, "another instance")) << error;
    EXPECT_TRUE(Contains(error, std::to_string(getpid()))) << error;
    EXPECT_TRUE(Contains(error, path)) << error;
    EXPECT_EQ(ErrorOf([&] { const HostHome other(directory / "other"); }), "no error");
  }
  EXPECT_EQ(ErrorOf([&] { const HostHome again(path); }), "no error");
}

TEST(HostHome, OneThatCannotBeWrittenToIsAnError) {
  const TempDirectory directory;
  std::ofstream(directory / "file") << "x";
  const std::string error = ErrorOf([&] { const HostHome home(directory / "file/home"); });
  EXPECT_TRUE(Contains(error, directory / "file/home")) << error;
  EXPECT_NE(ErrorOf([] { const HostHome home("/proc/corvane"); }), "no error");
  EXPECT_NE(ErrorOf([&] { const HostHome home(directory / "\xFF"); }), "no error");
}

TEST(HostConsole, TheFirstSignalIsTheKeyAndTheSecondEndsTheProcess) {
  for (const int number : {SIGINT, SIGTERM}) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      if (!std::freopen("/dev/null", "w", stderr)) _exit(2);
      HostConsole console;
      if (console._kbhit()) _exit(3);
      raise(number);
      if (!console._kbhit() || !console._kbhit()) _exit(4);
      raise(number);
      _exit(5);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 128 + number);
  }
}

TEST(HostCrypto, MakesRandomGuidsOfVersion4) {
  const HostTime time(1.0);
  HostThreads threads(time);
  HostGate gate;
  HostCrypto crypto(gate, threads, "");
  platform::GUID first, second;
  ASSERT_EQ(crypto.CoCreateGuid(&first), platform::S_OK);
  ASSERT_EQ(crypto.CoCreateGuid(&second), platform::S_OK);
  EXPECT_FALSE(first == second);
  EXPECT_EQ(first.Data3 >> 12, 4);
  EXPECT_EQ(first.Data4[0] >> 6, 2);
}

}  // namespace corvane::test
