#pragma once
// The one way out of the program. Os() gives the platform in force; it is set once, by an
// application's main or by a test fixture, before any thread starts and while no object of the
// program lives.

namespace corvane::platform {

class ClockApi;
class ConsoleApi;
class CryptoApi;
class DriverApi;
class EventTraceApi;
class FileApi;
class HeapApi;
class HttpApi;
class IcmpApi;
class IpHelperApi;
class NetworkListApi;
class PerfCounterApi;
class PipeApi;
class PowerApi;
class RegistryApi;
class ServiceApi;
class SessionApi;
class SocketApi;
class ThreadApi;
class WindowApi;
class WlanApi;

// A service that a platform lacks: each of its operations answers that it is not implemented.
namespace absent {
DriverApi& Driver();
HeapApi& Heap();
HttpApi& Http();
IcmpApi& Icmp();
PipeApi& Pipes();
ServiceApi& Services();
SocketApi& Sockets();
WindowApi& Windows();
}  // namespace absent

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
  DriverApi& driver = absent::Driver();
  HeapApi& heap = absent::Heap();
  HttpApi& http = absent::Http();
  IcmpApi& icmp = absent::Icmp();
  PipeApi& pipes = absent::Pipes();
  ServiceApi& services = absent::Services();
  SocketApi& sockets = absent::Sockets();
  WindowApi& windows = absent::Windows();
};

// The platform in force; calling it with none set ends the process with a message.
const Platform& Os();
void SetPlatform(const Platform* platform);

}  // namespace corvane::platform

namespace corvane {
using platform::Os;
}
