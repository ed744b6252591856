#include "score/final_score.h"

#include <gtest/gtest.h>

#include "foundation/averager.h"

namespace corvane {
namespace {

FinalScoreInputs Of(std::int32_t subtotal, std::int32_t loadPoints = 0) {
  FinalScoreInputs in;
  in.subtotal = subtotal;
  in.loadPoints = loadPoints;
  return in;
}

TEST(FinalScore, ChannelLoadStandsInForAMissingLoadElement) {
  const struct {
    std::int32_t loadPoints;
    std::uint8_t channelLoad;
    std::int32_t average;
    std::uint32_t weight;
    std::int32_t total;
    const char* log;
  } cases[] = {
      {7, 40, 6, 10, 50, ""},  // the element's own points are in the subtotal
      {0, 0, 6, 10, 50, ""},   // 0 points are points
      {-1, 40, 6, 10, 56, ",QBSS_2a(6)"},
      {-1, 0, -1, 10, 60, ",QBSS_2a(10)"},
      {-1, 99, -1, 10, 50, ",QBSS_2a(0)"},
      {-1, 33, -1, 10, 56, ",QBSS_2a(6)"},
      {-1, 255, 6, 10, 56, ",QBSS_2b(6)"},
      {-1, 255, 1, 10, 51, ",QBSS_2b(1)"},
      {-1, 255, 0, 10, 55, ",QBSS_2c(5)"},
      {-1, 255, -1, 10, 55, ",QBSS_2c(5)"},
      {-1, 255, -1, 7, 53, ",QBSS_2c(3)"},
  };
  for (const auto& one : cases) {
    FinalScoreInputs in = Of(50, one.loadPoints);
    in.channelLoad = one.channelLoad;
    in.bandAverage = one.average;
    in.loadWeight = one.weight;
    std::string log = "old";
    EXPECT_EQ(ComputeFinalScore(in, &log), one.total) << one.log;
    EXPECT_EQ(log, one.log);
    EXPECT_EQ(ComputeFinalScore(in, nullptr), one.total);
  }
}

// Nobody checks the weights that an administrator writes.
TEST(FinalScore, LargeWeightsStayInRange) {
  FinalScoreInputs in = Of(2'000'000'000, -1);
  in.loadWeight = 0xFFFFFFFF;
  in.channelLoad = 0;
  EXPECT_EQ(ComputeFinalScore(in, nullptr), 2'100'000'000);
  in.channelLoad = 255;
  in.bandAverage = -1;
  EXPECT_EQ(ComputeFinalScore(in, nullptr), 2'050'000'000);
}

TEST(Averager, SumOfLargeNumbersStaysInRange) {
  CAveragerBase<std::int32_t> average;
  for (int i = 0; i < 25; ++i) average.Add(100'000'000);
  EXPECT_EQ(average.Mean(), 100'000'000);
  average.Reset();
  EXPECT_EQ(average.Mean(), -1);
}

TEST(FinalScore, GuestAndBluetooth) {
  const struct {
    std::int32_t subtotal;
    bool guest, band;
    std::int32_t penalty, total;
    const char* log;
  } cases[] = {
      {50, true, false, 0, 47, ",GUEST(-3)"},
      {3, true, false, 0, 0, ",GUEST(-3)"},
      {2, true, false, 0, 0, ",GUEST(-3)"},
      {50, false, true, 5, 45, ",BT(-5)"},
      {6, false, true, 5, 1, ",BT(-5)"},
      {5, false, true, 5, 0, ""},
      {1, false, true, 5, 0, ""},
      {0, false, true, 5, 0, ""},
      {50, false, true, 0, 50, ""},
      {50, false, true, 1, 49, ",BT(-1)"},
      {50, false, false, 5, 50, ""},
      {50, true, true, 5, 42, ",GUEST(-3),BT(-5)"},
  };
  for (const auto& one : cases) {
    FinalScoreInputs in = Of(one.subtotal);
    in.guest = one.guest;
    in.bluetoothBand = one.band;
    in.bluetoothPenalty = one.penalty;
    std::string log = "old";
    EXPECT_EQ(ComputeFinalScore(in, &log), one.total) << one.subtotal;
    EXPECT_EQ(log, one.log) << one.subtotal;
  }
}

}  // namespace
}  // namespace corvane
