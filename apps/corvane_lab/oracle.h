#pragma once
#include "corvane_lab/air_truth.h"
#include "corvane_lab/link_trace.h"

namespace corvane::lab {

// A move, or a first connect, costs so much time without a link.
inline constexpr std::uint64_t kMoveMs = 1600;

// The best that can be made of a world by somebody who knows its future: the trace with the highest
// worth by one measure. It begins where `start` says (by adapter; kNoLink for none), pays kMoveMs
// for each connect, goes only where it is let in, and never leaves a living link in a phase of
// traffic, or so shortly before one that the move would reach into it. A link that hears nothing
// for three seconds is lost; without a link it connects as soon as it can. With several adapters it
// is the best of turns in which each adapter does its best beside the others: no worse than any of
// them alone, though not proven the best.
PolicyTrace OracleTrace(const Truth& truth, const std::vector<int>& start, Measure measure);

}  // namespace corvane::lab
