#pragma once
#include "platform/network_list_api.h"

namespace corvane::platform::windows {

// The Network List Manager by COM (netlistmgr.h). Its objects are wrapped, so that texts come as
// strings; each wrapper holds one reference, which its Release gives back.
class WindowsNetworkList final : public NetworkListApi {
 public:
  HRESULT CoInitializeEx(DWORD model) override;
  void CoUninitialize() override;
  HRESULT CoCreateNetworkListManager(INetworkListManager** manager) override;
};

}  // namespace corvane::platform::windows
