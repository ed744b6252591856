#include "service/connect_and_exit.h"

#include <algorithm>

#include "foundation/exception.h"
#include "foundation/format.h"
#include "foundation/guarded.h"
#include "launch/launcher.h"
#include "platform/console_api.h"
#include "platform/platform.h"
#include "platform/socket_api.h"
#include "settings/global_config_container.h"
#include "store/address_text.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

using namespace platform;

namespace {

constexpr WORD kSocketVersion = 0x0202;
constexpr ULONG kPersistDiscoveryProfile = 0x10;  // WLAN_CONNECTION_PERSIST_DISCOVERY_PROFILE
constexpr std::size_t kMaxSsidBytes = 32;
constexpr std::uint32_t kNoLimit = 0xFFFFFFFF;

// A line of this mode, on standard output.
template <typename... Args>
void Tell(WStringView format, const Args&... args) {
  Os().console.WriteOutput("__________>>> ConnectAndExit: " + WideToUtf8(Format(format, args...)));
}

class CSockets {
 public:
  CSockets() = default;
  ~CSockets() {
    GiveBack("CSockets", "WSACleanup", [] { Os().sockets.WSACleanup(); });
  }
  CSockets(const CSockets&) = delete;
  CSockets& operator=(const CSockets&) = delete;
};

DOT11_BSSID_LIST OneBssid(const MacAddress& bssid) {
  DOT11_BSSID_LIST list;
  list.Header = {0x80, 1, 20};  // NDIS_OBJECT_TYPE_DEFAULT, revision 1, size
  list.uNumOfEntries = list.uTotalNumOfEntries = 1;
  std::ranges::copy(bssid, list.BSSIDs[0]);
  return list;
}

CSmartPointer<CWlanInterface> FindTarget(std::uint32_t ifindex) {
  auto& client = CWifiClientContainer::GetInstance();
  for (int i = 0; i < client.GetCount(); ++i) {
    auto adapter = client.GetInterface(i);
    if (adapter && adapter->GetOsIfIndex() == ifindex) return adapter;
  }
  return nullptr;
}

// False for what has been told already.
bool Connect(std::uint32_t ifindex, const std::string& ssid, const MacAddress& bssid) {
  CGlobalConfigContainer::GetInstance().Initialize(false);
  auto& client = CWifiClientContainer::GetInstance();
  client.Initialize();
  if (client.GetCount() == 0) {
    Tell(u"ConnectAndExit: No wireless interfaces found!\n");
    return false;
  }
  const auto adapter = FindTarget(ifindex);
  if (!adapter) {
    Tell(u"ConnectAndExit: Target wireless interfaces not found!\n");
    return false;
  }
  DOT11_SSID name;
  name.uSSIDLength = static_cast<ULONG>(ssid.size());
  std::ranges::copy(ssid, name.ucSSID);
  DOT11_BSSID_LIST list = OneBssid(bssid);
  WLAN_CONNECTION_PARAMETERS parameters;
  parameters.wlanConnectionMode = wlan_connection_mode_discovery_secure;
  parameters.pDot11Ssid = &name;
  parameters.pDesiredBssidList = &list;
  parameters.dot11BssType = dot11_BSS_type_infrastructure;
  parameters.dwFlags = kPersistDiscoveryProfile;
  DoAvailableNetworks();
  adapter->ConnectSynchronous(parameters, false, kNoLimit);
  return true;
}

bool ConnectOrTell(std::uint32_t ifindex, const std::string& ssid, const MacAddress& bssid) {
  try {
    return Connect(ifindex, ssid, bssid);
  } catch (const std::exception& e) {
    Tell(u"exception %S\n", e.what());
    return false;
  }
}

}  // namespace

int ConnectAndExit(std::uint32_t ifindex, WStringView ssid, WStringView bssid) {
  const int code = Guarded("ConnectAndExit", "WSAStartup", static_cast<int>(ERROR_GEN_FAILURE),
                           [] { return Os().sockets.WSAStartup(kSocketVersion); });
  if (code != 0) {
    Tell(u"WSAStartup failed with error: %d\n", code);
    return 1;
  }
  int result = 1;
  {
    const CSockets sockets;
    MacAddress mac{};
    const std::string name = WideToUtf8(ssid);
    if (!MacStringToBinary(u':', Widen(Narrow(bssid)), &mac)) {
      Tell(u"Bad bssid(mac) string: %s\n", bssid);
      return 1;
    }
    if (name.empty()) {
      Tell(u"Bad ssid string: %s\n", ssid);
      return 1;
    }
    if (name.size() > kMaxSsidBytes) {
      Tell(u"Bad ssid too long: %s\n", ssid);
      return 1;
    }
    result = ConnectOrTell(ifindex, name, mac) ? 0 : 1;
    Tell(u"WIFIC_S::GetInstance().Shutdown()\n");
    CWifiClientContainer::GetInstance().Shutdown();
    CGlobalConfigContainer::GetInstance().Shutdown(false);
  }
  Tell(u"returning %i\n", result);
  return result;
}

}  // namespace corvane
