#pragma once
// The lines that tell why a round scanned or did not.

#include "rules/scan_decision.h"

namespace corvane {

// What they tell besides the decision and what it went by.
struct ScanLineFacts {
  int idx = -1;                               // of the adapter
  std::uint32_t successes = 0, attempts = 0;  // calls of WlanScan
  std::uint32_t deferrals = 0;                // in a row, once this decision is applied
  std::uint32_t quality = 0, peakQuality = 0, qualityThreshold = 0;
  std::int32_t forceCounter = 0;  // once this decision is applied
};

void LogScanDecision(const ScanLineFacts& facts, const ScanInputs& in,
                     const ScanDecision& decision);

}  // namespace corvane
