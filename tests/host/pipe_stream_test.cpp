#include "platform/linux/pipe_stream.h"

#include <gtest/gtest.h>

namespace corvane::test {

using platform::linux_host::PipeStream;

namespace {

using namespace std::string_literals;

// The pieces of a stream that comes `step` bytes at a time, for so much room; an unfinished end is
// left out. A piece that is no whole message ends in "...".
std::vector<std::string> Cut(const std::string& bytes, std::size_t step, std::size_t room) {
  PipeStream stream;
  std::vector<std::string> pieces;
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    stream.Add(std::string_view(bytes).substr(at, step));
    while (stream.IsReady(room)) {
      std::string target(room, '?');
      const auto piece = stream.Take(target.data(), room);
      target.resize(piece.size);
      pieces.push_back(target + (piece.whole ? "" : "..."));
    }
  }
  return pieces;
}

}  // namespace

// The same pieces come out however the bytes come in.
TEST(PipeStream, CutsAtTheNulOfAWholeUnit) {
  struct Case {
    const char* what;
    std::string bytes;
    std::vector<std::string> pieces;
  };
  const std::string hi = "h\0i\0\0\0"s;
  const Case cases[] = {
      {"one", hi, {hi}},
      {"two and a beginning", hi + hi + "h\0"s, {hi, hi}},
      {"none but a NUL", "\0\0"s, {"\0\0"s}},
      {"zeros across two units", "\x01\0\0\x01\0\0"s, {"\x01\0\0\x01\0\0"s}},
      {"a unit that is never finished", "h\0\0"s, {}},
      {"as long as the room", "abcdef\0\0"s, {"abcdef\0\0"s}},
      {"one unit too long", "abcdefgh\0\0"s, {"abcdefgh...", "\0\0"s}},
      {"twice too long", "abcdefghabcdefgh\0\0"s, {"abcdefgh...", "abcdefgh...", "\0\0"s}},
  };
  for (const Case& one : cases) {
    for (const std::size_t step : {1u, 2u, 3u, 100u}) {
      EXPECT_EQ(Cut(one.bytes, step, 8), one.pieces) << one.what << " by " << step;
    }
  }
}

}  // namespace corvane::test
