#pragma once
// A simulated PC whose web a test writes down.

#include <string>
#include <vector>

#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/devices/sim_web.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_session.h"
#include "platform/sim/world/world_loader.h"
#include "support/pc_fixture.h"

namespace corvane::test {

using platform::sim::WebRequest;

class WebTest : public PcTest {
 protected:
  // `web` is the "web" of a world.
  void BootWeb(const std::string& web) {
    Boot(platform::sim::ParseWorld(R"({"web": )" + web + "}", "test"));
  }
  void Do(const std::string& action) { Pc().Devices().Do(action.c_str()); }
  std::vector<WebRequest> Requests() { return Pc().Devices().Web().TakeRequests(); }
  std::size_t Outstanding() { return Pc().Devices().Web().Outstanding(); }
  bool Printed(const std::string& text) {
    return Pc().ConsoleText().find(text) != std::string::npos;
  }
};

}  // namespace corvane::test
