#pragma once
// An adapter that no WLAN service knows, for tests of its parts by themselves.

#include "settings/global_config_container.h"
#include "support/pc_fixture.h"
#include "wlan/adapter_identity.h"

namespace corvane::test {

class PartTest : public KernelTest {
 protected:
  void SetUp() override {
    RunFor(1min);  // ticks of 0 mean "never"
    CGlobalConfigContainer::GetInstance().Initialize(false);
    identity.Initialize(nullptr, {});
    config = identity.Config();
  }
  void TearDown() override {
    CGlobalConfigContainer::GetInstance().Shutdown(false);
    KernelTest::TearDown();
  }

  AdapterIdentity identity;
  CSmartPointer<CQUAYInterfaceConfig> config;
  CCritSec interfaceLock{"interface", LockRank::kInterface};
};

}  // namespace corvane::test
