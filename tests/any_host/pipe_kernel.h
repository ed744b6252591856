#pragma once
// The host's pipes, in life's own time, and where clients find the pipe "Test".

#include "any_host/host_kernel.h"
#include "any_host/temp_directory.h"

#ifdef _WIN32
#include <process.h>

#include "platform/utf.h"
#include "platform/windows/windows_pipes.h"
#else
#include <unistd.h>

#include "platform/linux/host_pipes.h"
#endif

namespace corvane::test {

#ifdef _WIN32
using Pipes = platform::windows::WindowsPipes;

struct PipeKernel {
  // Of this process: names are the machine's.
  const std::string place = "\\\\.\\pipe\\CorvaneTest" + std::to_string(getpid());
  const std::u16string name = platform::ToUtf16(place);
  const platform::LPCWSTR pipePath = name.c_str();
  Threads threads;
  Pipes pipes{threads};
};
inline constexpr std::size_t kManyClients = 254;
#else
using Pipes = platform::linux_host::HostPipes;

struct PipeKernel {
  TempDirectory home;
  const std::string folder = home / "pipe";
  const std::string place = folder + "/CorvaneTest";
  const platform::LPCWSTR pipePath = u"\\\\.\\pipe\\CorvaneTest";
  platform::linux_host::HostTime time{1.0};
  Threads threads{time};
  Gate gate;
  Pipes pipes{gate, threads, folder};
};
inline constexpr std::size_t kManyClients = 300;
#endif

}  // namespace corvane::test
