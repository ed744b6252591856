#include "platform/sim/devices/sim_wlan_reasons.h"

namespace corvane::platform::sim {

std::u16string ReasonText(DWORD reason) {
  switch (reason) {
    case WLAN_REASON_CODE_SUCCESS:
      return u"The operation was successful.";
    case WLAN_REASON_CODE_NETWORK_NOT_COMPATIBLE:
      return u"The settings do not match those of the network.";
    case WLAN_REASON_CODE_GP_DENIED:
      return u"Group policy does not allow this network.";
    case WLAN_REASON_CODE_USER_DENIED:
      return u"The user does not allow this network.";
    case WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE:
      return u"The specific network is not available.";
    case WLAN_REASON_CODE_PROFILE_CHANGED_OR_DELETED:
      return u"The profile was changed or deleted.";
    case WLAN_REASON_CODE_USER_CANCELLED:
      return u"The operation was cancelled.";
    case WLAN_REASON_CODE_ASSOCIATION_FAILURE:
      return u"The driver disconnected while associating.";
    case WLAN_REASON_CODE_ASSOCIATION_TIMEOUT:
      return u"The association timed out.";
    case WLAN_REASON_CODE_ROAMING_FAILURE:
      return u"The driver disconnected while roaming.";
    case WLAN_REASON_CODE_DRIVER_DISCONNECTED:
      return u"The driver has disconnected.";
    case WLAN_REASON_CODE_DRIVER_OPERATION_FAILURE:
      return u"An operation of the driver has failed.";
    case WLAN_REASON_CODE_MSMSEC_PSK_MISMATCH_SUSPECTED:
      return u"The network security key is probably wrong.";
    case WLAN_REASON_CODE_INVALID_PROFILE_SCHEMA:
      return u"The profile's text is not valid.";
    default:
      return u"The reason is not known.";
  }
}

}  // namespace corvane::platform::sim
