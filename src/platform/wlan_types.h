#pragma once
// Structures and codes of Native Wifi (wlanapi.h, windot11.h, wlantypes.h), with their Windows
// layout.

#include "platform/types.h"

namespace corvane::platform {

struct DOT11_SSID {
  ULONG uSSIDLength = 0;  // 0 to 32
  BYTE ucSSID[32] = {};
};
static_assert(sizeof(DOT11_SSID) == 36);

using DOT11_MAC_ADDRESS = BYTE[6];

// DOT11_PHY_TYPE
enum : LONG {
  dot11_phy_type_unknown = 0,
  dot11_phy_type_fhss = 1,
  dot11_phy_type_dsss = 2,
  dot11_phy_type_irbaseband = 3,
  dot11_phy_type_ofdm = 4,
  dot11_phy_type_hrdsss = 5,
  dot11_phy_type_erp = 6,
  dot11_phy_type_ht = 7,
  dot11_phy_type_vht = 8,
  dot11_phy_type_dmg = 9,
  dot11_phy_type_he = 10,
};

// DOT11_BSS_TYPE
enum : LONG {
  dot11_BSS_type_infrastructure = 1,
  dot11_BSS_type_independent = 2,
  dot11_BSS_type_any = 3
};

// DOT11_AUTH_ALGORITHM and DOT11_CIPHER_ALGORITHM, the values that the program tells apart.
enum : LONG {
  DOT11_AUTH_ALGO_80211_OPEN = 1,
  DOT11_AUTH_ALGO_80211_SHARED_KEY = 2,
  DOT11_AUTH_ALGO_WPA = 3,
  DOT11_AUTH_ALGO_WPA_PSK = 4,
  DOT11_AUTH_ALGO_RSNA = 6,
  DOT11_AUTH_ALGO_RSNA_PSK = 7,
  DOT11_AUTH_ALGO_WPA3 = 8,
  DOT11_AUTH_ALGO_WPA3_SAE = 9,
};
enum : LONG {
  DOT11_CIPHER_ALGO_NONE = 0,
  DOT11_CIPHER_ALGO_WEP40 = 1,
  DOT11_CIPHER_ALGO_TKIP = 2,
  DOT11_CIPHER_ALGO_CCMP = 4,
};

struct WLAN_RATE_SET {
  ULONG uRateSetLength = 0;  // bytes in use
  std::uint16_t usRateSet[126] = {};
};
static_assert(sizeof(WLAN_RATE_SET) == 256);

struct WLAN_BSS_ENTRY {
  DOT11_SSID dot11Ssid;
  ULONG uPhyId = 0;
  DOT11_MAC_ADDRESS dot11Bssid = {};
  LONG dot11BssType = 0;
  LONG dot11BssPhyType = 0;
  LONG lRssi = 0;          // dBm
  ULONG uLinkQuality = 0;  // 0 to 100
  BYTE bInRegDomain = 0;
  std::uint16_t usBeaconPeriod = 0;
  ULONGLONG ullTimestamp = 0;
  ULONGLONG ullHostTimestamp = 0;
  std::uint16_t usCapabilityInformation = 0;
  ULONG ulChCenterFrequency = 0;  // kHz
  WLAN_RATE_SET wlanRateSet;
  ULONG ulIeOffset = 0;  // from the start of this record
  ULONG ulIeSize = 0;    // bytes
};
static_assert(sizeof(WLAN_BSS_ENTRY) == 360);

struct WLAN_BSS_LIST {
  DWORD dwTotalSize = 0;  // bytes, element bytes included
  DWORD dwNumberOfItems = 0;
  WLAN_BSS_ENTRY wlanBssEntries[1];
};
static_assert(sizeof(WLAN_BSS_LIST) == 368);

inline constexpr DWORD WLAN_AVAILABLE_NETWORK_CONNECTED = 1;
inline constexpr DWORD WLAN_AVAILABLE_NETWORK_HAS_PROFILE = 2;

struct WLAN_AVAILABLE_NETWORK {
  char16_t strProfileName[256] = {};
  DOT11_SSID dot11Ssid;
  LONG dot11BssType = 0;
  ULONG uNumberOfBssids = 0;
  BOOL bNetworkConnectable = 0;
  DWORD wlanNotConnectableReason = 0;
  ULONG uNumberOfPhyTypes = 0;
  LONG dot11PhyTypes[8] = {};
  BOOL bMorePhyTypes = 0;
  ULONG wlanSignalQuality = 0;  // 0 to 100
  BOOL bSecurityEnabled = 0;
  LONG dot11DefaultAuthAlgorithm = 0;
  LONG dot11DefaultCipherAlgorithm = 0;
  DWORD dwFlags = 0;
  DWORD dwReserved = 0;
};
static_assert(sizeof(WLAN_AVAILABLE_NETWORK) == 628);

struct WLAN_AVAILABLE_NETWORK_LIST {
  DWORD dwNumberOfItems = 0;
  DWORD dwIndex = 0;
  WLAN_AVAILABLE_NETWORK Network[1];
};
static_assert(sizeof(WLAN_AVAILABLE_NETWORK_LIST) == 636);

// WLAN_INTERFACE_STATE
enum : LONG {
  wlan_interface_state_not_ready = 0,
  wlan_interface_state_connected = 1,
  wlan_interface_state_ad_hoc_network_formed = 2,
  wlan_interface_state_disconnecting = 3,
  wlan_interface_state_disconnected = 4,
  wlan_interface_state_associating = 5,
  wlan_interface_state_discovering = 6,
  wlan_interface_state_authenticating = 7,
};

struct WLAN_INTERFACE_INFO {
  GUID InterfaceGuid;
  char16_t strInterfaceDescription[256] = {};
  LONG isState = 0;
};
static_assert(sizeof(WLAN_INTERFACE_INFO) == 532);

struct WLAN_INTERFACE_INFO_LIST {
  DWORD dwNumberOfItems = 0;
  DWORD dwIndex = 0;
  WLAN_INTERFACE_INFO InterfaceInfo[1];
};
static_assert(sizeof(WLAN_INTERFACE_INFO_LIST) == 540);

struct WLAN_INTERFACE_CAPABILITY {
  LONG interfaceType = 0;
  BOOL bDot11DSupported = 0;
  DWORD dwMaxDesiredSsidListSize = 0;
  DWORD dwMaxDesiredBssidListSize = 0;
  DWORD dwNumberOfSupportedPhys = 0;
  LONG dot11PhyTypes[64] = {};
};
static_assert(sizeof(WLAN_INTERFACE_CAPABILITY) == 276);

enum : LONG { dot11_radio_state_unknown = 0, dot11_radio_state_on = 1, dot11_radio_state_off = 2 };

struct WLAN_PHY_RADIO_STATE {
  DWORD dwPhyIndex = 0;
  LONG dot11SoftwareRadioState = 0;
  LONG dot11HardwareRadioState = 0;
};

struct WLAN_RADIO_STATE {
  DWORD dwNumberOfPhys = 0;
  WLAN_PHY_RADIO_STATE PhyRadioState[64];
};
static_assert(sizeof(WLAN_RADIO_STATE) == 772);

// WLAN_CONNECTION_MODE
enum : LONG {
  wlan_connection_mode_profile = 0,
  wlan_connection_mode_temporary_profile = 1,
  wlan_connection_mode_discovery_secure = 2,
  wlan_connection_mode_auto = 4  // by the system itself
};

struct WLAN_ASSOCIATION_ATTRIBUTES {
  DOT11_SSID dot11Ssid;
  LONG dot11BssType = 0;
  DOT11_MAC_ADDRESS dot11Bssid = {};
  LONG dot11PhyType = 0;
  ULONG uDot11PhyIndex = 0;
  ULONG wlanSignalQuality = 0;  // 0 to 100
  ULONG ulRxRate = 0;           // kbps
  ULONG ulTxRate = 0;           // kbps
};
static_assert(sizeof(WLAN_ASSOCIATION_ATTRIBUTES) == 68);

struct WLAN_SECURITY_ATTRIBUTES {
  BOOL bSecurityEnabled = 0;
  BOOL bOneXEnabled = 0;
  LONG dot11AuthAlgorithm = 0;
  LONG dot11CipherAlgorithm = 0;
};

struct WLAN_CONNECTION_ATTRIBUTES {
  LONG isState = 0;
  LONG wlanConnectionMode = 0;
  char16_t strProfileName[256] = {};
  WLAN_ASSOCIATION_ATTRIBUTES wlanAssociationAttributes;
  WLAN_SECURITY_ATTRIBUTES wlanSecurityAttributes;
};
static_assert(sizeof(WLAN_CONNECTION_ATTRIBUTES) == 604);

struct NDIS_OBJECT_HEADER {
  BYTE Type = 0;
  BYTE Revision = 0;
  std::uint16_t Size = 0;
};

struct DOT11_BSSID_LIST {
  NDIS_OBJECT_HEADER Header;
  ULONG uNumOfEntries = 0;
  ULONG uTotalNumOfEntries = 0;
  DOT11_MAC_ADDRESS BSSIDs[1] = {};
};
static_assert(sizeof(DOT11_BSSID_LIST) == 20);

struct WLAN_CONNECTION_PARAMETERS {
  LONG wlanConnectionMode = 0;
  LPCWSTR strProfile = nullptr;  // name or XML text, by the mode
  DOT11_SSID* pDot11Ssid = nullptr;
  DOT11_BSSID_LIST* pDesiredBssidList = nullptr;
  LONG dot11BssType = 0;
  DWORD dwFlags = 0;
};

// WLAN_CONNECTION_NOTIFICATION_DATA without the profile text behind it.
struct WLAN_CONNECTION_NOTIFICATION_DATA {
  LONG wlanConnectionMode = 0;
  char16_t strProfileName[256] = {};
  DOT11_SSID dot11Ssid;
  LONG dot11BssType = 0;
  BOOL bSecurityEnabled = 0;
  DWORD wlanReasonCode = 0;
  DWORD dwFlags = 0;
  char16_t strProfileXml[1] = {};
};
static_assert(sizeof(WLAN_CONNECTION_NOTIFICATION_DATA) == 572);

struct WLAN_MSM_NOTIFICATION_DATA {
  LONG wlanConnectionMode = 0;
  char16_t strProfileName[256] = {};
  DOT11_SSID dot11Ssid;
  LONG dot11BssType = 0;
  DOT11_MAC_ADDRESS dot11MacAddr = {};
  BOOL bSecurityEnabled = 0;
  BOOL bFirstPeer = 0;
  BOOL bLastPeer = 0;
  DWORD wlanReasonCode = 0;
};
static_assert(sizeof(WLAN_MSM_NOTIFICATION_DATA) == 580);

struct WLAN_PROFILE_INFO {
  char16_t strProfileName[256] = {};
  DWORD dwFlags = 0;
};
static_assert(sizeof(WLAN_PROFILE_INFO) == 516);

struct WLAN_PROFILE_INFO_LIST {
  DWORD dwNumberOfItems = 0;
  DWORD dwIndex = 0;
  WLAN_PROFILE_INFO ProfileInfo[1];
};

struct DOT11_NETWORK {
  DOT11_SSID dot11Ssid;
  LONG dot11BssType = 0;
};
static_assert(sizeof(DOT11_NETWORK) == 40);

struct DOT11_NETWORK_LIST {
  DWORD dwNumberOfItems = 0;
  DWORD dwIndex = 0;
  DOT11_NETWORK Network[1];
};

// WLAN_FILTER_LIST_TYPE
enum : LONG {
  wlan_filter_list_type_gp_permit = 0,
  wlan_filter_list_type_gp_deny = 1,
  wlan_filter_list_type_user_permit = 2,
  wlan_filter_list_type_user_deny = 3,
};

// WLAN_INTF_OPCODE, the queries in use.
enum : LONG {
  wlan_intf_opcode_radio_state = 4,
  wlan_intf_opcode_interface_state = 6,
  wlan_intf_opcode_current_connection = 7,
  wlan_intf_opcode_channel_number = 8,
  wlan_intf_opcode_current_operation_mode = 12,
  wlan_intf_opcode_rssi = 0x10000102,
};

// WLAN_IHV_CONTROL_TYPE
enum : LONG { wlan_ihv_control_type_service = 0, wlan_ihv_control_type_driver = 1 };

inline constexpr DWORD WLAN_NOTIFICATION_SOURCE_NONE = 0;
inline constexpr DWORD WLAN_NOTIFICATION_SOURCE_ACM = 8;
inline constexpr DWORD WLAN_NOTIFICATION_SOURCE_MSM = 16;
inline constexpr DWORD WLAN_NOTIFICATION_SOURCE_ALL = 65535;

// WLAN_NOTIFICATION_ACM and WLAN_NOTIFICATION_MSM, the codes in use.
enum : DWORD {
  wlan_notification_acm_scan_complete = 7,
  wlan_notification_acm_scan_fail = 8,
  wlan_notification_acm_connection_start = 9,
  wlan_notification_acm_connection_complete = 10,
  wlan_notification_acm_connection_attempt_fail = 11,
  wlan_notification_acm_interface_arrival = 13,
  wlan_notification_acm_interface_removal = 14,
  wlan_notification_acm_profile_change = 15,
  wlan_notification_acm_disconnecting = 20,
  wlan_notification_acm_disconnected = 21,
  wlan_notification_acm_scan_list_refresh = 26,
};
enum : DWORD {
  wlan_notification_msm_associating = 1,
  wlan_notification_msm_associated = 2,
  wlan_notification_msm_authenticating = 3,
  wlan_notification_msm_connected = 4,
  wlan_notification_msm_roaming_start = 5,
  wlan_notification_msm_roaming_end = 6,
  wlan_notification_msm_radio_state_change = 7,
  wlan_notification_msm_signal_quality_change = 8,
  wlan_notification_msm_disconnected = 10,
  wlan_notification_msm_adapter_operation_mode_change = 14,
};

struct WLAN_NOTIFICATION_DATA {
  DWORD NotificationSource = 0;
  DWORD NotificationCode = 0;
  GUID InterfaceGuid;
  DWORD dwDataSize = 0;
  void* pData = nullptr;
};

using WLAN_NOTIFICATION_CALLBACK = void (*)(WLAN_NOTIFICATION_DATA* data, void* context);

// Access masks on a profile (wlanapi.h), and the flag that asks for plain keys.
inline constexpr DWORD WLAN_READ_ACCESS = 0x20001;
inline constexpr DWORD WLAN_EXECUTE_ACCESS = 0x20021;
inline constexpr DWORD WLAN_WRITE_ACCESS = 0x70023;
inline constexpr DWORD WLAN_PROFILE_GET_PLAINTEXT_KEY = 4;

// Reason codes (wlanapi.h).
inline constexpr DWORD WLAN_REASON_CODE_SUCCESS = 0;
inline constexpr DWORD WLAN_REASON_CODE_NETWORK_NOT_COMPATIBLE = 0x20001;
inline constexpr DWORD WLAN_REASON_CODE_GP_DENIED = 0x28003;
inline constexpr DWORD WLAN_REASON_CODE_USER_DENIED = 0x28004;
inline constexpr DWORD WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE = 0x2800B;
inline constexpr DWORD WLAN_REASON_CODE_PROFILE_CHANGED_OR_DELETED = 0x2800C;
inline constexpr DWORD WLAN_REASON_CODE_USER_CANCELLED = 0x38001;
inline constexpr DWORD WLAN_REASON_CODE_ASSOCIATION_FAILURE = 0x38002;
inline constexpr DWORD WLAN_REASON_CODE_ASSOCIATION_TIMEOUT = 0x38003;
inline constexpr DWORD WLAN_REASON_CODE_ROAMING_FAILURE = 0x38008;
inline constexpr DWORD WLAN_REASON_CODE_DRIVER_DISCONNECTED = 0x3800B;
inline constexpr DWORD WLAN_REASON_CODE_DRIVER_OPERATION_FAILURE = 0x3800C;
inline constexpr DWORD WLAN_REASON_CODE_MSMSEC_PSK_MISMATCH_SUSPECTED = 0x48014;
inline constexpr DWORD WLAN_REASON_CODE_INVALID_PROFILE_SCHEMA = 0x80001;

// Results of the WLAN service beside the system's error codes (winerror.h).
inline constexpr DWORD ERROR_BAD_PROFILE = 1206;
inline constexpr DWORD ERROR_INVALID_ENVIRONMENT = 1805;
inline constexpr DWORD ERROR_NDIS_DOT11_POWER_STATE_INVALID = 0x80342002;  // the radio is off

}  // namespace corvane::platform
