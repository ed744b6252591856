#include "platform/linux/linux_host.h"

#include <unistd.h>

#include <chrono>
#include <string>

#include "platform/linux/host_child.h"
#include "platform/linux/host_clock.h"
#include "platform/linux/host_console.h"
#include "platform/linux/host_crypto.h"
#include "platform/linux/host_driver.h"
#include "platform/linux/host_event_file.h"
#include "platform/linux/host_files.h"
#include "platform/linux/host_gate.h"
#include "platform/linux/host_heap.h"
#include "platform/linux/host_home.h"
#include "platform/linux/host_http.h"
#include "platform/linux/host_pipes.h"
#include "platform/linux/host_processes.h"
#include "platform/linux/host_threads.h"
#include "platform/linux/sqlite_registry.h"
#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/devices/sim_driver.h"
#include "platform/sim/devices/sim_icmp.h"
#include "platform/sim/devices/sim_sockets.h"
#include "platform/sim/devices/sim_windows.h"
#include "platform/sim/kernel/sim_event_trace.h"
#include "platform/sim/kernel/sim_session.h"
#include "platform/sim/world/world.h"
#include "platform/utf.h"

namespace corvane::platform::linux_host {

namespace {

constexpr std::uint64_t kSeed = 1;
constexpr std::chrono::seconds kMostUnwinding{10};

// Of this user, with a separator at its end.
std::string TempDirectory() {
  const char* value = ProcessEnvironment("TMPDIR");
  std::string path = value && *value == '/' ? value : "/tmp";
  if (!path.ends_with('/')) path += '/';
  return path;
}

}  // namespace

// In the order in which things may fail: the home directory comes before all that could start.
struct LinuxHost::Impl {
  Impl(const HostOptions& options, const sim::World& world)
      : home(options.home, options.shareHome),
        registry(gate, home.RegistryPath(), &notice),
        time(options.speed),
        clock(time),
        threads(time),
        crypto(gate, threads, home.Path()),
        eventTrace(gate, 0),
        eventFile(home.Path() + "/events.jsonl", clock),
        files(gate, threads, ToUtf16(home.Path())),
        session(gate, threads, clock),
        http(gate, threads, time, ReadHostProxies(&ProcessEnvironment), options.connectTo),
        pipes(gate, threads, home.Path() + "/pipe"),
        devices(world, kSeed, deviceHost),
        platform{
            .threads = threads,
            .clock = clock,
            .console = console,
            .crypto = crypto,
            .eventTrace = eventTrace,
            .files = files,
            .ipHelper = devices.IpHelper(),
            .networkList = devices.NetworkList(),
            .perfCounters = devices.PerfCounters(),
            .power = devices.Power(),
            .registry = registry,
            .session = session,
            .wlan = devices.Wlan(),
            .driver = world.driver ? devices.Driver() : static_cast<DriverApi&>(driver),
            .heap = world.driver ? devices.Heap() : heap,
            .http = http,
            .icmp = devices.Icmp(),
            .pipes = pipes,
            .services = world.driver ? devices.Services() : absent::Services(),
            .sockets = devices.Sockets(),
            .windows = devices.Windows(),
        } {
    if (!notice.empty()) console.WriteError("corvane: " + notice + "\n");
    eventTrace.SetObserver(&HostEventFile::Append, &eventFile);
    if (::isatty(STDIN_FILENO) == 1) session.SetWindows({u"Default IME"});
    session.SetTempPath(TempDirectory());
    session.SetProcessLookup(&ExecutableOfProcess);
    if (!options.program.empty()) {
      session.Install(u"Corvane.exe", {.run = [program = options.program] {
                        return HostChild::Start(program, {"-u"});
                      }});
    }
    devices.SetObserver(options.observer);
    devices.Start();
    SetPlatform(&platform);
  }

  ~Impl() {
    threads.WaitForAbandoned(kMostUnwinding);
    devices.Stop();
    SetPlatform(nullptr);
  }

  static void PressKey(void* self) { static_cast<Impl*>(self)->console.PressKey(); }

  HostHome home;
  HostGate gate;
  std::string notice;
  SqliteRegistry registry;
  HostTime time;
  HostClock clock;
  HostThreads threads;
  HostConsole console;
  HostCrypto crypto;
  sim::SimEventTrace eventTrace;
  HostEventFile eventFile;
  HostFiles files;
  sim::SimSession session;
  HostHttp http;
  HostPipes pipes;
  // Of a world without a driver; the one of a world reads the tables in a heap of its own.
  HostDriver driver{absent::Driver(), console};
  HostHeap heap;
  sim::DeviceHost deviceHost{threads, clock, registry, gate, &PressKey, this, &session};
  sim::SimDevices devices;
  Platform platform;
};

LinuxHost::LinuxHost(const HostOptions& options, const sim::World& world)
    : m_pImpl(std::make_unique<Impl>(options, world)) {}
LinuxHost::~LinuxHost() = default;

HostConsole& LinuxHost::Console() { return m_pImpl->console; }
HostThreads& LinuxHost::Threads() { return m_pImpl->threads; }
sim::SimDevices& LinuxHost::Devices() { return m_pImpl->devices; }

}  // namespace corvane::platform::linux_host
