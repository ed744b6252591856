#pragma once
#include "platform/network_list_api.h"

namespace corvane::test {

// A network list that is there and knows no network.
class QuietNetworkList : public platform::NetworkListApi {
 public:
  platform::HRESULT CoInitializeEx(platform::DWORD) override { return 0; }
  platform::HRESULT CoCreateNetworkListManager(platform::INetworkListManager** manager) override {
    *manager = &m_Manager;
    return 0;
  }

 private:
  struct Manager : platform::INetworkListManager {
    platform::ULONG Release() override { return 0; }
    platform::HRESULT GetNetworks(platform::DWORD, platform::IEnumNetworks**) override {
      return platform::E_FAIL;
    }
    platform::HRESULT GetNetworkConnections(platform::IEnumNetworkConnections**) override {
      return platform::E_FAIL;
    }
  };
  Manager m_Manager;
};

}  // namespace corvane::test
