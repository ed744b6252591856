#include "platform/sim/simulated_pc.h"

#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/devices/sim_driver.h"
#include "platform/sim/devices/sim_icmp.h"
#include "platform/sim/devices/sim_sockets.h"
#include "platform/sim/devices/sim_web.h"
#include "platform/sim/devices/sim_windows.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/world/world.h"

namespace corvane::platform::sim {

struct SimulatedPc::Impl {
  Impl(const World& world, const PcOptions& options)
      : kernel(options),
        host{.threads = kernel.DeviceThreads(),
             .clock = kernel.Clock(),
             .registry = kernel.Registry().ForDevices(),
             .gate = kernel.Gate(),
             .pressKey = [](void* self) { static_cast<SimKernel*>(self)->Console().PressKey(); },
             .pressKeyContext = &kernel,
             .session = &kernel.Session(),
             .pipes = &kernel.Pipes()},
        devices(world, options.seed, host),
        platform{
            .threads = kernel.Threads(),
            .clock = kernel.Clock(),
            .console = kernel.Console(),
            .crypto = kernel.Crypto(),
            .eventTrace = kernel.EventTrace(),
            .files = kernel.Files(),
            .ipHelper = devices.IpHelper(),
            .networkList = devices.NetworkList(),
            .perfCounters = devices.PerfCounters(),
            .power = devices.Power(),
            .registry = kernel.Registry(),
            .session = kernel.Session(),
            .wlan = devices.Wlan(),
            .driver = devices.Driver(),
            .heap = devices.Heap(),
            .http = devices.Web(),
            .icmp = devices.Icmp(),
            .pipes = kernel.Pipes(),
            .services = devices.Services(),
            .sockets = devices.Sockets(),
            .windows = devices.Windows(),
        } {
    for (const ProgramFile& file : world.files) {
      kernel.Files().Write(SimFiles::kProgramFolder + (u"/" + file.name), file.text);
    }
    devices.SetObserver(options.observer);
    devices.Start();
    SetPlatform(&platform);
  }

  // The program's threads go first, as they call the devices; the devices stop while the kernel can
  // still run their thread.
  ~Impl() {
    kernel.Faults().Clear();
    kernel.EndThreads();
    devices.Stop();
    SetPlatform(nullptr);
  }

  SimKernel kernel;
  DeviceHost host;
  SimDevices devices;
  Platform platform;
};

SimulatedPc::SimulatedPc(const World& world, const PcOptions& options)
    : m_pImpl(std::make_unique<Impl>(world, options)) {}
SimulatedPc::~SimulatedPc() = default;

const Platform& SimulatedPc::GetPlatform() const { return m_pImpl->platform; }

void SimulatedPc::RunFor(std::chrono::milliseconds time) { m_pImpl->kernel.RunFor(time); }

std::chrono::milliseconds SimulatedPc::Now() const { return m_pImpl->kernel.Now(); }

bool SimulatedPc::RunUntil(bool (*done)(void* context), void* context,
                           std::chrono::milliseconds limit, std::chrono::milliseconds step) {
  return m_pImpl->kernel.RunUntil(done, context, limit, step);
}

void SimulatedPc::EndThreads() { m_pImpl->kernel.EndThreads(); }

void SimulatedPc::PressKey() { m_pImpl->kernel.Console().PressKey(); }

void SimulatedPc::SetReportHandler(void (*handler)(const std::string& report, void* context),
                                   void* context) {
  m_pImpl->kernel.GetScheduler().SetReportHandler(handler, context);
}

std::string SimulatedPc::ConsoleText() const { return m_pImpl->kernel.Console().Text(); }

FaultPlan& SimulatedPc::Faults() { return m_pImpl->kernel.Faults(); }
SimClock& SimulatedPc::Clock() { return m_pImpl->kernel.Clock(); }
SimDevices& SimulatedPc::Devices() { return m_pImpl->devices; }
SimFiles& SimulatedPc::Files() { return m_pImpl->kernel.Files(); }
SimRegistry& SimulatedPc::Registry() { return m_pImpl->kernel.Registry(); }
SimKernel& SimulatedPc::Kernel() { return m_pImpl->kernel; }

std::uint64_t SimulatedPc::SeamCalls() const { return m_pImpl->kernel.GetScheduler().Calls(); }
std::uint64_t SimulatedPc::InjectedFaults() const { return m_pImpl->kernel.Faults().Injected(); }
int SimulatedPc::LiveThreads() const { return m_pImpl->kernel.GetScheduler().LiveThreads(); }

}  // namespace corvane::platform::sim
