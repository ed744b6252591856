#pragma once
// Passes over a FakeMachine's adapters, one by one and without threads.

#include "engine/adapter_discovery.h"
#include "engine/driver_link.h"
#include "engine/engine_bits.h"
#include "engine/fake_machine.h"
#include "support/platform_test.h"

namespace corvane::engine_test {

using namespace platform;

// What the driver heard, as "device:kind:value", "all" for all devices.
inline std::string Text(const std::vector<LBDeviceNotification>& list) {
  std::string text;
  for (const auto& one : list) {
    if (!text.empty()) text += ' ';
    text += one.device == kAllDevices ? "all" : std::to_string(one.device);
    text += ":" + std::to_string(one.kind) + ":" + std::to_string(one.value);
  }
  return text;
}

class EnginePassTest : public test::PlatformTest {
 protected:
  EnginePassTest() : machine(std::make_unique<FakeMachine>()) { g_DebugMask = 0; }
  void TearDown() override {
    discovery.reset();
    state.reset();
    EXPECT_EQ(machine->Open(), 0);
    machine.reset();
    PlatformTest::TearDown();
  }

  void Build() {
    state = CLBEngineState::CreateObject();
    ASSERT_EQ(state->CreateHeap(), 0u);
    ASSERT_EQ(state->LBBuildTables(), 0u);
    ASSERT_EQ(state->CreateEvents(), 0u);
    state->ReadSettings();
    state->m_Wlan.Start(ReadSystemVersion());
    LBDriverHandshake(*state, false);
    discovery = std::make_unique<CLBDiscovery>(*state);
  }
  // One pass; what the driver heard of it.
  std::string Pass(bool com = true) {
    if (!state) Build();
    discovery->BeginPass();
    result = discovery->LBDiscoverAdapters(com);
    if (result == ERROR_SUCCESS) discovery->EndPass();
    return Text(machine->driver.TakeNotifications());
  }
  // The first pass and the one behind it, after which the driver knows everything.
  void Settle() {
    Pass();
    Pass();
    ASSERT_EQ(Pass(), "");
  }
  const LBAdapterSlot& Slot(std::size_t i) { return state->Table()->slots[i]; }
  const LBGatewaySlot& Gateway(std::size_t i) { return state->Table()->gateways[i]; }
  std::string Counts() {
    const LBTableHeader& header = state->Table()->Header();
    return std::to_string(header.steerable) + "/" + std::to_string(header.ownAdapters) + "/" +
           std::to_string(header.steerableNow);
  }
  std::vector<FakeAdapter>& Adapters() { return machine->ipHelper.adapters; }

  // A wired adapter behind the router of 192.168.1.1.
  static FakeAdapter Wired(std::uint8_t n) {
    FakeAdapter adapter{u"Realtek PCIe GbE", {2, 0, 0, 0, 0, n}};
    adapter.ifIndex = n;
    adapter.addresses = {"192.168.1." + std::to_string(n) + "/24"};
    adapter.gateways = {"192.168.1.1"};
    return adapter;
  }
  void Router(const std::string& address, std::uint8_t last) {
    machine->ipHelper.neighbours.push_back({address, {0xA, 0, 0, 0, 0, last}, 0});
  }

  std::unique_ptr<FakeMachine> machine;
  CSmartPointer<CLBEngineState> state;
  std::unique_ptr<CLBDiscovery> discovery;
  DWORD result = 0;
};

}  // namespace corvane::engine_test
