// The laboratory's view of the load-balance engine, over the desk with cables.

#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include <stdexcept>

#include "any_host/temp_directory.h"
#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "platform/text_file.h"
#include "support/source_dir.h"

namespace corvane::lab {
namespace {

using testing::HasSubstr;

class EngineCommandTest : public testing::Test {
 protected:
  int Run(std::vector<std::string> words, const char* world = "desk-with-cables") {
    words.insert(words.begin(), test::SourceDir() + "/worlds/" + world + ".json");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    int code = -1;
    try {
      code = EngineCommand(words);
    } catch (...) {
      testing::internal::GetCapturedStdout();
      testing::internal::GetCapturedStderr();
      throw;
    }
    output = testing::internal::GetCapturedStdout();
    error = testing::internal::GetCapturedStderr();
    return code;
  }
  std::string DumpFile() const { return m_Directory / "dump.bin"; }

  const test::TempDirectory m_Directory;

  std::string output, error;
};

// With the tunnel up, which has its own words.
TEST_F(EngineCommandTest, ShowsTheTableInWords) {
  EXPECT_EQ(Run({"--at", "100s"}), 0);
  for (const char* line :
       {"engine: device-held ready; a tunnel is up\n",
        "adapters: 2 steerable, 2 of the maker's, 1 steerable now\n", "slot 1  Vantor Gale G2\n",
        "state up  class wired wired-2 managed own-wired\n",
        "192.168.1.10  gateway 0  1000/1000 Mbps  network private internet  status 3\n",
        "state up not-managed  class wired tunnel not-managed\n",
        "gateway 0  192.168.1.1  2 behind it: 0 1\n", "driver: present, started, 1 handshakes, ",
        "  11.000 s  all kind 1: look at all\n", "  41.000 s  slot 1 kind 1: down\n",
        "  61.000 s  slot 1 kind 2: addresses network\n",
        "  81.000 s  all kind 8: a tunnel is up"}) {
    EXPECT_THAT(output, HasSubstr(line));
  }
  EXPECT_EQ(Run({"--at", "105s"}), 0);
  EXPECT_THAT(output, HasSubstr("all kind 8: no tunnel is up"));
  EXPECT_EQ(error, "");
}

TEST_F(EngineCommandTest, GivesTheSameAsJson) {
  EXPECT_EQ(Run({"--at", "55s", "--json"}), 0);
  rapidjson::Document json;
  ASSERT_FALSE(json.Parse(output.c_str()).HasParseError()) << output;
  EXPECT_TRUE(json["runs"].GetBool() && json["driverStarted"].GetBool());
  EXPECT_FALSE(json["tunnel"].GetBool() || json["startOwed"].GetBool());
  EXPECT_EQ(json["steerable"].GetUint(), 1u);
  ASSERT_EQ(json["slots"].Size(), 5u);
  const auto& radio = json["slots"][0];
  const auto& cable = json["slots"][1];
  EXPECT_STREQ(radio["ip4"].GetString(), "192.168.1.20");
  EXPECT_EQ(radio["gateway"].GetUint(), 0u);
  EXPECT_STREQ(cable["state"].GetString(), "down");
  EXPECT_TRUE(cable["gateway"].IsNull());
  ASSERT_EQ(json["gateways"].Size(), 1u);
  ASSERT_EQ(json["gateways"][0]["slots"].Size(), 1u);
  EXPECT_EQ(json["gateways"][0]["slots"][0].GetUint(), 0u);
  EXPECT_EQ(json["steered"].Size(), 1u);
  ASSERT_EQ(json["heard"].Size(), 2u);
  EXPECT_EQ(json["heard"][1]["device"].GetUint(), 1u);
  EXPECT_STREQ(json["heard"][1]["text"].GetString(), "41.000 s  slot 1 kind 1: down");
}

// The table as the driver sees it, without the structures.
TEST_F(EngineCommandTest, DumpsATableThatReadsByOffsetsAlone) {
  ASSERT_EQ(Run({"--at", "38s", "--dump", DumpFile()}), 0);
  const std::string dump = platform::ReadTextFile(DumpFile());
  ASSERT_EQ(dump.size(), 112'704u);
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(dump[at]); };
  const auto half = [&](std::size_t at) { return byte(at) | byte(at + 1) << 8; };
  const auto word = [&](std::size_t at) {
    return static_cast<std::uint32_t>(half(at)) | static_cast<std::uint32_t>(half(at + 2)) << 16;
  };
  EXPECT_EQ(word(0), 0x0A050203u);
  EXPECT_EQ(word(4), 2u);
  EXPECT_EQ(word(8), 2u);
  EXPECT_EQ(word(12), 2u);
  const std::size_t slot = 832;      // the cable's
  EXPECT_EQ(word(slot + 16), 0xAu);  // private, Internet
  EXPECT_EQ(word(slot + 20), 0u);
  EXPECT_EQ(byte(slot + 28), 1);
  EXPECT_EQ(byte(slot + 29), 1);
  EXPECT_EQ(byte(slot + 30), 0);
  EXPECT_EQ(byte(slot + 31), 0);
  EXPECT_EQ(byte(slot + 33), 2);
  EXPECT_EQ(word(slot + 36), 0x21u);
  EXPECT_EQ(word(slot + 40), 1u);
  EXPECT_EQ(word(slot + 76), 0xC021u);
  EXPECT_EQ(half(slot + 88), 1500);
  EXPECT_EQ(half(slot + 90), 2);
  EXPECT_EQ(half(slot + 92), 6);
  EXPECT_EQ(dump.substr(slot + 94, 6), dump.substr(slot + 102, 6));
  EXPECT_EQ(word(slot + 112), 1000u);
  EXPECT_EQ(word(slot + 116), 1000u);
  for (std::size_t i = 0; i < 14; ++i) EXPECT_EQ(half(slot + 120 + 2 * i), "Vantor Gale G2"[i]);
  EXPECT_EQ(word(slot + 396), 0x0A01A8C0u);
  EXPECT_EQ(word(slot + 400), 0x00FFFFFFu);
  EXPECT_EQ(half(slot + 756), 0x80FE);
  EXPECT_EQ(word(slot + 792), 1u);
  EXPECT_EQ(dump.substr(338, 6), "\x02\x50" + std::string(1, '\0') + "\x02\x01\x05");
  EXPECT_EQ(half(346), 4);
  EXPECT_EQ(dump.substr(348, 4), "Desk");
  for (std::size_t free = 5; free < 16; ++free) EXPECT_EQ(byte(free * 832 + 28), 255) << free;
  const std::size_t gateway = 13'328;
  EXPECT_EQ(word(gateway), 2u | 2u << 16);
  EXPECT_EQ(word(gateway + 4), 0x00006002u);
  EXPECT_EQ(word(gateway + 12), 0x0101A8C0u);
  EXPECT_EQ(word(gateway + 52), 187'500'000u);
  EXPECT_EQ(word(gateway + 60), 0x6464u);
  EXPECT_EQ(word(gateway + 84), 1u);
  EXPECT_EQ(word(gateway + 88), 1u);
  EXPECT_EQ(half(gateway + 92), 1);  // the next one is free
  for (const std::size_t flow : {std::size_t{0}, std::size_t{2047}}) {
    EXPECT_EQ(half(14'064 + flow * 48 + 38), 0xFFFF);
    EXPECT_EQ(word(14'064 + flow * 48 + 40), 0x00046464u);
  }
  EXPECT_EQ(dump.find_first_not_of('\0', 112'368), std::string::npos);
}

TEST_F(EngineCommandTest, TellsOfSeedsInOneLine) {
  EXPECT_EQ(Run({"--at", "50s", "--seeds", "1-3"}), 0);
  EXPECT_THAT(output, testing::StartsWith("3 seeds, 0 bad; the driver heard 6 notifications and "));
  EXPECT_EQ(Run({"--at", "50s", "--seeds", "1-3", "--interleave", "--faults", "1"}), 0);
  EXPECT_THAT(output, testing::StartsWith("3 seeds, 0 bad; "));
}

TEST_F(EngineCommandTest, SaysSoWhereThereIsNoTable) {
  EXPECT_EQ(Run({"--at", "20s"}, "home"), 0);
  EXPECT_THAT(output, HasSubstr("the engine does not run; its start gave 0\n"));
  EXPECT_THAT(output, HasSubstr("driver: not installed, 0 handshakes"));
  EXPECT_EQ(Run({"--at", "20s", "--json"}, "home"), 0);
  EXPECT_THAT(output, HasSubstr("{\"runs\":false,\"startCode\":0,\"driverPresent\":false,"));
  EXPECT_THROW(Run({"--at", "20s", "--dump", DumpFile()}, "home"), std::runtime_error);
}

TEST_F(EngineCommandTest, RefusesWordsThatItDoesNotUnderstand) {
  using Words = std::vector<std::string>;
  for (const Words& words :
       {Words{}, Words{"--at"}, Words{"--at", "soon"}, Words{"--at", "1s", "--seeds", "3-1"},
        Words{"--at", "1s", "--seeds", "1-2", "--json"},
        Words{"--at", "1s", "--seeds", "1-2", "--dump", DumpFile()},
        Words{"--at", "1s", "--loud"}}) {
    EXPECT_THROW(Run(words), UsageError) << testing::PrintToString(words);
  }
  EXPECT_THROW(Run({"--at", "1s"}, "no-such-world"), std::runtime_error);
}

}  // namespace
}  // namespace corvane::lab
