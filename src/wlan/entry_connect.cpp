#include "wlan/entry_connect.h"

#include <algorithm>

#include "foundation/log_lines.h"
#include "launch/launcher.h"
#include "monitors/utils.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"

namespace corvane {

namespace {

using namespace platform;

constexpr std::uint64_t kConnectLog = DBG(4);

DOT11_BSSID_LIST ListOf(const MacAddress& bssid) {
  DOT11_BSSID_LIST list;
  list.Header = {0x80, 1, sizeof(DOT11_BSSID_LIST)};  // NDIS_OBJECT_TYPE_DEFAULT, revision 1
  list.uNumOfEntries = list.uTotalNumOfEntries = 1;
  std::copy(bssid.begin(), bssid.end(), list.BSSIDs[0]);
  return list;
}

// Leaves the connect to the prompter, which asks the user for credentials; throws when it does not
// start.
void AskForCredentials(const CWlanBssEntry& entry) {
  const bool service = CUtils::GetInstance().IsRunningAsService();
  LOG_ADAPTER(entry.m_IfIndex, kConnectLog,
              u"[%i] CWlanBssEntry::ConnectSynchronous: %s NO PROFILE - %s\n", entry.m_IfIndex,
              service ? u"[SERVICE - start external app to connect]" : u"[running as app]",
              entry.m_SSIDW);
  const auto start = service ? StartPassphraseDeskAsUser : StartPassphraseDeskAsApp;
  if (start(entry.m_IfIndex, entry.m_SSIDW, entry.m_BSSIDText,
            static_cast<std::uint32_t>(entry.m_AuthAlgorithm),
            CGlobalConfigContainer::GetInstance())) {
    return;
  }
  throw Exception(service
                      ? "CWlanBssEntry::ConnectSynchronous() - StartPassphraseDeskAsUser() failed"
                      : "CWlanBssEntry::ConnectSynchronous() - StartPassphraseDeskAsApp() failed");
}

}  // namespace

void ConnectEntry(const CWlanBssEntry& entry, CWlanInterface* adapter, WStringView profileText,
                  bool save, std::uint32_t timeoutMs) {
  if (!adapter) {
    LOG_ERROR(u"[%i] CWlanBssEntry::ConnectSynchronous: pIf is NULL!\n", entry.m_IfIndex);
    return;
  }
  const auto config = adapter->Config();
  WString profile(profileText);
  WLAN_CONNECTION_PARAMETERS parameters;
  parameters.wlanConnectionMode = wlan_connection_mode_temporary_profile;
  parameters.dot11BssType = dot11_BSS_type_infrastructure;
  if (!profile.empty()) {
    LOG_ADAPTER(entry.m_IfIndex, kConnectLog,
                u"[%i] CWlanBssEntry::ConnectSynchronous: GOT AD-HOC PROFILE, len=%zu\n",
                entry.m_IfIndex, profile.size());
    config->SetString(value::kConnectStatus, u"connecting");
  } else if (entry.HasUsableProfile()) {
    LOG_ADAPTER(entry.m_IfIndex, kConnectLog,
                u"[%i] CWlanBssEntry::ConnectSynchronous: HAS GOOD PROFILE - %s\n", entry.m_IfIndex,
                entry.m_SSIDW);
    parameters.wlanConnectionMode = wlan_connection_mode_profile;
    profile = entry.m_SSIDW;
    config->SetString(value::kConnectStatus, u"connecting");
  } else if (entry.m_bHasTempProfile && adapter->GetTempProfile(entry.m_SSIDW, &profile)) {
    LOG_ADAPTER(entry.m_IfIndex, kConnectLog,
                u"[%i] CWlanBssEntry::ConnectSynchronous: USING TEMPORARY PROFILE for %s\n",
                entry.m_IfIndex, entry.m_SSIDW);
  } else {
    config->SetString(value::kConnectStatus, u"external");
    AskForCredentials(entry);
    return;
  }
  DOT11_BSSID_LIST bssids = ListOf(entry.GetBssid());
  parameters.strProfile = profile.c_str();
  parameters.pDesiredBssidList = &bssids;
  adapter->ConnectSynchronous(parameters, save, timeoutMs);
}

void CWlanBssEntry::ConnectSynchronous(CWlanInterface* pInterface, WStringView profileText,
                                       bool save, std::uint32_t timeoutMs) {
  ConnectEntry(*this, pInterface, profileText, save, timeoutMs);
}

}  // namespace corvane
