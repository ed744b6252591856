#pragma once
// The host that the tests run on, by one set of names.

#ifdef _WIN32
#include "platform/windows/windows_clock.h"
#include "platform/windows/windows_files.h"
#include "platform/windows/windows_gate.h"
#include "platform/windows/windows_threads.h"
#else
#include "platform/linux/host_clock.h"
#include "platform/linux/host_files.h"
#include "platform/linux/host_gate.h"
#include "platform/linux/host_threads.h"
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
#endif

}  // namespace corvane::test
