// The JSON of the score weights, and the scores that they give.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "bench_platform.h"
#include "foundation/ignored.h"
#include "score/backup_score.h"
#include "score/final_score.h"
#include "score/subtotal.h"
#include "settings/score_config.h"

namespace {

// A score is never negative: that reads as "no score".
void CheckScores(const corvane::SubtotalInputs& in, std::string* log) {
  using namespace corvane;
  const SubtotalResult subtotal = ComputeSubtotal(in, log);
  if (subtotal.points < 0) std::abort();
  for (const int load : {0, 50, 255}) {
    FinalScoreInputs last;
    last.subtotal = subtotal.points;
    last.loadPoints = subtotal.loadPoints;
    last.channelLoad = static_cast<std::uint8_t>(load);
    last.loadWeight = in.weights.QBSSBumpMax;
    if (ComputeFinalScore(last, log) < 0) std::abort();
  }
  BackupScoreInputs backup;
  backup.quality = in.quality;
  backup.weights = in.weights;
  backup.rxKbps = backup.txKbps = 0xFFFFFFFF;
  if (ComputeBackupScore(backup) < 0) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvane;
  static const bench::BenchPlatform os;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto config = CScoreConfig::CreateObject();
  Ignored(config->Initialize(Utf8ToWide(text)));  // whether the text changes anything is its affair
  if (config->Initialize(Utf8ToWide(text))) std::abort();  // nothing is left to change
  const ScoreWeights weights = config->Get();

  static constexpr RadioFacts kBest{.htPresent = true,
                                    .vhtPresent = true,
                                    .heCapsGood = true,
                                    .muMimo = true,
                                    .securityMask = 0xFF,
                                    .maxRateMbps = 9608,
                                    .loadPct = 0.0,
                                    .loadMapValid = true,
                                    .quietChannel = true};
  std::string log;
  for (const RadioFacts* radio : {static_cast<const RadioFacts*>(nullptr), &kBest}) {
    for (const std::uint32_t quality : {0u, 70u, 100u}) {
      SubtotalInputs in;
      in.quality = quality;
      in.weights = weights;
      in.radio = radio;
      CheckScores(in, &log);
    }
  }
  return 0;
}
