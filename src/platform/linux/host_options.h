#pragma once
#include <string>

#include "platform/sim/world/world.h"

namespace corvane::platform::sim {
class IPcObserver;
}

namespace corvane::platform::linux_host {

// What the environment asks of the service's host.
struct HostOptions {
  std::string home;                      // CORVANE_HOME
  std::string worldFile = {};            // CORVANE_WORLD; empty for the built-in world
  double speed = 1.0;                    // CORVANE_SPEED, times faster than life
  sim::IPcObserver* observer = nullptr;  // is told what happens to the devices; outlives the host
};

inline constexpr double kSlowest = 0.01;
inline constexpr double kFastest = 1000.0;

inline constexpr char kHostHelp[] =
    "Usage: corvane [--help]\n"
    "Keeps each Wi-Fi adapter on its best access point. On Linux it runs in real time on the "
    "adapters\n"
    "of a simulated PC. Ctrl-C or SIGTERM ends it in order, a second one at once.\n"
    "\n"
    "Environment:\n"
    "  CORVANE_WORLD  file of the world to run in (default: a built-in office)\n"
    "  CORVANE_HOME   directory of the registry (registry.db), the logs and the data\n"
    "                 (default: $XDG_STATE_HOME/corvane, else ~/.local/state/corvane)\n"
    "  CORVANE_SPEED  runs the clock so many times faster than life, 0.01 to 1000 (default 1)\n";

// A value of the environment; null where it is not set.
using Environment = const char* (*)(const char* name);
const char* ProcessEnvironment(const char* name);

// Throws HostError for values that cannot be used.
HostOptions ReadHostOptions(Environment environment = &ProcessEnvironment);
// The world of the options. Throws HostError with the file, the place and the reason.
sim::World LoadWorld(const HostOptions& options);

}  // namespace corvane::platform::linux_host
