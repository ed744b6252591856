#include "support/pc_fixture.h"

#include <cstdio>

#include "foundation/log_lines.h"
#include "foundation/singleton.h"
#include "foundation/smart_obj.h"
#include "log/log.h"

namespace corvane::test {

using namespace platform;

namespace {

std::string LiveObjectNames() {
  std::string names;
  live_objects::ForEach(
      [](const live_objects::Entry& entry, void* context) {
        static_cast<std::string*>(context)->append(entry.name).append(" ");
      },
      &names);
  return names;
}

}  // namespace

void ResetProcessState() {
  StopLogger();
  singletons::DropAll();
  g_DebugMask = kDefaultDebugMask;
  g_DebugIFMask = kDefaultDebugIFMask;
  g_EnableFileLogging = 1;
}

void RunRecord::Add(const std::string& report, void* self) {
  static_cast<RunRecord*>(self)->m_Reports += report + "\n";
}

void RunRecord::CheckNothingIsLeft(sim::SimKernel& kernel) {
  EXPECT_EQ(LiveObjectCount(), 0u) << LiveObjectNames();
  EXPECT_EQ(kernel.OpenHandles(), 0u) << "threads, events and semaphores";
  EXPECT_EQ(kernel.Registry().OpenHandles(), 0u) << "registry keys";
  EXPECT_EQ(kernel.Files().OpenHandles(), 0u) << "files";
  EXPECT_EQ(kernel.Session().OpenHandles(), 0u) << "tokens, processes and pipes";
  EXPECT_EQ(kernel.EventTrace().OpenHandles(), 0u) << "event providers";
  EXPECT_EQ(kernel.Pipes().OpenHandles(), 0u) << "named pipes, their tokens and descriptors";
  EXPECT_EQ(kernel.Pipes().OpenRecords(), 0u) << "records of pipe clients";
  EXPECT_EQ(kernel.Crypto().OpenHandles(), 0u) << "keys and algorithms";
}

void RunRecord::CheckReports() {
  EXPECT_EQ(TakeReports(), "");
  if (testing::Test::HasFailure()) {
    std::printf("The run: seed %llu, interleave %s, fault rate %g\n",
                static_cast<unsigned long long>(m_Options.seed),
                m_Options.interleave ? "on" : "off", m_Options.faultRate);
  }
}

struct KernelTest::Services {
  explicit Services(sim::SimKernel& kernel)
      : threads(&kernel.Threads()),
        clock(&kernel.Clock()),
        console(&kernel.Console()),
        crypto(&kernel.Crypto()),
        eventTrace(&kernel.EventTrace()),
        files(&kernel.Files()),
        pipes(&kernel.Pipes()),
        registry(&kernel.Registry()),
        session(&kernel.Session()) {}

  IpHelperApi defaultIpHelper;
  NetworkListApi defaultNetworkList;
  PerfCounterApi defaultPerfCounters;
  PowerApi defaultPower;
  WlanApi defaultWlan;

  ThreadApi* threads;
  ClockApi* clock;
  ConsoleApi* console;
  CryptoApi* crypto;
  EventTraceApi* eventTrace;
  FileApi* files;
  DriverApi* driver = &absent::Driver();
  HeapApi* heap = &absent::Heap();
  HttpApi* http = &absent::Http();
  IpHelperApi* ipHelper = &defaultIpHelper;
  NetworkListApi* networkList = &defaultNetworkList;
  PipeApi* pipes;
  PerfCounterApi* perfCounters = &defaultPerfCounters;
  PowerApi* power = &defaultPower;
  RegistryApi* registry;
  ServiceApi* services = &absent::Services();
  SessionApi* session;
  WlanApi* wlan = &defaultWlan;
};

KernelTest::KernelTest(const PcOptions& options) : m_Record(options), kernel(options) {
  m_pServices = std::make_unique<Services>(kernel);
  kernel.GetScheduler().SetReportHandler(RunRecord::Add, &m_Record);
  PutInForce();
}

KernelTest::~KernelTest() {
  singletons::DropAll();  // the members of a fixture may have used some as they went
  RunRecord::CheckNothingIsLeft(kernel);
  m_Record.CheckReports();
  SetPlatform(nullptr);
}

void KernelTest::TearDown() {
  kernel.Faults().Clear();
  kernel.EndThreads();
  ResetProcessState();
}

void KernelTest::PutInForce() {
  const Services& use = *m_pServices;
  SetPlatform(nullptr);
  m_Platform.emplace(Platform{.threads = *use.threads,
                              .clock = *use.clock,
                              .console = *use.console,
                              .crypto = *use.crypto,
                              .eventTrace = *use.eventTrace,
                              .files = *use.files,
                              .ipHelper = *use.ipHelper,
                              .networkList = *use.networkList,
                              .perfCounters = *use.perfCounters,
                              .power = *use.power,
                              .registry = *use.registry,
                              .session = *use.session,
                              .wlan = *use.wlan,
                              .driver = *use.driver,
                              .heap = *use.heap,
                              .http = *use.http,
                              .pipes = *use.pipes,
                              .services = *use.services});
  SetPlatform(&*m_Platform);
}

void KernelTest::Use(ClockApi& service) { m_pServices->clock = &service, PutInForce(); }
void KernelTest::Use(ConsoleApi& service) { m_pServices->console = &service, PutInForce(); }
void KernelTest::Use(CryptoApi& service) { m_pServices->crypto = &service, PutInForce(); }
void KernelTest::Use(DriverApi& service) { m_pServices->driver = &service, PutInForce(); }
void KernelTest::Use(EventTraceApi& service) { m_pServices->eventTrace = &service, PutInForce(); }
void KernelTest::Use(FileApi& service) { m_pServices->files = &service, PutInForce(); }
void KernelTest::Use(HeapApi& service) { m_pServices->heap = &service, PutInForce(); }
void KernelTest::Use(HttpApi& service) { m_pServices->http = &service, PutInForce(); }
void KernelTest::Use(IpHelperApi& service) { m_pServices->ipHelper = &service, PutInForce(); }
void KernelTest::Use(NetworkListApi& service) { m_pServices->networkList = &service, PutInForce(); }
void KernelTest::Use(PerfCounterApi& service) {
  m_pServices->perfCounters = &service, PutInForce();
}
void KernelTest::Use(PipeApi& service) { m_pServices->pipes = &service, PutInForce(); }
void KernelTest::Use(PowerApi& service) { m_pServices->power = &service, PutInForce(); }
void KernelTest::Use(RegistryApi& service) { m_pServices->registry = &service, PutInForce(); }
void KernelTest::Use(ServiceApi& service) { m_pServices->services = &service, PutInForce(); }
void KernelTest::Use(SessionApi& service) { m_pServices->session = &service, PutInForce(); }
void KernelTest::Use(ThreadApi& service) { m_pServices->threads = &service, PutInForce(); }
void KernelTest::Use(WlanApi& service) { m_pServices->wlan = &service, PutInForce(); }

}  // namespace corvane::test
