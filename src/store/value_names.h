#pragma once
// Names of the registry values that more than one file uses.

namespace corvane::value {

inline constexpr char16_t kConnectStatus[] = u"ConnectStatus";
inline constexpr char16_t kConnectedNetwork[] = u"ConnectedNetwork";
inline constexpr char16_t kDisconnectedNetwork[] = u"DisconnectedNetwork";
inline constexpr char16_t kConnectedSsid[] = u"ConnectedSsid";
inline constexpr char16_t kConnectedBssid[] = u"ConnectedBssid";
inline constexpr char16_t kConnectedLinkRateTX[] = u"ConnectedLinkRateTX";
inline constexpr char16_t kConnectedLinkRateRX[] = u"ConnectedLinkRateRX";
inline constexpr char16_t kCandidatesCSV[] = u"CandidatesCSV";
inline constexpr char16_t kNONCandidatesCSV[] = u"NONCandidatesCSV";
inline constexpr char16_t kSuggestedNetwork[] = u"SuggestedNetwork";
inline constexpr char16_t kSuggestedNetworkSSID[] = u"SuggestedNetworkSSID";
inline constexpr char16_t kSuggestedNetworkBSSID[] = u"SuggestedNetworkBSSID";
inline constexpr char16_t kStatusMessage[] = u"StatusMessage";
inline constexpr char16_t kAdapterDescription[] = u"AdapterDescription";
inline constexpr char16_t kAdapterMac[] = u"AdapterMac";
inline constexpr char16_t kSuggestedNetworkReason[] = u"SuggestedNetworkReason";
inline constexpr char16_t kEnabled[] = u"Enabled";
inline constexpr char16_t kAPScoreThreshold[] = u"APScoreThreshold";
inline constexpr char16_t kScanInterval[] = u"ScanInterval";
inline constexpr char16_t kLQCThreshold[] = u"LQCThreshold";
inline constexpr char16_t kPreferPrivateNetwork[] = u"PreferPrivateNetwork";
inline constexpr char16_t kLatchToPrivate[] = u"LatchToPrivate";
inline constexpr char16_t kGatewayRoaming[] = u"GatewayRoaming";
inline constexpr char16_t kForceAutoConnect[] = u"ForceAutoConnect";
inline constexpr char16_t kPassiveSuggestMode[] = u"PassiveSuggestMode";
inline constexpr char16_t kScoreCfgJson[] = u"ScoreCfgJson";
inline constexpr char16_t kDenylistJson[] = u"DenylistJson";
inline constexpr char16_t kAllowlistJson[] = u"AllowlistJson";
inline constexpr char16_t kVPNInhibited[] = u"VPNInhibited";
inline constexpr char16_t kAirplaneInhibited[] = u"AirplaneInhibited";
inline constexpr char16_t kRadioInhibited[] = u"RadioInhibited";
inline constexpr char16_t kProfiledNetworksJson[] = u"ProfiledNetworksJson";
inline constexpr char16_t kProfiledNetworksInRangeJson[] = u"ProfiledNetworksInRangeJson";

}  // namespace corvane::value
