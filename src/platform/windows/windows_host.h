#pragma once
#include <memory>

#include "platform/platform.h"
#include "platform/windows/windows_options.h"

namespace corvane::platform::sim {
class IPcObserver;
}

namespace corvane::platform::windows {

class WindowsConsole;
class WindowsThreads;

// The platform on Windows: Win32 throughout; with a world, its simulated adapters and devices in
// real time in the place of this PC's. It is in force as long as it lives.
class WindowsHost {
 public:
  // Throws WindowsError before any thread has started.
  explicit WindowsHost(const WindowsOptions& options, sim::IPcObserver* observer = nullptr);
  // To be called when no thread of the program runs but those that were given up. They are waited
  // for; should one never end, the process ends here with a message.
  ~WindowsHost();

  WindowsConsole& Console();
  WindowsThreads& Threads();

 private:
  struct Impl;
  std::unique_ptr<Impl> m_pImpl;
};

}  // namespace corvane::platform::windows
