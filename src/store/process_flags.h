#pragma once
#include <atomic>

namespace corvane {

// A VPN was seen by the last round of a worker. Written by the workers, read by the score and the
// main loop.
extern std::atomic<bool> g_bVPNFound;

}  // namespace corvane
