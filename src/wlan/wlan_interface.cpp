#include "wlan/wlan_interface.h"

namespace corvane {

CWlanInterface::CWlanInterface() : SmartObjEx("interface", LockRank::kInterface) {}

CWlanInterface::~CWlanInterface() = default;

void CWlanInterface::Initialize(CWlanClient* client, const platform::WLAN_INTERFACE_INFO& info) {
  m_bPresent = true;
  m_Operations.Initialize();
  m_Adapter.Initialize(client, info);
  m_Traffic.Initialize();
  m_Adapter.Publish();
  m_Profiles.EnumerateALLAPProfiles();
}

void CWlanInterface::Detach() {
  m_Adapter.Detach();
  m_Link.ForgetIPInfo();
  m_Operations.SignalExit();
}

void CWlanInterface::RefreshIPInfo() {
  if (m_Link.RefreshIPInfo()) m_Air.GatewayRoamingCheck();
}

}  // namespace corvane
