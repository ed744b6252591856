#include "score/final_score.h"

#include <algorithm>

#include "score/score_terms.h"
#include "score/text_builder.h"

namespace corvane {

namespace {

constexpr std::uint8_t kNoLoadInformation = 255;

struct Term {
  std::int32_t points;
  std::string_view head;
};

Term ChannelLoadTerm(const FinalScoreInputs& in) {
  if (in.channelLoad == kNoLoadInformation) {
    if (in.bandAverage >= 1) return {in.bandAverage, ",QBSS_2b("};
    return {WeightPoints(in.loadWeight) / 2, ",QBSS_2c("};
  }
  const double points = (100.0 - in.channelLoad) / 100.0 * WeightPoints(in.loadWeight);
  return {static_cast<std::int32_t>(points), ",QBSS_2a("};
}

}  // namespace

std::int32_t ComputeFinalScore(const FinalScoreInputs& in, std::string* log) {
  if (log) log->clear();
  TextBuilder text(log);
  std::int32_t total = in.subtotal;

  if (in.loadPoints < 0) {
    const Term term = ChannelLoadTerm(in);
    total += term.points;
    text << term.head << term.points << ")";
  }
  if (in.guest) {
    total = std::max(total - kGuestPoints, 0);
    text << ",GUEST(-3)";
  }
  if (in.bluetoothBand && in.bluetoothPenalty >= 1 && total >= 1) {
    if (total > in.bluetoothPenalty) {
      total -= in.bluetoothPenalty;
      text << ",BT(-" << in.bluetoothPenalty << ")";
    } else {
      total = 0;
    }
  }
  return total;
}

}  // namespace corvane
