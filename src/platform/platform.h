#pragma once
// The one way out of the program. Os() gives the platform in force; it is set once, by an
// application's main or by a test fixture, before any thread starts and while no object of the
// program lives.

namespace corvane::platform {

class ClockApi;
class ConsoleApi;
class CryptoApi;
class EventTraceApi;
class FileApi;
class IpHelperApi;
class NetworkListApi;
class PerfCounterApi;
class PowerApi;
class RegistryApi;
class SessionApi;
class ThreadApi;
class WlanApi;

// References to all services; their owner outlives every use.
struct Platform {
  ThreadApi& threads;
  ClockApi& clock;
  ConsoleApi& console;
  CryptoApi& crypto;
  EventTraceApi& eventTrace;
  FileApi& files;
  IpHelperApi& ipHelper;
  NetworkListApi& networkList;
  PerfCounterApi& perfCounters;
  PowerApi& power;
  RegistryApi& registry;
  SessionApi& session;
  WlanApi& wlan;
};

// The platform in force; calling it with none set ends the process with a message.
const Platform& Os();
void SetPlatform(const Platform* platform);

}  // namespace corvane::platform

namespace corvane {
using platform::Os;
}
