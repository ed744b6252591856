#pragma once
// Names of the registry values. What each of them is, value_table.h tells.

namespace corvane::value {

// Of the home key and of an adapter's.
inline constexpr char16_t kGatewayRoaming[] = u"GatewayRoaming";

// Of the home key.
inline constexpr char16_t kAllowFilterScoreBonus[] = u"AllowFilterScoreBonus";
inline constexpr char16_t kAllowListCSV[] = u"AllowListCSV";
inline constexpr char16_t kAllowlistEnabled[] = u"AllowlistEnabled";
inline constexpr char16_t kBatteryModeSleepSecs[] = u"BatteryModeSleepSecs";
inline constexpr char16_t kBatteryScanIntervalSecs[] = u"BatteryScanIntervalSecs";
inline constexpr char16_t kBootCounter[] = u"BootCounter";
inline constexpr char16_t kBTPenaltyEnabled[] = u"BTPenaltyEnabled";
inline constexpr char16_t kBTPenaltyValue[] = u"BTPenaltyValue";
inline constexpr char16_t kDBWMEnable[] = u"DBWMEnable";
inline constexpr char16_t kDBWMProbeMonthBudgetMB[] = u"DBWMProbeMonthBudgetMB";
inline constexpr char16_t kDCInfo[] = u"DCInfo";
inline constexpr char16_t kDebugIFMask[] = u"DebugIFMask";
inline constexpr char16_t kDebugMask[] = u"DebugMask";
inline constexpr char16_t kDenyListCSV[] = u"DenyListCSV";
inline constexpr char16_t kEnableFileLogging[] = u"EnableFileLogging";
inline constexpr char16_t kEnablePilot[] = u"EnablePilot";
inline constexpr char16_t kEnablePost[] = u"EnablePost";
inline constexpr char16_t kFastPost[] = u"FastPost";
inline constexpr char16_t kFreshDone[] = u"FreshDone";
inline constexpr char16_t kGatewayMacs[] = u"GatewayMacs";
inline constexpr char16_t kIDET[] = u"IDET";
inline constexpr char16_t kIgnoreVPN[] = u"IgnoreVPN";
inline constexpr char16_t kInstallTime[] = u"InstallTime";
inline constexpr char16_t kLBEnabled[] = u"LBEnabled";
inline constexpr char16_t kLBPaused[] = u"LBPaused";
inline constexpr char16_t kLBWeightMode[] = u"LBWeightMode";
inline constexpr char16_t kMonitorWhileDisabled[] = u"MonitorWhileDisabled";
inline constexpr char16_t kNumWifiAdapters[] = u"NumWifiAdapters";
inline constexpr char16_t kPalisadeOptimizer[] = u"PalisadeOptimizer";
inline constexpr char16_t kPolicyProfile[] = u"PolicyProfile";
inline constexpr char16_t kProfiledNetworksJson[] = u"ProfiledNetworksJson";
inline constexpr char16_t kRandomCsv[] = u"RandomCsv";
inline constexpr char16_t kRecordAirMB[] = u"RecordAirMB";
inline constexpr char16_t kRoamingEnabled[] = u"RoamingEnabled";
inline constexpr char16_t kRTAudioMode[] = u"RTAudioMode";
inline constexpr char16_t kRTAudioModeMbps[] = u"RTAudioModeMbps";
inline constexpr char16_t kSCOREDIFFPCT[] = u"SCOREDIFFPCT";
inline constexpr char16_t kSCOREMAX[] = u"SCOREMAX";
inline constexpr char16_t kSCOREMAX_AC[] = u"SCOREMAX_AC";
inline constexpr char16_t kSCOREMAX_LOW_AC[] = u"SCOREMAX_LOW_AC";
inline constexpr char16_t kSCOREMAX_MID_AC[] = u"SCOREMAX_MID_AC";
inline constexpr char16_t kServiceEnable[] = u"ServiceEnable";
inline constexpr char16_t kSurvey1[] = u"Survey1";
inline constexpr char16_t kSurvey2[] = u"Survey2";
inline constexpr char16_t kSurvey3[] = u"Survey3";
inline constexpr char16_t kSystemGuid[] = u"SystemGuid";
inline constexpr char16_t kTelemetryConnectionsCSVFileSizeMB[] =
    u"TelemetryConnectionsCSVFileSizeMB";
inline constexpr char16_t kTelemetryMemo[] = u"TelemetryMemo";
inline constexpr char16_t kULScan[] = u"ULScan";
inline constexpr char16_t kVPNFound[] = u"VPNFound";

// Of an adapter's key.
inline constexpr char16_t kAdapterDescription[] = u"AdapterDescription";
inline constexpr char16_t kAdapterEnabled[] = u"AdapterEnabled";
inline constexpr char16_t kAdapterGuid[] = u"AdapterGuid";
inline constexpr char16_t kAdapterHighestPHYClass[] = u"AdapterHighestPHYClass";
inline constexpr char16_t kAdapterMac[] = u"AdapterMac";
inline constexpr char16_t kAdapterName[] = u"AdapterName";
inline constexpr char16_t kAirplaneInhibited[] = u"AirplaneInhibited";
inline constexpr char16_t kAllowlistJson[] = u"AllowlistJson";
inline constexpr char16_t kAPScoreThreshold[] = u"APScoreThreshold";
inline constexpr char16_t kBestCount[] = u"BestCount";
inline constexpr char16_t kBestNetwork[] = u"BestNetwork";
inline constexpr char16_t kCandidatesCSV[] = u"CandidatesCSV";
inline constexpr char16_t kConnectedBssid[] = u"ConnectedBssid";
inline constexpr char16_t kConnectedLinkRateRX[] = u"ConnectedLinkRateRX";
inline constexpr char16_t kConnectedLinkRateTX[] = u"ConnectedLinkRateTX";
inline constexpr char16_t kConnectedNetwork[] = u"ConnectedNetwork";
inline constexpr char16_t kConnectedSsid[] = u"ConnectedSsid";
inline constexpr char16_t kConnectStatus[] = u"ConnectStatus";
inline constexpr char16_t kDenylistJson[] = u"DenylistJson";
inline constexpr char16_t kDisconnectedNetwork[] = u"DisconnectedNetwork";
inline constexpr char16_t kEnabled[] = u"Enabled";
inline constexpr char16_t kForceAutoConnect[] = u"ForceAutoConnect";
inline constexpr char16_t kLatchToPrivate[] = u"LatchToPrivate";
inline constexpr char16_t kLQCThreshold[] = u"LQCThreshold";
inline constexpr char16_t kNONCandidatesCSV[] = u"NONCandidatesCSV";
inline constexpr char16_t kPassiveSuggestMode[] = u"PassiveSuggestMode";
inline constexpr char16_t kPreferPrivateNetwork[] = u"PreferPrivateNetwork";
inline constexpr char16_t kProfiledNetworksInRangeJson[] = u"ProfiledNetworksInRangeJson";
inline constexpr char16_t kQualityBadCount[] = u"QualityBadCount";
inline constexpr char16_t kQualityBadNetwork[] = u"QualityBadNetwork";
inline constexpr char16_t kQualityGoodCount[] = u"QualityGoodCount";
inline constexpr char16_t kQualityGoodNetwork[] = u"QualityGoodNetwork";
inline constexpr char16_t kRadioEnabled[] = u"RadioEnabled";
inline constexpr char16_t kRadioInhibited[] = u"RadioInhibited";
inline constexpr char16_t kScanInterval[] = u"ScanInterval";
inline constexpr char16_t kScoreCfgJson[] = u"ScoreCfgJson";
inline constexpr char16_t kStatusMessage[] = u"StatusMessage";
inline constexpr char16_t kSuggestCount[] = u"SuggestCount";
inline constexpr char16_t kSuggestedNetwork[] = u"SuggestedNetwork";
inline constexpr char16_t kSuggestedNetworkBSSID[] = u"SuggestedNetworkBSSID";
inline constexpr char16_t kSuggestedNetworkReason[] = u"SuggestedNetworkReason";
inline constexpr char16_t kSuggestedNetworkSSID[] = u"SuggestedNetworkSSID";
inline constexpr char16_t kVPNInhibited[] = u"VPNInhibited";
inline constexpr char16_t kWifi6[] = u"Wifi6";

}  // namespace corvane::value
