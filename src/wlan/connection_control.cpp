// Connecting and disconnecting, each to its end: the platform only starts them and tells the end by
// a notification.

#include "foundation/log_lines.h"
#include "launch/launcher.h"
#include "monitors/utils.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "platform/wlan_api.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"
#include "wlan/reason_text.h"
#include "wlan/wlan_call.h"
#include "wlan/wlan_interface.h"

namespace corvane {

namespace {

using namespace platform;

constexpr std::uint64_t kConnectLog = DBG(4);
constexpr std::uint32_t kQueuePauseMs = 100;
constexpr std::uint32_t kPollMs = 1000;
constexpr int kPollsMax = 60;  // an adapter that is still not connected then never will be
constexpr std::uint32_t kRestoreTimeoutMs = 15000;
constexpr std::uint32_t kDisconnectTimeoutMs = 5000;

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

bool CWlanInterface::StartOperation(WlanOperation kind, const std::function<void()>& call) {
  for (;;) {
    {
      const CCritSecLock lock(ObjectLock());
      if (!m_Adapter.Client()) return false;
      if (m_Operation.TryBegin(kind)) {
        try {
          call();
        } catch (...) {
          m_Operation.Abort();
          throw;
        }
        return true;
      }
    }
    Os().threads.Sleep(kQueuePauseMs);
  }
}

void CWlanInterface::ConnectSynchronous(const WLAN_CONNECTION_PARAMETERS& parameters, bool save,
                                        std::uint32_t timeoutMs) {
  try {
    if (!StartOperation(WlanOperation::kConnect, [&] { ConnectInternal(parameters); })) return;
    AwaitConnect(timeoutMs);
    AwaitConnectedState();
    if (save && parameters.wlanConnectionMode == wlan_connection_mode_temporary_profile &&
        parameters.strProfile && *parameters.strProfile) {
      m_Profiles.QueueTempProfile(m_Link.ConnAttrs(), parameters);
    }
  } catch (const Exception& e) {
    LOG_ERROR(u"[%i] CWlanInterface::ConnectToNetwork: Exception: %hs\n", m_Adapter.Idx(),
              e.what());
    throw;
  } catch (const std::exception& e) {
    LOG_ERROR(u"[%i] CWlanInterface::ConnectToNetwork: std:exception: %hs\n", m_Adapter.Idx(),
              e.what());
    throw;
  }
}

void CWlanInterface::AwaitConnect(std::uint32_t timeoutMs) {
  const auto [end, outcome] = m_Operation.Await(WlanOperation::kConnect, timeoutMs);
  if (end != OperationGate::End::kDone) {
    LOG_ERROR(
        u"[%i]CWlanInterface::ConnectSynchronous: [waitBool=%i] Got EXIT/ABORT/TIMEOUT Event!",
        m_Adapter.Idx(), false);
    throw Exception("CWlanInterface::ConnectSynchronous: Got EXIT/ABORT?TIMEOUT Event!");
  }
  LOG_ADAPTER(m_Adapter.Idx(), kConnectLog,
              u"[%i]CWlanInterface::ConnectSynchronous: done WaitOnEvent - NotificationCode=%lu, "
              u"reason code = %lu",
              m_Adapter.Idx(), outcome.m_op_code, outcome.m_op_reason);
  if (outcome.m_op_reason == 0) return;
  if (outcome.m_op_reason == kNoCompletion) {
    LOG_ERROR(u"[%i] CWlanInterface::ConnectSynchronous(): FAILED! NO NotificationCode!\n",
              m_Adapter.Idx());
    throw Exception("WlanConnect(pConnectParams) failed, NO NOTIFICATION");
  }
  const auto reason = static_cast<DWORD>(outcome.m_op_reason);
  LOG_ERROR(
      u"[%i] CWlanInterface::ConnectSynchronous(): FAILED! NotificationCode=%lu, reason code=%lu "
      u"'%s'\n",
      m_Adapter.Idx(), outcome.m_op_code, reason, ReasonText(reason));
  throw Exception("WlanConnect(pConnectParams) failed, reason: %i", reason);
}

// The completion may come before the adapter is in the connected state.
void CWlanInterface::AwaitConnectedState() {
  for (int poll = 0; poll < kPollsMax; ++poll) {
    WLAN_CONNECTION_ATTRIBUTES attrs;
    m_Link.QueryCurrentConnection(&attrs, true);
    const auto& association = attrs.wlanAssociationAttributes;
    LOG_ADAPTER(
        m_Adapter.Idx(), kConnectLog,
        u"[%i] Profile: %s, Mode: %i, SSID: %s, BSSID: %S, PHY: %i, SQ: %lu, Rx: %lu, Tx: %lu\n",
        m_Adapter.Idx(), attrs.strProfileName, attrs.wlanConnectionMode,
        SsidText(association.dot11Ssid), MacTextA(ToMac(association.dot11Bssid)),
        association.dot11PhyType, association.wlanSignalQuality, association.ulRxRate,
        association.ulTxRate);
    if (attrs.isState == wlan_interface_state_connected) {
      LOG_ADAPTER(m_Adapter.Idx(), kConnectLog, u"...State = %i [CONNECTED!]\n", attrs.isState);
      return;
    }
    LOG_ADAPTER(m_Adapter.Idx(), kConnectLog, u"State = %i [waiting]\n", attrs.isState);
    Os().threads.Sleep(kPollMs);
  }
  throw Exception("WlanConnect(pConnectParams) failed, not connected after %i polls", kPollsMax);
}

void CWlanInterface::ConnectInternal(const WLAN_CONNECTION_PARAMETERS& parameters) {
  const auto client = m_Adapter.Client();
  const HANDLE handle = client.Handle();
  DWORD result = ERROR_SUCCESS;
  try {
    result = Os().wlan.WlanConnect(handle, &m_Adapter.Guid(), &parameters, nullptr);
  } catch (const PlatformFault& fault) {
    LOG_ERROR(u"[%i]CWlanInterface::ConnectInternal:: WlanConnect EXCEPTION: 0x%08x",
              m_Adapter.Idx(), fault.code);
    throw Exception("WlanConnect() failed: 0x%08lx", fault.code);
  }
  if (result != ERROR_SUCCESS) {
    LOG_ERROR(
        u"[%i]CWlanInterface::ConnectInternal: WlanConnect FAILED: pConnectParams=0x%p, rc=%lu%s, "
        u"client "
        u"handle=0x%p, IfIdx=%i, strProfile=%s",
        m_Adapter.Idx(), &parameters, result,
        result == ERROR_INVALID_PARAMETER ? u" [ERROR_INVALID_PARAMETER]" : u"", handle,
        m_Adapter.Idx(), parameters.strProfile);
    throw Exception("WlanConnect(pConnectParams) failed: %i", result);
  }
  if (!parameters.pDesiredBssidList) return;
  m_Link.SetOwnBssid(ToMac(parameters.pDesiredBssidList->BSSIDs[0]));
}

void CWlanInterface::ConnectToNetwork(const WString& ssid) {
  WLAN_CONNECTION_PARAMETERS parameters;
  parameters.wlanConnectionMode = wlan_connection_mode_profile;
  parameters.strProfile = ssid.c_str();
  parameters.dot11BssType = dot11_BSS_type_infrastructure;
  ConnectSynchronous(parameters, false, kRestoreTimeoutMs);
  // The platform has chosen the access point; the move to it is the program's own all the same.
  m_Link.SetOwnBssid(ToMac(m_Link.ConnAttrs().wlanAssociationAttributes.dot11Bssid));
}

void CWlanInterface::DisconnectSynchronous(WStringView text) {
  LOG_ADAPTER(m_Adapter.Idx(), kConnectLog, u"[%i]CWlanInterface::DisconnectSynchronous: %s",
              m_Adapter.Idx(), text);
  if (!StartOperation(WlanOperation::kDisconnect, [this] { DisconnectInternal(); })) return;
  const auto [end, outcome] = m_Operation.Await(WlanOperation::kDisconnect, kDisconnectTimeoutMs);
  switch (end) {
    case OperationGate::End::kDone:
      break;
    case OperationGate::End::kTimeout:
      LOG_ERROR(
          u"[%i]CWlanInterface::DisconnectSynchronous: [waitBool=%i] done WaitOnEvent - due to "
          u"TIMEOUT!",
          m_Adapter.Idx(), false);
      throw Exception("WlanDisconnect() - Got Timeout!");
    case OperationGate::End::kExit:
      LOG_ERROR(
          u"[%i]CWlanInterface::DisconnectSynchronous: [waitBool=%i] done WaitOnEvent - due to "
          u"EXIT/ABORT!",
          m_Adapter.Idx(), false);
      throw Exception("WlanDisconnect() - Got Exit Event!");
  }
  if (outcome.m_op_reason == 0) return;
  const auto reason = static_cast<DWORD>(outcome.m_op_reason);
  LOG_ERROR(
      u"[%i]CWlanInterface::DisconnectSynchronous: FAILED! NotificationCode=%lu, reason code = %lu "
      u"[%s]",
      m_Adapter.Idx(), outcome.m_op_code, reason, ReasonText(reason));
  throw Exception("WlanDisconnect() failed, reason: %i", reason);
}

void CWlanInterface::DisconnectInternal() {
  const auto client = m_Adapter.Client();
  const DWORD result = CodeOfCall("CWlanInterface", "WlanDisconnect", [&] {
    return Os().wlan.WlanDisconnect(client.Handle(), &m_Adapter.Guid(), nullptr);
  });
  if (result == ERROR_SUCCESS) return;
  LOG_ERROR(u"[%i]CWlanInterface::DisconnectInternal: WlanDisconnect failed - rc=%lu [IfIdx=%i]",
            m_Adapter.Idx(), result, m_Adapter.Idx());
  throw Exception("WlanDisconnect() failed: %i", result);
}

void CWlanBssEntry::ConnectSynchronous(CWlanInterface* pInterface, WStringView profileText,
                                       bool save, std::uint32_t timeoutMs) {
  if (!pInterface) {
    LOG_ERROR(u"[%i] CWlanBssEntry::ConnectSynchronous: pIf is NULL!\n", m_IfIndex);
    return;
  }
  const auto config = pInterface->Config();
  WString profile(profileText);
  WLAN_CONNECTION_PARAMETERS parameters;
  parameters.wlanConnectionMode = wlan_connection_mode_temporary_profile;
  parameters.dot11BssType = dot11_BSS_type_infrastructure;
  if (!profile.empty()) {
    LOG_ADAPTER(m_IfIndex, kConnectLog,
                u"[%i] CWlanBssEntry::ConnectSynchronous: GOT AD-HOC PROFILE, len=%zu\n", m_IfIndex,
                profile.size());
    config->SetString(value::kConnectStatus, u"connecting");
  } else if (HasUsableProfile()) {
    LOG_ADAPTER(m_IfIndex, kConnectLog,
                u"[%i] CWlanBssEntry::ConnectSynchronous: HAS GOOD PROFILE - %s\n", m_IfIndex,
                m_SSIDW);
    parameters.wlanConnectionMode = wlan_connection_mode_profile;
    profile = m_SSIDW;
    config->SetString(value::kConnectStatus, u"connecting");
  } else if (m_bHasTempProfile && pInterface->GetTempProfile(m_SSIDW, &profile)) {
    LOG_ADAPTER(m_IfIndex, kConnectLog,
                u"[%i] CWlanBssEntry::ConnectSynchronous: USING TEMPORARY PROFILE for %s\n",
                m_IfIndex, m_SSIDW);
  } else {
    config->SetString(value::kConnectStatus, u"external");
    AskForCredentials(*this);
    return;
  }
  DOT11_BSSID_LIST bssids = ListOf(GetBssid());
  parameters.strProfile = profile.c_str();
  parameters.pDesiredBssidList = &bssids;
  pInterface->ConnectSynchronous(parameters, save, timeoutMs);
}

}  // namespace corvane
