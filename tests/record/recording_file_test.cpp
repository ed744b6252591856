#include "record/recording_file.h"

#include <gtest/gtest.h>

#include "platform/platform.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_files.h"
#include "support/pc_fixture.h"

namespace corvane {
namespace {

constexpr char16_t kFolder[] = u"/data";

class RecordingFileTest : public test::KernelTest {
 protected:
  std::string Text(const char16_t* name) {
    return kernel.Files().Read(WString(kFolder) + u"/" + name).value_or("none");
  }
};

// Of any size of lines: never more than the limit, and the newest are there.
TEST_F(RecordingFileTest, TwoHalvesHoldTheNewestLines) {
  RecordingFile file(kFolder, 40);
  EXPECT_FALSE(file.IsOpen());
  ASSERT_TRUE(file.Open());
  for (int i = 0; i < 10; ++i) {
    const std::string line = "line " + std::to_string(i) + "\n";
    if (!file.HasRoom(line.size())) {
      ASSERT_TRUE(file.Rotate());
    }
    ASSERT_TRUE(file.Append(line));
  }
  EXPECT_EQ(Text(u"air.1.jsonl"), "line 6\nline 7\n");
  EXPECT_EQ(Text(u"air.jsonl"), "line 8\nline 9\n");
  EXPECT_FALSE(file.Append("more than there is room for\n"));
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(Text(u"air.jsonl"), "line 8\nline 9\n");
}

TEST_F(RecordingFileTest, ALineThatWasCutOffIsEndedFirst) {
  kernel.Files().Write(u"/data/air.jsonl", "{\"t\":0,\"beg");
  RecordingFile file(kFolder, 100);
  ASSERT_TRUE(file.Open());
  ASSERT_TRUE(file.Append("first\n"));
  ASSERT_TRUE(file.Append("second\n"));
  EXPECT_EQ(Text(u"air.jsonl"), "{\"t\":0,\"beg\nfirst\nsecond\n");
}

TEST_F(RecordingFileTest, ALowerLimitDropsWhatIsTooLarge) {
  kernel.Files().Write(u"/data/air.1.jsonl", std::string(21, 'o'));
  kernel.Files().Write(u"/data/air.jsonl", std::string(20, 'n'));
  ASSERT_TRUE(RecordingFile(kFolder, 40).Open());
  EXPECT_EQ(Text(u"air.1.jsonl"), "none");
  EXPECT_EQ(Text(u"air.jsonl"), std::string(20, 'n'));
  ASSERT_TRUE(RecordingFile(kFolder, 39).Open());
  EXPECT_EQ(Text(u"air.jsonl"), "");
}

TEST_F(RecordingFileTest, EachFailureIsOneOfTheFileAlone) {
  for (const char* operation : {"CreateFileW", "GetFileSizeEx"}) {
    RecordingFile file(kFolder, 40);
    kernel.Faults().FailCall(operation, 1, platform::ERROR_ACCESS_DENIED);
    EXPECT_FALSE(file.Open()) << operation;
    EXPECT_TRUE(file.Open()) << operation;
  }
  RecordingFile file(kFolder, 40);
  ASSERT_TRUE(file.Open());
  kernel.Faults().FailCall("WriteFile", 1, platform::ERROR_ACCESS_DENIED);
  EXPECT_FALSE(file.Append("lost\n"));
  EXPECT_FALSE(file.IsOpen());
  ASSERT_TRUE(file.Open());
  ASSERT_TRUE(file.Append("kept\n"));
  kernel.Faults().FailCall("MoveFileExW", 1, platform::ERROR_SHARING_VIOLATION);
  EXPECT_FALSE(file.Rotate());
  EXPECT_EQ(Text(u"air.jsonl"), "kept\n");
}

}  // namespace
}  // namespace corvane
