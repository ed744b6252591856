#include "platform/network_list_api.h"

namespace corvane::platform {

HRESULT NetworkListApi::CoInitializeEx(DWORD) { return E_NOTIMPL; }
void NetworkListApi::CoUninitialize() {}

HRESULT NetworkListApi::CoCreateNetworkListManager(INetworkListManager**) { return E_NOTIMPL; }

}  // namespace corvane::platform
