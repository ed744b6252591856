#pragma once
// What the service keeps of the load-balance engine, for people. Pure.

#include <string>
#include <vector>

#include "corvane_client/service_access.h"

namespace corvane::client {

// From the values of the service's home key. They are what is wished for: whether the engine came
// up by it stands in the service's log alone.
std::vector<std::string> LbLines(const Values& service);
std::string LbJson(const Values& service);

}  // namespace corvane::client
