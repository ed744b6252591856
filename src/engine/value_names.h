#pragma once
// Names of the values of the engine's key.

namespace corvane::value {

inline constexpr char16_t kDeviceDiscoveryTO[] = u"DeviceDiscoveryTO";
inline constexpr char16_t kEnable11AD[] = u"Enable11AD";
inline constexpr char16_t kEnableOpenVpn[] = u"EnableOpenVpn";
inline constexpr char16_t kSupportOemDevice[] = u"SupportOemDevice";
inline constexpr char16_t kSvcLib_TraceEnabled[] = u"SvcLib_TraceEnabled";

}  // namespace corvane::value
