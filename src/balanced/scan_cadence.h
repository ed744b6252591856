#pragma once
// When a look around is worth its price. Pure.

#include <cstdint>

#include "rules/scan_decision.h"

namespace corvane::balanced {

struct CadenceFacts {
  bool connected = false;
  bool pending = false;          // the last scan showed something better, or it ripens
  std::uint32_t dullScans = 0;   // scans in a row that changed nothing
  std::uint32_t readyScans = 0;  // in a row that showed something better, and nobody moved
};

// Least pause between two scans in ms: short where something happens, up to `longest` where
// nothing does.
std::uint64_t PauseMs(const CadenceFacts& facts, std::uint64_t longestMs);

// The decision in the terms of the classic rules. `busy`: the link carries somebody's traffic;
// `lost`: so badly that it would not bear it anyway.
ScanDecision DecideScan(const ScanInputs& in, const CadenceFacts& facts, bool busy, bool lost);

}  // namespace corvane::balanced
