#pragma once
// The host that the tests run on, by one set of names.

#ifdef _WIN32
#include "platform/windows/windows_clock.h"
#include "platform/windows/windows_files.h"
#include "platform/windows/windows_gate.h"
#include "platform/windows/windows_registry.h"
#include "platform/windows/windows_threads.h"
#else
#include "any_host/temp_directory.h"
#include "platform/linux/host_clock.h"
#include "platform/linux/host_files.h"
#include "platform/linux/host_gate.h"
#include "platform/linux/host_threads.h"
#include "platform/linux/sqlite_registry.h"
#endif

namespace corvane::test {

#ifdef _WIN32
using Threads = platform::windows::WindowsThreads;
using Gate = platform::windows::WindowsGate;

// Threads and clock run as life does.
struct HostKernel {
  platform::windows::WindowsClock clock;
  Threads threads;
  Gate gate;
};

struct HostFileSystem : HostKernel {
  platform::windows::WindowsFiles files{u"C:\\data"};
};
inline constexpr char16_t kDataFolder[] = u"C:\\data";

// Of HKEY_LOCAL_MACHINE\SOFTWARE\CorvaneTest, and all below.
void RemoveRegistryTestKey();
struct HostRegistry {
  HostRegistry() { RemoveRegistryTestKey(); }
  ~HostRegistry() { RemoveRegistryTestKey(); }
  std::size_t OpenHandles() const { return 0; }

  platform::windows::WindowsRegistry registry;
};
#else
using Threads = platform::linux_host::HostThreads;
using Gate = platform::linux_host::HostGate;

// A hundred times faster than life.
struct HostKernel {
  platform::linux_host::HostTime time{100.0};
  platform::linux_host::HostClock clock{time};
  Threads threads{time};
  Gate gate;
};

struct HostFileSystem : HostKernel {
  platform::linux_host::HostFiles files{gate, threads, u"/data"};
};
inline constexpr char16_t kDataFolder[] = u"/data";

struct HostRegistry {
  std::size_t OpenHandles() { return registry.OpenHandles(); }

  TempDirectory directory;
  Gate gate;
  std::string notice;
  platform::linux_host::SqliteRegistry registry{gate, directory / "registry.db", &notice};
};
#endif

}  // namespace corvane::test
