#include "platform/windows/windows_host.h"

#include <optional>

#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/devices/sim_driver.h"
#include "platform/sim/devices/sim_heap.h"
#include "platform/sim/devices/sim_icmp.h"
#include "platform/sim/devices/sim_services.h"
#include "platform/sim/devices/sim_sockets.h"
#include "platform/sim/devices/sim_windows.h"
#include "platform/sim/kernel/sim_session.h"
#include "platform/windows/windows_clock.h"
#include "platform/windows/windows_console.h"
#include "platform/windows/windows_crypto.h"
#include "platform/windows/windows_driver.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_event_trace.h"
#include "platform/windows/windows_files.h"
#include "platform/windows/windows_gate.h"
#include "platform/windows/windows_heap.h"
#include "platform/windows/windows_home.h"
#include "platform/windows/windows_http.h"
#include "platform/windows/windows_icmp.h"
#include "platform/windows/windows_instance.h"
#include "platform/windows/windows_ip_helper.h"
#include "platform/windows/windows_network_list.h"
#include "platform/windows/windows_perf_counters.h"
#include "platform/windows/windows_pipes.h"
#include "platform/windows/windows_power.h"
#include "platform/windows/windows_registry.h"
#include "platform/windows/windows_services.h"
#include "platform/windows/windows_session.h"
#include "platform/windows/windows_sockets.h"
#include "platform/windows/windows_threads.h"
#include "platform/windows/windows_windows.h"
#include "platform/windows/windows_wlan.h"

namespace corvane::platform::windows {

namespace {

constexpr std::uint64_t kSeed = 1;
constexpr DWORD kMostUnwindingMs = 10'000;

}  // namespace

// In the order in which things may fail: instance and folders come before all that could start.
struct WindowsHost::Impl {
  // The devices of a world, which stand in the place of this PC's.
  struct Simulated {
    Simulated(const sim::World& world, Impl& impl)
        : session(impl.gate, impl.threads, impl.clock),
          devices(
              world, kSeed,
              {impl.threads, impl.clock, impl.registry, impl.gate, &PressKey, &impl, &session}) {
      session.SetProcessLookup(&ExecutableOfProcess);
    }

    sim::SimSession session;
    sim::SimDevices devices;
  };

  Impl(const WindowsOptions& options, sim::IPcObserver* observer) : instance(options.shareHome) {
    if (!options.shareHome) {
      if (!IsAdministrator()) {
        throw WindowsError(
            "it needs the rights of an administrator: start it from an elevated "
            "prompt, or once with --install");
      }
      home.emplace(options.home);
      crypto.SetHome(home->Path());
    }
    if (!options.worldFile.empty()) {
      const sim::World world = LoadWorld(options);
      simulated = std::make_unique<Simulated>(world, *this);
      simulated->devices.SetObserver(observer);
    }
    files = std::make_unique<WindowsFiles>(options.home.empty() || !home ? u"" : home->Root());
    platform = std::make_unique<Platform>(simulated ? OfWorld(*simulated) : OfThisPc());
    if (simulated) simulated->devices.Start();
    SetPlatform(platform.get());
  }

  ~Impl() {
    threads.AwaitAbandoned(kMostUnwindingMs);
    if (simulated) simulated->devices.Stop();
    SetPlatform(nullptr);
  }

  Platform OfThisPc() {
    return {.threads = threads,
            .clock = clock,
            .console = console,
            .crypto = crypto,
            .eventTrace = eventTrace,
            .files = *files,
            .ipHelper = ipHelper,
            .networkList = networkList,
            .perfCounters = perfCounters,
            .power = power,
            .registry = registry,
            .session = session,
            .wlan = wlan,
            .driver = driver,
            .heap = heap,
            .http = http,
            .icmp = icmp,
            .pipes = pipes,
            .services = services,
            .sockets = sockets,
            .windows = windows};
  }

  Platform OfWorld(Simulated& it) {
    return {.threads = threads,
            .clock = clock,
            .console = console,
            .crypto = crypto,
            .eventTrace = eventTrace,
            .files = *files,
            .ipHelper = it.devices.IpHelper(),
            .networkList = it.devices.NetworkList(),
            .perfCounters = it.devices.PerfCounters(),
            .power = it.devices.Power(),
            .registry = registry,
            .session = it.session,
            .wlan = it.devices.Wlan(),
            .driver = it.devices.Driver(),
            .heap = it.devices.Heap(),
            .http = http,
            .icmp = it.devices.Icmp(),
            .pipes = pipes,
            .services = it.devices.Services(),
            .sockets = it.devices.Sockets(),
            .windows = it.devices.Windows()};
  }

  static void PressKey(void* self) { static_cast<Impl*>(self)->console.PressKey(); }

  WindowsInstance instance;
  std::optional<WindowsHome> home;  // none for a mode that keeps nothing
  WindowsGate gate;
  WindowsConsole console{instance.StopEvent()};
  WindowsClock clock;
  WindowsThreads threads;
  WindowsRegistry registry;
  std::unique_ptr<WindowsFiles> files;
  WindowsCrypto crypto;
  WindowsDriver driver;
  WindowsEventTrace eventTrace;
  WindowsHeap heap;
  WindowsHttp http;
  WindowsIcmp icmp;
  WindowsIpHelper ipHelper;
  WindowsNetworkList networkList;
  WindowsPerfCounters perfCounters;
  WindowsPipes pipes{threads};
  WindowsPower power;
  WindowsServices services;
  WindowsSession session;
  WindowsSockets sockets;
  WindowsWindows windows;
  WindowsWlan wlan;
  std::unique_ptr<Simulated> simulated;  // null: the devices of this PC
  std::unique_ptr<Platform> platform;
};

WindowsHost::WindowsHost(const WindowsOptions& options, sim::IPcObserver* observer)
    : m_pImpl(std::make_unique<Impl>(options, observer)) {}
WindowsHost::~WindowsHost() = default;

WindowsConsole& WindowsHost::Console() { return m_pImpl->console; }
WindowsThreads& WindowsHost::Threads() { return m_pImpl->threads; }

}  // namespace corvane::platform::windows
