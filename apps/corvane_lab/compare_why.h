#pragma once
#include <map>
#include <string>

#include "corvane_lab/air_truth.h"
#include "corvane_lab/link_trace.h"
#include "corvane_lab/policy_run.h"

namespace corvane::lab {

// What the service missed for one reason.
struct Loss {
  double points = 0.0;  // percent of the oracle's rate
  int seconds = 0;
};

// Each second in which the service had less than the oracle, by what its rounds said then: the last
// decision of the last round, and how that stood to the access point that the oracle was on. The
// points sum to what the service's share lacks of 100; seconds in which it had more count against
// them under a heading of their own.
std::map<std::string, Loss> WhyBehind(const Truth& truth, const PolicyRun& run,
                                      const PolicyTrace& oracle);

}  // namespace corvane::lab
