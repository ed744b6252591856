#include "wlan/notification_dispatch.h"

#include <cstddef>
#include <cstring>

namespace corvane {

namespace {

using namespace platform;

// A connection's data without the profile text behind it.
constexpr std::size_t kConnectionBytes = offsetof(WLAN_CONNECTION_NOTIFICATION_DATA, strProfileXml);

bool Holds(const WLAN_NOTIFICATION_DATA& notification, std::size_t bytes) {
  return notification.pData && notification.dwDataSize >= bytes;
}

bool ReadWord(const WLAN_NOTIFICATION_DATA& notification, DWORD* word) {
  if (!Holds(notification, sizeof(*word))) return false;
  std::memcpy(word, notification.pData, sizeof(*word));
  return true;
}

void DispatchAcm(const WLAN_NOTIFICATION_DATA& notification, IWlanAllNotifications& sink) {
  const DWORD code = notification.NotificationCode;
  DWORD reason = 0;
  switch (code) {
    case wlan_notification_acm_scan_complete:
      sink.ScanNotification(code, 0);
      break;
    case wlan_notification_acm_scan_fail:
      // The end of a scan counts even without its reason.
      ReadWord(notification, &reason);
      sink.ScanNotification(code, reason);
      break;
    case wlan_notification_acm_connection_start:
    case wlan_notification_acm_connection_complete:
    case wlan_notification_acm_connection_attempt_fail:
    case wlan_notification_acm_disconnecting:
    case wlan_notification_acm_disconnected:
      if (Holds(notification, kConnectionBytes))
        sink.ConnectionNotification(code, notification.pData);
      break;
    default:
      break;
  }
}

void DispatchMsm(const WLAN_NOTIFICATION_DATA& notification, IWlanAllNotifications& sink) {
  const DWORD code = notification.NotificationCode;
  DWORD word = 0;
  switch (code) {
    case wlan_notification_msm_radio_state_change:
      if (Holds(notification, sizeof(WLAN_PHY_RADIO_STATE))) {
        sink.MSMRadioStateNotification(notification.pData);
      }
      break;
    case wlan_notification_msm_signal_quality_change:
      if (ReadWord(notification, &word)) sink.MSMSignalQualityNotification(word);
      break;
    case wlan_notification_msm_adapter_operation_mode_change:
      if (ReadWord(notification, &word)) sink.MSMAdapterOperationModeNotification(word);
      break;
    default:
      if ((code >= 1 && code <= 6) || (code >= 9 && code <= 13))
        sink.MSMNotification(notification.pData);
      break;
  }
}

}  // namespace

void DispatchNotification(const WLAN_NOTIFICATION_DATA& notification, IWlanAllNotifications& sink) {
  if (notification.NotificationSource == WLAN_NOTIFICATION_SOURCE_ACM)
    DispatchAcm(notification, sink);
  if (notification.NotificationSource == WLAN_NOTIFICATION_SOURCE_MSM)
    DispatchMsm(notification, sink);
}

}  // namespace corvane
