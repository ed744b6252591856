#include "platform/parallel_parts.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace corvane::platform {
namespace {

// Gives lines of a size that no pipe holds, and fails at one piece.
class LongLines : public PartWork {
 public:
  explicit LongLines(std::size_t failsAt) : m_FailsAt(failsAt) {}
  std::string Do(std::size_t piece) override {
    constexpr std::size_t kLength = 200'000;
    if (piece == m_FailsAt) throw std::runtime_error("piece " + std::to_string(piece));
    return std::to_string(piece) + std::string(kLength, '.');
  }
  void Take(std::size_t piece, const std::string& line) override {
    EXPECT_EQ(line.substr(0, line.find('.')), std::to_string(piece));
    taken.push_back(piece);
  }
  std::vector<std::size_t> taken;

 private:
  const std::size_t m_FailsAt;
};

TEST(ParallelPartsTest, TakesEachPieceInOrder) {
  for (const std::size_t processes : {1u, 3u, 50u}) {
    LongLines work(1000);
    DoInParts(7, processes, work);
    EXPECT_EQ(work.taken, (std::vector<std::size_t>{0, 1, 2, 3, 4, 5, 6}));
  }
  LongLines nothing(0);
  DoInParts(0, 3, nothing);
  EXPECT_TRUE(nothing.taken.empty());
}

// The others, which still write, are not waited for until they are done.
TEST(ParallelPartsTest, AFailureEndsAllWithItsText) {
  for (const std::size_t processes : {1u, 3u}) {
    LongLines work(4);
    try {
      DoInParts(40, processes, work);
      ADD_FAILURE() << "the failure is lost";
    } catch (const std::runtime_error& e) {
      EXPECT_STREQ(e.what(), "piece 4");
    }
    EXPECT_EQ(work.taken, (std::vector<std::size_t>{0, 1, 2, 3}));
  }
}

}  // namespace
}  // namespace corvane::platform
