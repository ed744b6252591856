#pragma once
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/clock_api.h"
#include "platform/console_api.h"
#include "platform/crypto_api.h"
#include "platform/driver_api.h"
#include "platform/event_trace_api.h"
#include "platform/file_api.h"
#include "platform/heap_api.h"
#include "platform/http_api.h"
#include "platform/ip_helper_api.h"
#include "platform/network_list_api.h"
#include "platform/perf_counter_api.h"
#include "platform/pipe_api.h"
#include "platform/platform.h"
#include "platform/power_api.h"
#include "platform/registry_api.h"
#include "platform/service_api.h"
#include "platform/session_api.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/simulated_pc.h"
#include "platform/thread_api.h"
#include "platform/wlan_api.h"

namespace corvane::test {

using namespace std::chrono_literals;
using platform::sim::PcOptions;

// Puts what the process keeps between two runs of the program back to its start: closes the log,
// drops the singletons, sets the log's gates to their defaults. On a platform in force, with no
// thread of the program running.
void ResetProcessState();

// What the fixtures share: the reports of a run, and the checks after it.
class RunRecord {
 public:
  explicit RunRecord(const PcOptions& options) : m_Options(options) {}

  // Handler of the simulated PC's reports; the context is the record.
  static void Add(const std::string& report, void* self);
  // The reports so far. What nobody takes fails the test.
  std::string TakeReports() { return std::exchange(m_Reports, {}); }
  // No object of the program may live, and no handle of it be open.
  static void CheckNothingIsLeft(platform::sim::SimKernel& kernel);
  // After the run: no report may be left. Prints the options that make a failed run again.
  void CheckReports();

 private:
  PcOptions m_Options;
  std::string m_Reports;
};

// A test on the simulated PC's kernel: threads in virtual time, registry, files, console, random
// numbers. The test runs on the driving thread. The services of devices answer that they are not
// implemented, until the test installs its own.
//
// When a test ends, threads that still run are abandoned and the singletons are dropped; when its
// fixture's members are gone too, no object of the program and no handle may be left.
class KernelTest : public testing::Test {
 protected:
  explicit KernelTest(const PcOptions& options = {});
  ~KernelTest() override;
  void TearDown() override;  // a fixture that overrides it calls it last

  // Makes a service of the test's own, such as a WlanApi that overrides one operation, and puts it
  // in force. It lives as long as the kernel.
  template <class Service, class... Args>
  Service& Install(Args&&... args) {
    auto service = std::make_shared<Service>(std::forward<Args>(args)...);
    m_Own.push_back(service);
    Use(*service);
    return *service;
  }
  // Puts a service in force that the test owns; it lives until TearDown at least.
  void Use(platform::ClockApi& service);
  void Use(platform::ConsoleApi& service);
  void Use(platform::CryptoApi& service);
  void Use(platform::DriverApi& service);
  void Use(platform::EventTraceApi& service);
  void Use(platform::FileApi& service);
  void Use(platform::HeapApi& service);
  void Use(platform::HttpApi& service);
  void Use(platform::IpHelperApi& service);
  void Use(platform::NetworkListApi& service);
  void Use(platform::PerfCounterApi& service);
  void Use(platform::PipeApi& service);
  void Use(platform::PowerApi& service);
  void Use(platform::RegistryApi& service);
  void Use(platform::ServiceApi& service);
  void Use(platform::SessionApi& service);
  void Use(platform::ThreadApi& service);
  void Use(platform::WlanApi& service);

  void RunFor(std::chrono::milliseconds time) { kernel.RunFor(time); }
  std::string TakeReports() { return m_Record.TakeReports(); }

 private:
  struct Services;
  void PutInForce();

  RunRecord m_Record;
  std::vector<std::shared_ptr<void>> m_Own;
  std::unique_ptr<Services> m_pServices;
  std::optional<platform::Platform> m_Platform;

 protected:
  platform::sim::SimKernel kernel;
};

// A test on a whole simulated PC.
class PcTest : public testing::Test {
 protected:
  PcTest();
  ~PcTest() override;
  void TearDown() override;  // a fixture that overrides it calls it last

  // Makes the PC of the test; once.
  platform::sim::SimulatedPc& Boot(const platform::sim::World& world,
                                   const PcOptions& options = {});
  platform::sim::SimulatedPc& Pc() { return *m_pPc; }

  void RunFor(std::chrono::milliseconds time) { m_pPc->RunFor(time); }
  std::string TakeReports() { return m_Record->TakeReports(); }

 private:
  std::optional<RunRecord> m_Record;
  std::unique_ptr<platform::sim::SimulatedPc> m_pPc;
};

}  // namespace corvane::test
