#pragma once
#include "platform/network_list_api.h"
#include "platform/windows/system_library.h"

namespace corvane::platform::windows {

// The Network List Manager by COM (netlistmgr.h). Its objects are wrapped, so that texts come as
// strings; each wrapper holds one reference, which its Release gives back.
class WindowsNetworkList final : public NetworkListApi {
 public:
  explicit WindowsNetworkList(const SystemLibrary& library = kLibrary) : m_Library(library) {}

  HRESULT CoInitializeEx(DWORD model) override;
  void CoUninitialize() override;
  HRESULT CoCreateNetworkListManager(INetworkListManager** manager) override;

 private:
  static inline constinit const SystemLibrary kLibrary{L"ole32.dll"};

  const SystemLibrary& m_Library;
};

}  // namespace corvane::platform::windows
