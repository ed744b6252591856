#pragma once
#include "platform/sim/kernel/sim_registry.h"
#include "settings/global_config_container.h"
#include "settings/interface_config.h"
#include "support/pc_fixture.h"

namespace corvane::test {

inline constexpr char16_t kHome[] = u"SOFTWARE\\OstrelNetworks\\Corvane";
inline constexpr char16_t kAdapter[] = u"SOFTWARE\\OstrelNetworks\\Corvane\\{G}";

// Mains or battery, as the test sets it.
class TestPower : public platform::PowerApi {
 public:
  platform::BOOL GetSystemPowerStatus(platform::SYSTEM_POWER_STATUS* status) override {
    status->ACLineStatus = line;
    return answers ? TRUE : FALSE;
  }
  platform::BYTE line = 1;
  bool answers = true;

 private:
  static constexpr platform::BOOL TRUE = 1, FALSE = 0;
};

// The global configuration, opened, with one adapter.
class ConfigTest : public KernelTest {
 protected:
  ConfigTest() : power(Install<TestPower>()) {}

  CGlobalConfigContainer& Global() { return CGlobalConfigContainer::GetInstance(); }
  CSmartPointer<CQUAYInterfaceConfig> OpenAdapter(WStringView guid = u"{G}") {
    if (!Global().GetRegistry()) Global().Initialize(false);
    return Global().GetIFConfig(Global().AddIFConfig(guid, u"Wi-Fi", u"Test adapter"));
  }
  platform::sim::SimRegistry& Registry() { return kernel.Registry(); }
  std::optional<platform::DWORD> Number(std::u16string_view name) {
    return Registry().GetDword(kAdapter, name);
  }
  std::u16string Text(std::u16string_view name) {
    return Registry().GetText(kAdapter, name).value_or(u"(none)");
  }

  TestPower& power;
};

}  // namespace corvane::test
