#include "settings/interface_config.h"

namespace corvane {

WStringView LookUpStatusText(std::uint32_t id) {
  switch (id) {
    case 101:
      return u"Network Switching is now restricted to current private network.";
    case 102:
      return u"No profile with Auto-Connect enabled.";
    case 103:
      return u"This is the best available Wifi network. Would you like to connect to it?";
    case 104:
      return u"The Wifi Adapter is disabled.";
    case 105:
      return u"The Wifi Radio is disabled.";
    case 106:
      return u"External roaming detected, network switching is temporarily disabled.";
    case 107:
      return u"No supported wireless adapter found.";
    case 108:
      return u"No wireless network with connection profile found.";
    case 109:
      return u"A Wireless Network that is ";
    case 110:
      return u"better is available. Would you like to connect to it?";
    case 111:
      return u"Please use the Available Networks panel to provide connection credentials for the "
             u"desired netowrk.";
    case 112:
      return u"The current network's signal is weak. Would you like to connect to this better "
             u"network?";
    case 113:
      return u"The service is disabled while VPN is connected.";
    default:
      return {};
  }
}

}  // namespace corvane
