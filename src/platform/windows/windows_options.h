#pragma once
#include <string>

#include "platform/sim/world/world.h"

namespace corvane::platform::windows {

// What the environment asks of the service's host.
struct WindowsOptions {
  // CORVANE_HOME: stands for %ProgramData%; empty: that itself.
  std::string home = {};
  std::string worldFile = {};  // CORVANE_WORLD; empty: the devices of this PC
  std::string profile = {};    // CORVANE_PROFILE, of the world; empty: what that says
  // Whether another instance may run beside; only a mode that keeps no log asks for it.
  bool shareHome = false;
};

inline constexpr char kHostHelp[] =
    "On Windows it runs on the adapters of this PC, as administrator or as a task of the system.\n"
    "A key in its console, Ctrl-C and --stop end it in order.\n"
    "\n"
    "  --install    registers the task that runs it at each start of the PC, and starts it\n"
    "  --uninstall  ends it and takes the task back; add --purge to remove logs, history and key\n"
    "  --status     tells whether it is installed and whether it runs (exit status 0 when it "
    "runs)\n"
    "  --stop       ends the running instance in order\n"
    "\n"
    "Environment:\n"
    "  CORVANE_WORLD    file of a world whose simulated adapters it runs on instead\n"
    "  CORVANE_PROFILE  the rules by which it decides there, classic or balanced; on this PC's\n"
    "                   adapters corvane-client profile sets them\n"
    "  CORVANE_HOME     folder in the place of %ProgramData%, for logs, history and key\n";

// Throws WindowsError for values that cannot be used.
WindowsOptions ReadWindowsOptions();
// The world of the options, which name one. Throws WindowsError with the file, the place and the
// reason.
sim::World LoadWorld(const WindowsOptions& options);

}  // namespace corvane::platform::windows
