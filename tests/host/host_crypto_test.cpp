#include "platform/linux/host_crypto.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "any_host/temp_directory.h"
#include "host/client_token_maker.h"
#include "platform/linux/host_gate.h"
#include "platform/linux/host_processes.h"
#include "platform/linux/host_threads.h"

namespace corvane::test {

using namespace platform;
using namespace platform::linux_host;

namespace {

constexpr char kPrivate[] = "private/client_key.pem";
constexpr char kPublic[] = "client_key.pub.pem";

mode_t ModeOf(const std::string& path) {
  struct stat found {};
  return stat(path.c_str(), &found) == 0 ? found.st_mode & 07777 : 0;
}

}  // namespace

// What somebody put back from a copy has the modes of one.
TEST(HostCryptoTest, KeepsTheKeysModes) {
  const TempDirectory home;
  HostTime time{1.0};
  HostThreads threads{time};
  HostGate gate;
  HostCrypto crypto{gate, threads, home.Path()};
  std::string key, again;
  std::filesystem::create_directory(home / "private");  // whoever made it
  EXPECT_EQ(crypto.ReadClientKey(&key), ERROR_SUCCESS);
  EXPECT_EQ(ModeOf(home / "private"), 0700u);
  EXPECT_EQ(ModeOf(home / kPrivate), 0600u);
  EXPECT_EQ(ModeOf(home / kPublic), 0644u);
  std::filesystem::permissions(home / kPrivate, std::filesystem::perms(0644));
  EXPECT_EQ(crypto.ReadClientKey(&again), ERROR_SUCCESS);
  EXPECT_EQ(again, key);
  EXPECT_EQ(ModeOf(home / kPrivate), 0600u);
}

TEST(HostProcesses, NamesTheProgramOfAProcess) {
  EXPECT_EQ(ExecutableOfProcess(static_cast<DWORD>(getpid())), u"corvane_host_tests");
  EXPECT_EQ(ExecutableOfProcess(0), std::nullopt);
  EXPECT_EQ(ExecutableOfProcess(0xFFFFFFFF), std::nullopt);
  EXPECT_EQ(FileNameOfExecutable("/usr/bin/corvane-client"), "corvane-client");
  EXPECT_EQ(FileNameOfExecutable("/usr/bin/corvane-client (deleted)"), "corvane-client");
  EXPECT_EQ(FileNameOfExecutable("corvane-client"), "corvane-client");
}

}  // namespace corvane::test
