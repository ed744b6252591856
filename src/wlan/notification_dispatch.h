#pragma once
#include "platform/wlan_types.h"
#include "wlan/notification_sink.h"

namespace corvane {

// Calls the operation of `sink` that a platform notification stands for. One of an unknown source
// or code, or with less data than its kind has, is passed over.
void DispatchNotification(const platform::WLAN_NOTIFICATION_DATA& notification,
                          IWlanAllNotifications& sink);

}  // namespace corvane
