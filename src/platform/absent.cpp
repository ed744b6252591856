// The services of platforms that have none of a kind.

#include "platform/driver_api.h"
#include "platform/heap_api.h"
#include "platform/http_api.h"
#include "platform/icmp_api.h"
#include "platform/pipe_api.h"
#include "platform/platform.h"
#include "platform/service_api.h"
#include "platform/socket_api.h"
#include "platform/window_api.h"

namespace corvane::platform::absent {

namespace {

template <typename Api>
Api& TheAbsent() {
  static Api api;
  return api;
}

}  // namespace

DriverApi& Driver() { return TheAbsent<DriverApi>(); }
HeapApi& Heap() { return TheAbsent<HeapApi>(); }
HttpApi& Http() { return TheAbsent<HttpApi>(); }
IcmpApi& Icmp() { return TheAbsent<IcmpApi>(); }
PipeApi& Pipes() { return TheAbsent<PipeApi>(); }
ServiceApi& Services() { return TheAbsent<ServiceApi>(); }
SocketApi& Sockets() { return TheAbsent<SocketApi>(); }
WindowApi& Windows() { return TheAbsent<WindowApi>(); }

}  // namespace corvane::platform::absent
