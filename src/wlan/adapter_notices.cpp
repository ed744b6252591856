#include "wlan/adapter_notices.h"

#include <cstring>
#include <optional>

#include "foundation/guarded.h"
#include "foundation/ignored.h"
#include "foundation/log_lines.h"
#include "notify/ap_summary.h"
#include "notify/notification_manager.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "wlan/air_watch.h"

namespace corvane {

namespace {

using namespace platform;

constexpr std::uint64_t kNotifyLog = DBG(4) | DBG(30);
constexpr std::uint32_t kNoDelayMs = 15000;
constexpr std::uint32_t kInhibitOutsideStartMs = 10000;
constexpr std::uint32_t kInhibitOutsideDisconnectingMs = 3000;
constexpr std::uint32_t kInhibitOutsideDisconnectMs = 5000;
constexpr std::uint32_t kInhibitOutsideScanMs = 15000;
constexpr std::size_t kConnectionBytes = offsetof(WLAN_CONNECTION_NOTIFICATION_DATA, strProfileXml);

const char16_t* WordOf(DWORD code) {
  switch (code) {
    case wlan_notification_acm_connection_start:
      return u"[CONNECTION START]";
    case wlan_notification_acm_connection_complete:
      return u"[CONNECTION COMPLETE]";
    case wlan_notification_acm_disconnecting:
      return u"[DISCONNECTING]";
    case wlan_notification_acm_disconnected:
      return u"[DISCONNECTED]";
    default:
      return u"";
  }
}

std::optional<OutsideEvent> EventOf(DWORD code) {
  switch (code) {
    case wlan_notification_acm_connection_start:
      return OutsideEvent::kConnecting;
    case wlan_notification_acm_connection_complete:
      return OutsideEvent::kConnected;
    case wlan_notification_acm_disconnecting:
      return OutsideEvent::kDisconnecting;
    case wlan_notification_acm_disconnected:
      return OutsideEvent::kDisconnected;
    default:
      return std::nullopt;
  }
}

bool IsDisconnect(DWORD code) { return code == wlan_notification_acm_disconnected; }

}  // namespace

template <typename Handler>
void AdapterNotices::GuardHandler(const char* operation, Handler&& handler) {
  try {
    Contained(handler, [&](const Failure& failure) {
      LOG_ERROR(u"[%i]CWlanInterface::%S: %S: %S", m_Adapter.Idx(), operation, failure.Kind(),
                failure.what);
    });
  } catch (const PlatformFault& fault) {
    LOG_ERROR(u"[%i]CWlanInterface::%S: EXCEPTION: 0x%08x", m_Adapter.Idx(), operation, fault.code);
  }
}

void AdapterNotices::ConnectionNotification(DWORD code, const void* data) {
  GuardHandler("ConnectionNotification", [&] { ConnectionNotification_internal(code, data); });
}

void AdapterNotices::ScanNotification(DWORD code, DWORD reason) {
  GuardHandler("ScanNotification", [&] { ScanNotification_internal(code, reason); });
}

void AdapterNotices::MSMNotification(const void* data) {
  GuardHandler("MSMNotification", [&] { MSMNotification_internal(data); });
}

void AdapterNotices::MSMRadioStateNotification(const void* data) {
  GuardHandler("MSMRadioStateNotification", [&] { MSMRadioStateNotification_internal(data); });
}

void AdapterNotices::MSMSignalQualityNotification(DWORD quality) {
  GuardHandler("MSMSignalQualityNotification",
               [&] { MSMSignalQualityNotification_internal(quality); });
}

void AdapterNotices::MSMAdapterOperationModeNotification(DWORD mode) {
  GuardHandler("MSMAdapterOperationModeNotification",
               [&] { MSMAdapterOperationModeNotification_internal(mode); });
}

void AdapterNotices::ConnectionNotification_internal(DWORD code, const void* data) {
  if (!m_Adapter.Client() || !data) return;
  const auto config = m_Adapter.Config();
  config->OpenNoDelay(kNoDelayMs);
  WLAN_CONNECTION_NOTIFICATION_DATA facts;
  std::memcpy(static_cast<void*>(&facts), data, kConnectionBytes);
  const WString ssid = SsidText(facts.dot11Ssid);
  LOG_ADAPTER(m_Adapter.Idx(), kNotifyLog,
              u"[%i]CWlanInterface::ConnectionNotification_internal: NotificationCode=%lu %s, ssid "
              u"%s, reason "
              u"%lu",
              m_Adapter.Idx(), code, WordOf(code), ssid, facts.wlanReasonCode);

  const OperationGate::State state = m_Operations.InFlight();
  const NotificationOwner owner = OwnerOfNotification(state.m_op_busy, state.m_op_kind, code);
  if (const auto event = EventOf(code); event && !owner.weInitiated && !owner.xSide)
    TellOutside(m_Adapter.Idx(), *event, ssid);
  const bool isCompletion = code == wlan_notification_acm_connection_complete || IsDisconnect(code);
  if (!isCompletion) {
    OnNoCompletion(code, owner.weInitiated);
    return;
  }
  config->ClearStatusMessage(kStatusNeedCredentials);
  if (owner.weInitiated) {
    OnOwnCompletion(code, state.m_op_kind, facts.wlanReasonCode, ssid);
  } else {
    if (!IsDisconnect(code))
      m_Deciding.Now().OnOutsideConnect(facts.wlanConnectionMode != wlan_connection_mode_auto,
                                        Os().clock.GetTickCount64());
    OnOutsideCompletion(code, owner.xSide, ssid);
  }
}

void AdapterNotices::OnNoCompletion(DWORD code, bool weInitiated) {
  if (weInitiated) {
    LOG_ADAPTER(
        m_Adapter.Idx(), kNotifyLog,
        u"[%i]CWlanInterface::ConnectionNotification_internal: IGNORE NOTIFICATION! [WE INITIATED] "
        u"[NotificationCode=%lu][NOT COMPLETION CODE]",
        m_Adapter.Idx(), code);
  } else if (code == wlan_notification_acm_connection_start) {
    LOG_ADAPTER(
        m_Adapter.Idx(), kNotifyLog,
        u"[%i]CWlanInterface::ConnectionNotification_internal: IGNORE OUTSIDE NOTIFICATION! "
        u"[NotificationCode=%lu][start CONNECT]",
        m_Adapter.Idx(), code);
    m_Adapter.Config()->Set_InhibitQUAY(kInhibitOutsideStartMs, "out-notify-con");
  } else if (code == wlan_notification_acm_disconnecting) {
    LOG_ADAPTER(
        m_Adapter.Idx(), kNotifyLog,
        u"[%i]CWlanInterface::ConnectionNotification_internal: IGNORE OUTSIDE NOTIFICATION! "
        u"[NotificationCode=%lu][start DISCONNECTING]",
        m_Adapter.Idx(), code);
    m_Adapter.Config()->Set_InhibitQUAY(kInhibitOutsideDisconnectingMs, "out-notify-disc");
  } else {
    LOG_ADAPTER(
        m_Adapter.Idx(), kNotifyLog,
        u"[%i]CWlanInterface::ConnectionNotification_internal: IGNORE OUTSIDE NOTIFICATION! "
        u"[NotificationCode=%lu][NOT COMPLETION CODE]",
        m_Adapter.Idx(), code);
  }
}

void AdapterNotices::ResetReports(DWORD code) {
  const auto config = m_Adapter.Config();
  if (config->IsEtwMode() && IsDisconnect(code))
    config->m_Etw.NotifyClearPreviousSignalQualityBAD();
  config->m_Etw.ResetQualityBad();
  config->m_Etw.ResetQualityGood();
}

void AdapterNotices::OnOutsideCompletion(DWORD code, bool xSide, const WString& ssid) {
  ResetReports(code);
  if (!xSide) {
    LOG_ADAPTER(m_Adapter.Idx(), kNotifyLog,
                u"[%i]CWlanInterface::ConnectionNotification_internal: OUTSIDE NOTIFICATION! "
                u"[disconnectOperation=%i] clearing m_connected_dot11Bssid_if_we_initiated !!!",
                m_Adapter.Idx(), IsDisconnect(code));
    m_Link.SetOwnBssid({});
  }
  if (IsDisconnect(code)) {
    OnOutsideDisconnect(code, xSide, ssid);
  } else {
    OnOutsideConnect(code, ssid);
  }
}

void AdapterNotices::OnOutsideDisconnect(DWORD code, bool xSide, const WString& ssid) {
  const auto config = m_Adapter.Config();
  m_Link.NoteDisconnected();
  ForgetConnection(ssid);
  if (xSide) {
    LOG_ADAPTER(m_Adapter.Idx(), kNotifyLog,
                u"[%i]CWlanInterface::ConnectionNotification_internal: [X-SIDE NOTIFICATION] "
                u"[NotificationCode=%lu][DISCONNECT COMPLETE, FOR INSIDE CONNECT][***INHIBIT QUAY "
                u"5000 ***]",
                m_Adapter.Idx(), code);
  } else {
    LOG_ADAPTER(m_Adapter.Idx(), kNotifyLog,
                u"[%i]CWlanInterface::ConnectionNotification_internal: OUTSIDE NOTIFICATION! "
                u"[NotificationCode=%lu][DISCONNECT COMPLETE][***INHIBIT QUAY 5000 ***]",
                m_Adapter.Idx(), code);
  }
  const WString last = m_Link.LastConnectedSsid();
  if (config->GetRoamingInhibitTick() == 0 && !xSide && ssid == last) {
    LOG_ADAPTER(m_Adapter.Idx(), kNotifyLog,
                u"[%i]CWlanInterface::ConnectionNotification_internal: [OUTSIDE DISCONN "
                u"COMPLETE][ROAM-INHIBIT OFF] ssid %s == last %s [UpdateTimeOfLastConnectedSsid()]",
                m_Adapter.Idx(), ssid, last);
    m_Link.StampLastConnectedSsid();
  }
  PolicyProfile& profile = m_Deciding.Now();
  if (!xSide) profile.OnLinkLost(Os().clock.GetTickCount64());
  config->Set_InhibitQUAY(profile.PauseAfterLossMs(kInhibitOutsideDisconnectMs), "out-disc");
  m_Profiles.SaveTempProfiles();
  QueueNotification(u"Corvane", u"ConnectionChange", u"ExternalDisconnect", u"Unknown", u"Unknown",
                    m_Adapter.MacText(), m_Adapter.Description());
}

void AdapterNotices::OnOutsideConnect(DWORD code, const WString& ssid) {
  const auto config = m_Adapter.Config();
  LOG_ADAPTER(m_Adapter.Idx(), kNotifyLog,
              u"[%i] CWlanInterface::ConnectionNotification_internal: OUTSIDE NOTIFICATION! "
              u"NotificationCode=%lu [CONNECTION COMPLETE][--- NOT CLEARING INHIBIT QUAY ---]",
              m_Adapter.Idx(), code);
  ConnectionFacts facts;
  if (m_Link.GetConnectedSSID(&facts)) {
    TellOfOutsideConnect(facts);
  } else {
    LOG_ADAPTER(m_Adapter.Idx(), kNotifyLog,
                u"[%i] CWlanInterface::ConnectionNotification_internal: OUTSIDE NOTIFICATION! "
                u"NotificationCode=%lu -- m_Link.GetConnectedSSID() failed, could not send pipe "
                u"notification\n",
                m_Adapter.Idx(), code);
  }
  if (config->GetRoamingInhibitTick() != 0) {
    const WString last = m_Link.LastConnectedSsid();
    if (ssid == last) {
      LOG_ADAPTER(m_Adapter.Idx(), kNotifyLog,
                  u"[%i] CWlanInterface::ConnectionNotification_internal: [OUTSIDE CONN "
                  u"COMPLETE][ROAM-INHIBIT ON] ssid %s == last %s [~~ KEEP ROAMING-INHIBIT ~~]\n",
                  m_Adapter.Idx(), ssid, last);
    } else {
      LOG_ADAPTER(
          m_Adapter.Idx(), kNotifyLog,
          u"[%i] CWlanInterface::ConnectionNotification_internal: [OUTSIDE CONN "
          u"COMPLETE][ROAM-INHIBIT ON] ssid %s != last %s [!~!~ STOP ROAMING-INHIBIT ~!~!]\n",
          m_Adapter.Idx(), ssid, last);
      m_Link.SetLastConnectedSsid(ssid);
      config->ClearRoamingInhibit();
    }
  }
  config->m_bForcePopupOverride = true;
  LOG_ADAPTER(m_Adapter.Idx(), kNotifyLog,
              u"[%i] CWlanInterface::ConnectionNotification_internal: "
              u"SetForcePopupSuggestionOverride(true)\n",
              m_Adapter.Idx());
  // Whoever is connected needs no suggestion of that network; without its BSSID of none of its
  // parts.
  config->m_Popup.ClearPopupSuggestedAP_If_Equal(
      ssid, facts.connected ? MacText(facts.bssid) : WString());
}

// 0 when the platform does not tell.
std::uint32_t AdapterNotices::ChannelNow() {
  try {
    return m_Link.QueryChannel();
  } catch (const std::exception&) {  // logged where it was thrown
    return 0;
  }
}

void AdapterNotices::TellOfOutsideConnect(const ConnectionFacts& facts) {
  ApSummary summary;
  summary.score = 0;
  summary.bssid = MacText(facts.bssid);
  summary.quality = facts.quality;
  summary.ssid = facts.ssid;
  summary.details.emplace();
  CSmartPointer<CWlanBssEntry> entry;
  {
    const CCritSecLock lock(m_Air.Lock());
    if (m_Air.FindBssEntry(facts.ssid, facts.bssid, &entry)) {
      const ScoreContext context = m_Air.GetScoreContext();
      summary.score = entry->GetScore(false, context);
      summary.channel = entry->m_Channel;
      summary.details->maxRateMbps = static_cast<std::uint32_t>(entry->GetMaxRate(context));
    }
  }
  if (!entry) summary.channel = ChannelNow();
  QueueNotification(u"Corvane", u"ConnectionChange", u"ExternalConnect", ShortApSummary(summary),
                    u"Unknown", m_Adapter.MacText(), m_Adapter.Description());
}

void AdapterNotices::OnOwnCompletion(DWORD code, WlanOperation kind, DWORD reason,
                                     const WString& ssid) {
  const auto config = m_Adapter.Config();
  Ignored(m_Operations.Complete(kind, code, static_cast<std::int32_t>(reason)));
  ResetReports(code);
  if (IsDisconnect(code)) {
    m_Link.SetOwnBssid({});
    ForgetConnection(ssid);
    m_Profiles.SaveTempProfiles();
  } else {
    config->m_bForcePopupOverride = false;
    LOG_ADAPTER(m_Adapter.Idx(), kNotifyLog,
                u"[%i] CWlanInterface::ConnectionNotification_internal: "
                u"SetForcePopupSuggestionOverride(false)\n",
                m_Adapter.Idx());
    const MacAddress own = m_Link.OwnBssid();
    config->m_Popup.ClearPopupSuggestedAP_If_Equal(ssid, IsZero(own) ? WString() : MacText(own));
  }
  const std::uint64_t inhibited = config->GetRoamingInhibitTick();
  if (inhibited == 0) return;
  LOG_ADAPTER(
      m_Adapter.Idx(), kNotifyLog,
      u"[%i] CWlanInterface::ConnectionNotification_internal:[INSIDE CONN/DISCONN "
      u"COMPLETE][ROAM-INHIBIT %I64u ticks] ssid %s, last %s [!~!~ STOP ROAMING-INHIBIT ~!~!]\n",
      m_Adapter.Idx(), inhibited, ssid, m_Link.LastConnectedSsid());
  m_Link.SetLastConnectedSsid(ssid);
  config->ClearRoamingInhibit();
}

void AdapterNotices::ForgetConnection(const WString& ssid) {
  const auto config = m_Adapter.Config();
  m_Contention.Clear();
  m_Scans.ForgetConnectedScans();
  LogRecord(kLogMemory, "<I>", "[Adapter ", m_Adapter.Idx(), "] Disconnected from ", ssid);
  config->m_force_scan_counter = 1;  // the next round looks for another network at once
  m_Traffic.ResetGates();
}

void AdapterNotices::ScanNotification_internal(DWORD code, DWORD reason) {
  if (!m_Adapter.Client()) return;
  const bool complete = code == wlan_notification_acm_scan_complete;
  const OperationGate::State state = m_Operations.InFlight();
  if (state.m_op_busy && state.m_op_kind == WlanOperation::kScan) {
    if (m_Operations.Complete(WlanOperation::kScan, code, static_cast<std::int32_t>(reason))) {
      LOG_ADAPTER(m_Adapter.Idx(), DBG(30),
                  u"[%i]CWlanInterface::ScanNotification_internal: m_pScanSyncEvent->SetEvent() "
                  u"++++++++++++++ [NotificationCode=%lu]%s",
                  m_Adapter.Idx(), code, complete ? u"[SCAN COMPLETE]" : u"[SCAN FAILED]");
    }
    return;
  }
  LOG_ADAPTER(m_Adapter.Idx(), DBG(30),
              u"[%i]CWlanInterface::ScanNotification_internal: OUTSIDE NOTIFICATION! "
              u"[NotificationCode=%lu]%s[***INHIBIT QUAY 15000 ***]",
              m_Adapter.Idx(), code, complete ? u"[SCAN COMPLETE]" : u"");
  TellOutside(m_Adapter.Idx(), OutsideEvent::kScan);
  m_Adapter.Config()->Set_InhibitQUAY(kInhibitOutsideScanMs, "out-scan");
}

void AdapterNotices::MSMNotification_internal(const void*) {
  LOG_ADAPTER(m_Adapter.Idx(), kNotifyLog, u"[%i]CWlanInterface::MSMNotification_internal",
              m_Adapter.Idx());
}

void AdapterNotices::MSMRadioStateNotification_internal(const void* data) {
  if (!data) return;
  WLAN_PHY_RADIO_STATE state;
  std::memcpy(static_cast<void*>(&state), data, sizeof(state));
  LOG_ADAPTER(
      m_Adapter.Idx(), kNotifyLog,
      u"[%i]CWlanInterface::MSMRadioStateNotification_internal: dwPhyIndex=%lu, software=%i, "
      u"hardware=%i",
      m_Adapter.Idx(), state.dwPhyIndex, state.dot11SoftwareRadioState,
      state.dot11HardwareRadioState);
  const bool on = state.dot11SoftwareRadioState != dot11_radio_state_off &&
                  state.dot11HardwareRadioState != dot11_radio_state_off;
  TellOutside(m_Adapter.Idx(), on ? OutsideEvent::kRadioOn : OutsideEvent::kRadioOff);
  m_Radio.Store(state);
}

void AdapterNotices::MSMSignalQualityNotification_internal(DWORD quality) {
  LOG_ADAPTER(m_Adapter.Idx(), kNotifyLog,
              u"[%i]CWlanInterface::MSMSignalQualityNotification_internal: %lu", m_Adapter.Idx(),
              quality);
}

void AdapterNotices::MSMAdapterOperationModeNotification_internal(DWORD mode) {
  LOG_ADAPTER(m_Adapter.Idx(), kNotifyLog,
              u"[%i]CWlanInterface::MSMAdapterOperationModeNotification_internal: %lu",
              m_Adapter.Idx(), mode);
}

}  // namespace corvane
