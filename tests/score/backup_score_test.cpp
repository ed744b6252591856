#include "score/backup_score.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

// Quality 80 on a 433 and 433 Mbps VHT connection: 18 + 5 + 9 + 10.
BackupScoreInputs Vht80() {
  BackupScoreInputs in;
  in.quality = 80;
  in.rxKbps = in.txKbps = 433'500;
  in.phyType = 8;
  return in;
}

TEST(BackupScore, AddsWhatTheConnectionAloneShows) {
  EXPECT_EQ(ComputeBackupScore(Vht80()), 42);
  auto in = Vht80();
  in.isPrivate = true;
  EXPECT_EQ(ComputeBackupScore(in), 43);
  in = Vht80(), in.guest = true;
  EXPECT_EQ(ComputeBackupScore(in), 39);
  in = Vht80(), in.phyType = 7;
  EXPECT_EQ(ComputeBackupScore(in), 37);
  in.phyType = 10;
  EXPECT_EQ(ComputeBackupScore(in), 47);
  in.phyType = 6;
  EXPECT_EQ(ComputeBackupScore(in), 32);
}

TEST(BackupScore, RateRoundsUpToTheFirstGigabitAndGoesOnWithoutALimit) {
  struct Case {
    std::uint32_t rx, tx;
    std::int32_t points;
  };
  for (const Case& c : {Case{0, 0, 0}, Case{49'999, 0, 0}, Case{50'000, 0, 1}, Case{999'999, 0, 10},
                        Case{500'000, 500'000, 10}, Case{1'100'000, 0, 11}, Case{2'000'000, 0, 15},
                        Case{9'000'000, 1'000'000, 55}, Case{0xFFFFFFFF, 0xFFFFFFFF, 42'955}}) {
    BackupScoreInputs in;
    in.quality = 50;
    in.rxKbps = c.rx, in.txKbps = c.tx;
    EXPECT_EQ(ComputeBackupScore(in), 5 + c.points) << c.rx << "+" << c.tx;
  }
}

TEST(BackupScore, BandAverageCountsElseTheRememberedOneIfAboveZero) {
  auto in = Vht80();
  in.bandAverage = 6, in.rememberedAverage = 4;
  EXPECT_EQ(ComputeBackupScore(in), 48);
  in.bandAverage = 0;
  EXPECT_EQ(ComputeBackupScore(in), 46);
  in.rememberedAverage = -1;
  EXPECT_EQ(ComputeBackupScore(in), 42);
}

TEST(BackupScore, WeakSignalTakesUpToTenAndNeverMoreThanThereIs) {
  BackupScoreInputs in;
  in.quality = 49;
  in.phyType = 10;  // 5 + 15
  EXPECT_EQ(ComputeBackupScore(in), 19);
  in.quality = 0;
  EXPECT_EQ(ComputeBackupScore(in), 10);
  in.phyType = 0, in.guest = true;
  EXPECT_EQ(ComputeBackupScore(in), 0);
  EXPECT_TRUE(IsLowBandChannel(31));
  EXPECT_FALSE(IsLowBandChannel(32));
}

}  // namespace
}  // namespace corvane
