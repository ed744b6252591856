#include "corvane_client/live_picture.h"

#include <gmock/gmock.h>

namespace corvane::client {

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

// An adapter with a state of two lines.
LiveAdapter Adapter(const std::string& name, std::size_t candidates) {
  LiveAdapter adapter{.status = {name, name + " mode"}, .candidates = {}};
  if (candidates > 0) adapter.candidates.push_back("SSID");
  for (std::size_t i = 1; i <= candidates; ++i)
    adapter.candidates.push_back(name + std::to_string(i));
  return adapter;
}

}  // namespace

TEST(LivePicture, HasExactlyTheSizeOfTheTerminal) {
  EXPECT_THAT(LivePicture({Adapter("a", 1)}, {"one", "two"}, 10, 80),
              ElementsAre("a", "a mode", "", "SSID", "a1", "", "Events", "one", "two", ""));
  EXPECT_THAT(LivePicture({Adapter("日本", 0)}, {}, 3, 4), ElementsAre("日本", "日…", ""));
  const std::deque<std::string> events(100, "event");
  for (std::size_t rows = 0; rows < 40; ++rows) {
    EXPECT_EQ(LivePicture({Adapter("a", 9), Adapter("b", 0)}, events, rows, 80).size(), rows);
  }
}

TEST(LivePicture, LeavesTheWorstCandidatesAndTheOldestEventsOut) {
  EXPECT_THAT(LivePicture({Adapter("a", 4), Adapter("b", 2)}, {}, 13, 80),
              ElementsAre("a", "a mode", "", "SSID", "a1", "a2  (and 2 more)", "", "b", "b mode",
                          "", "SSID", "b1", "b2"));
  const std::deque<std::string> events = {"1", "2", "3", "4", "5", "6", "7", "8", "9"};
  // Where all has room, the last eight; where not, a quarter of the lines.
  EXPECT_THAT(LivePicture({Adapter("a", 0)}, events, 12, 80),
              ElementsAre("a", "a mode", "", "Events", "2", "3", "4", "5", "6", "7", "8", "9"));
  EXPECT_THAT(LivePicture({Adapter("a", 9)}, events, 12, 80),
              ElementsAre("a", "a mode", "", "SSID", "a1", "a2", "a3", "a4", "a5  (and 4 more)", "",
                          "Events", "9"));
  EXPECT_THAT(LivePicture({Adapter("a", 9)}, events, 2, 80), ElementsAre("a", "a mode"));
}

TEST(LivePicture, RedrawsTheLinesThatDiffer) {
  EXPECT_EQ(RedrawText({"a", "b", "c"}, {"a", "b", "c"}, 5), "");
  EXPECT_EQ(RedrawText({"a", "b", "c"}, {"a", "B", ""}, 5), "\x1b[2;1HB\x1b[K\x1b[3;1H\x1b[K");
  // Clearing behind a full line would take its last character.
  EXPECT_EQ(RedrawText({}, {"12345", "日本"}, 5), "\x1b[1;1H12345\x1b[2;1H日本\x1b[K");
  EXPECT_THAT(RedrawText({"a", "b"}, {"a"}, 5), HasSubstr("\x1b[1;1Ha"));
}

}  // namespace corvane::client
