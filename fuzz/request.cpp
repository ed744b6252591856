// A request's text to its reply. The first byte says whether the rest is the text as it comes, or
// the members of an object that a good token is added to.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/log_lines.h"
#include "pipe/named_pipe_listener_json.h"
#include "pipe/pipe_instance.h"
#include "platform/ip_helper_api.h"
#include "platform/network_list_api.h"
#include "platform/perf_counter_api.h"
#include "platform/platform.h"
#include "platform/power_api.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/wlan_api.h"
#include "settings/global_config_container.h"

namespace {

using namespace corvane;

// The service's objects on a simulated PC without devices; they live as long as the process.
struct Service {
  Service() {
    platform::SetPlatform(&m_Platform);
    g_DebugMask = 0;
    CGlobalConfigContainer& global = CGlobalConfigContainer::GetInstance();
    global.Initialize(false);
    global.AddIFConfig(u"{00000000-0000-0000-0000-000000000001}", u"Wi-Fi", u"Adapter");
    const auto pid = m_Kernel.Session().StartProcess(u"Corvane_ConfigApp.exe");
    token = platform::sim::SimCrypto::EncryptToken("session," + std::to_string(pid) + ",1,x");
    pipe.CreateObject();
  }

  std::string token;
  CSmartPointer<CNamedPipeListenerJson> pipe;
  std::unique_ptr<PipeInstanceCtx> client = std::make_unique<PipeInstanceCtx>();

 private:
  platform::sim::SimKernel m_Kernel;
  platform::IpHelperApi m_IpHelper;
  platform::NetworkListApi m_NetworkList;
  platform::PerfCounterApi m_PerfCounters;
  platform::PowerApi m_Power;
  platform::WlanApi m_Wlan;
  platform::Platform m_Platform{.threads = m_Kernel.Threads(),
                                .clock = m_Kernel.Clock(),
                                .console = m_Kernel.Console(),
                                .crypto = m_Kernel.Crypto(),
                                .eventTrace = m_Kernel.EventTrace(),
                                .files = m_Kernel.Files(),
                                .ipHelper = m_IpHelper,
                                .networkList = m_NetworkList,
                                .perfCounters = m_PerfCounters,
                                .power = m_Power,
                                .registry = m_Kernel.Registry(),
                                .session = m_Kernel.Session(),
                                .wlan = m_Wlan,
                                .pipes = m_Kernel.Pipes()};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  static Service& service = *new Service;
  std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] & 1) text = "{\"art\":\"" + service.token + "\"," + text + "}";
  const WString reply = service.pipe->RespondToPipeMessage(Utf8ToWide(text), *service.client);
  if (!reply.starts_with(u"{ \"status\":\"")) std::abort();
  return 0;
}
