#pragma once
// Events of the service, in words. Pure.

#include <string>

namespace corvane::client {

// An event as one line for people: the time of day and what happened. An event that is no JSON,
// which clients can post, stands as it came.
std::string EventLine(const std::string& event);

// "Home 02-50-00-00-01-05 (score 75)" of a summary such as "Score 75, 02-50-00-00-01-05, SQ 100,
// ..., mbps, Home"; another text stays.
std::string ShortSummary(const std::string& summary);

}  // namespace corvane::client
