#pragma once
#include <memory>

#include "platform/linux/host_options.h"
#include "platform/platform.h"

namespace corvane::platform::sim {
class SimDevices;
}

namespace corvane::platform::linux_host {

class HostConsole;
class HostThreads;

// The platform on Linux: real threads, clock, files, console and registry, and simulated devices
// that run on them in real time. It is in force, and its devices run, as long as it lives.
class LinuxHost {
 public:
  // Throws HostError before any thread has started.
  LinuxHost(const HostOptions& options, const sim::World& world);
  // To be called when no thread of the program runs but those that were given up. They are waited
  // for; should one never end, the process ends here with a message.
  ~LinuxHost();

  HostConsole& Console();
  HostThreads& Threads();
  sim::SimDevices& Devices();

 private:
  struct Impl;
  std::unique_ptr<Impl> m_pImpl;
};

}  // namespace corvane::platform::linux_host
