#pragma once
#include <string>
#include <vector>

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
  std::string profile = {};              // CORVANE_PROFILE; empty leaves what is set
  sim::IPcObserver* observer = nullptr;  // is told what happens to the devices; outlives the host
  // CORVANE_CONNECT_TO: entries "host:port:other:port"
  std::vector<std::string> connectTo = {};
  // Whether the home directory may belong to another instance; only one that keeps no log there
  // shares it.
  bool shareHome = false;
  // This program's file, which is what the service's own child runs; empty: the child is the
  // world's.
  std::string program = {};
};

inline constexpr double kSlowest = 0.01;
inline constexpr double kFastest = 1000.0;

inline constexpr char kHostHelp[] =
    "On Linux it runs in real time on the adapters of a simulated PC. Ctrl-C or SIGTERM ends it "
    "in\n"
    "order, a second one at once.\n"
    "\n"
    "Environment:\n"
    "  CORVANE_WORLD  file of the world to run in (default: a built-in home)\n"
    "  CORVANE_HOME   directory of the registry (registry.db), the logs and the data\n"
    "                 (default: $XDG_STATE_HOME/corvane, else ~/.local/state/corvane)\n"
    "  CORVANE_SPEED  runs the clock so many times faster than life, 0.01 to 1000 (default 1)\n"
    "  CORVANE_PROFILE  sets the rules by which it decides, classic or balanced; they stay set\n"
    "  CORVANE_CONNECT_TO  where web connections go instead: entries host:port:other:port with\n"
    "                 blanks between them\n"
    "  http_proxy, https_proxy, no_proxy\n"
    "                 the user's web proxies; proxy configuration scripts are not known here\n";

// The file of the running program; empty when the system does not tell.
std::string OwnProgram();

// A value of the environment; null where it is not set.
using Environment = const char* (*)(const char* name);
const char* ProcessEnvironment(const char* name);

// Throws HostError for values that cannot be used.
HostOptions ReadHostOptions(Environment environment = &ProcessEnvironment);
// The world of the options. Throws HostError with the file, the place and the reason.
sim::World LoadWorld(const HostOptions& options);

}  // namespace corvane::platform::linux_host
