#pragma once
// The platform for benchmarks of what needs no device: the host's threads, locks and clock, and a
// console that says nothing.

#include "platform/console_api.h"
#include "platform/crypto_api.h"
#include "platform/event_trace_api.h"
#include "platform/file_api.h"
#include "platform/ip_helper_api.h"
#include "platform/linux/host_clock.h"
#include "platform/linux/host_threads.h"
#include "platform/network_list_api.h"
#include "platform/perf_counter_api.h"
#include "platform/platform.h"
#include "platform/power_api.h"
#include "platform/registry_api.h"
#include "platform/session_api.h"
#include "platform/wlan_api.h"

namespace corvane::bench {

// In force while it lives.
class BenchPlatform {
 public:
  BenchPlatform() { platform::SetPlatform(&m_Platform); }
  ~BenchPlatform() { platform::SetPlatform(nullptr); }
  BenchPlatform(const BenchPlatform&) = delete;
  BenchPlatform& operator=(const BenchPlatform&) = delete;

 private:
  class SilentConsole : public platform::ConsoleApi {
   public:
    void WriteOutput(std::string_view) override {}
    void WriteError(std::string_view) override {}
    void FlushOutput() override {}
  };

  platform::linux_host::HostTime m_Time{1.0};
  platform::linux_host::HostThreads m_Threads{m_Time};
  platform::linux_host::HostClock m_Clock{m_Time};
  SilentConsole m_Console;
  platform::CryptoApi m_Crypto;
  platform::EventTraceApi m_EventTrace;
  platform::FileApi m_Files;
  platform::IpHelperApi m_IpHelper;
  platform::NetworkListApi m_NetworkList;
  platform::PerfCounterApi m_PerfCounters;
  platform::PowerApi m_Power;
  platform::RegistryApi m_Registry;
  platform::SessionApi m_Session;
  platform::WlanApi m_Wlan;
  platform::Platform m_Platform{m_Threads,  m_Clock,    m_Console,     m_Crypto,       m_EventTrace,
                                m_Files,    m_IpHelper, m_NetworkList, m_PerfCounters, m_Power,
                                m_Registry, m_Session,  m_Wlan};
};

}  // namespace corvane::bench
