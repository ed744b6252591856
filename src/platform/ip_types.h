#pragma once
// Adapter, address and neighbour lists as the IP Helper lays them out (iptypes.h, netioapi.h), with
// the sizes of 64-bit Windows.

#include "platform/types.h"

namespace corvane::platform {

inline constexpr WORD AF_UNSPEC = 0;
inline constexpr WORD AF_INET = 2;
inline constexpr WORD AF_INET6 = 23;

// IfType (IANA).
inline constexpr DWORD IF_TYPE_ETHERNET_CSMACD = 6;
inline constexpr DWORD IF_TYPE_PPP = 23;
inline constexpr DWORD IF_TYPE_SLIP = 28;
inline constexpr DWORD IF_TYPE_PROP_VIRTUAL = 53;
inline constexpr DWORD IF_TYPE_IEEE80211 = 71;
inline constexpr DWORD IF_TYPE_TUNNEL = 131;
inline constexpr DWORD IF_TYPE_WWANPP = 243;   // mobile broadband, GSM family
inline constexpr DWORD IF_TYPE_WWANPP2 = 244;  // mobile broadband, CDMA family

// OperStatus.
inline constexpr DWORD IfOperStatusUp = 1;
inline constexpr DWORD IfOperStatusDown = 2;

struct SOCKADDR_IN {
  WORD sin_family = AF_INET;
  WORD sin_port = 0;
  BYTE sin_addr[4] = {};  // network byte order
  BYTE sin_zero[8] = {};
};
static_assert(sizeof(SOCKADDR_IN) == 16);

struct SOCKADDR_IN6 {
  WORD sin6_family = AF_INET6;
  WORD sin6_port = 0;
  DWORD sin6_flowinfo = 0;
  BYTE sin6_addr[16] = {};  // network byte order
  DWORD sin6_scope_id = 0;
};
static_assert(sizeof(SOCKADDR_IN6) == 28);

// SOCKADDR_INET: the family in the first two bytes says which of the two records above it holds.
struct SOCKADDR_INET {
  WORD si_family = AF_UNSPEC;
  BYTE rest[2] = {};
  DWORD words[6] = {};
};
static_assert(sizeof(SOCKADDR_INET) == 28);

struct SOCKET_ADDRESS {
  void* lpSockaddr = nullptr;
  LONG iSockaddrLength = 0;
};
static_assert(sizeof(SOCKET_ADDRESS) == 16);

struct IP_ADAPTER_UNICAST_ADDRESS {
  ULONG Length = sizeof(IP_ADAPTER_UNICAST_ADDRESS);
  DWORD Flags = 0;
  IP_ADAPTER_UNICAST_ADDRESS* Next = nullptr;
  SOCKET_ADDRESS Address;
  DWORD PrefixOrigin = 0, SuffixOrigin = 0, DadState = 0;
  ULONG ValidLifetime = 0, PreferredLifetime = 0, LeaseLifetime = 0;
  BYTE OnLinkPrefixLength = 0;
};
static_assert(sizeof(IP_ADAPTER_UNICAST_ADDRESS) == 64);

struct IP_ADAPTER_GATEWAY_ADDRESS {
  ULONG Length = sizeof(IP_ADAPTER_GATEWAY_ADDRESS);
  DWORD Reserved = 0;
  IP_ADAPTER_GATEWAY_ADDRESS* Next = nullptr;
  SOCKET_ADDRESS Address;
};
static_assert(sizeof(IP_ADAPTER_GATEWAY_ADDRESS) == 32);

struct IP_ADAPTER_ADDRESSES {
  ULONG Length = sizeof(IP_ADAPTER_ADDRESSES);
  DWORD IfIndex = 0;
  IP_ADAPTER_ADDRESSES* Next = nullptr;
  char* AdapterName = nullptr;  // GUID text with braces
  IP_ADAPTER_UNICAST_ADDRESS* FirstUnicastAddress = nullptr;
  void* FirstAnycastAddress = nullptr;
  void* FirstMulticastAddress = nullptr;
  void* FirstDnsServerAddress = nullptr;
  char16_t* DnsSuffix = nullptr;
  char16_t* Description = nullptr;
  char16_t* FriendlyName = nullptr;
  BYTE PhysicalAddress[8] = {};
  ULONG PhysicalAddressLength = 0;
  ULONG Flags = 0;
  ULONG Mtu = 0;
  DWORD IfType = 0;
  DWORD OperStatus = 0;
  DWORD Ipv6IfIndex = 0;
  ULONG ZoneIndices[16] = {};
  void* FirstPrefix = nullptr;
  ULONGLONG TransmitLinkSpeed = 0;
  ULONGLONG ReceiveLinkSpeed = 0;
  void* FirstWinsServerAddress = nullptr;
  IP_ADAPTER_GATEWAY_ADDRESS* FirstGatewayAddress = nullptr;
  ULONG Ipv4Metric = 0;
  ULONG Ipv6Metric = 0;
  ULONGLONG Luid = 0;
  SOCKET_ADDRESS Dhcpv4Server;
  DWORD CompartmentId = 0;
  GUID NetworkGuid;
  DWORD ConnectionType = 0;
  DWORD TunnelType = 0;
  SOCKET_ADDRESS Dhcpv6Server;
  BYTE Dhcpv6ClientDuid[130] = {};
  ULONG Dhcpv6ClientDuidLength = 0;
  ULONG Dhcpv6Iaid = 0;
  void* FirstDnsSuffix = nullptr;
};
static_assert(sizeof(IP_ADAPTER_ADDRESSES) == 448);

// DadState of a unicast address: it may be used without limits.
inline constexpr DWORD IpDadStatePreferred = 4;

// Flags of GetAdaptersAddresses.
inline constexpr ULONG GAA_FLAG_SKIP_MULTICAST = 0x4;
inline constexpr ULONG GAA_FLAG_INCLUDE_PREFIX = 0x10;
inline constexpr ULONG GAA_FLAG_INCLUDE_GATEWAYS = 0x80;

struct IP_ADDR_STRING {
  IP_ADDR_STRING* Next = nullptr;
  char IpAddress[16] = {};  // dotted text
  char IpMask[16] = {};
  DWORD Context = 0;
};
static_assert(sizeof(IP_ADDR_STRING) == 48);

struct IP_ADAPTER_INFO {
  IP_ADAPTER_INFO* Next = nullptr;
  DWORD ComboIndex = 0;
  char AdapterName[260] = {};
  char Description[132] = {};
  DWORD AddressLength = 0;
  BYTE Address[8] = {};
  DWORD Index = 0;
  DWORD Type = 0;
  DWORD DhcpEnabled = 0;
  IP_ADDR_STRING* CurrentIpAddress = nullptr;
  IP_ADDR_STRING IpAddressList;
  IP_ADDR_STRING GatewayList;
  IP_ADDR_STRING DhcpServer;
  BOOL HaveWins = FALSE;
  IP_ADDR_STRING PrimaryWinsServer;
  IP_ADDR_STRING SecondaryWinsServer;
  std::int64_t LeaseObtained = 0;
  std::int64_t LeaseExpires = 0;
};
static_assert(sizeof(IP_ADAPTER_INFO) == 704);

struct MIB_IPNET_ROW2 {
  SOCKADDR_INET Address;
  DWORD InterfaceIndex = 0;
  ULONGLONG InterfaceLuid = 0;
  BYTE PhysicalAddress[32] = {};
  ULONG PhysicalAddressLength = 0;
  DWORD State = 0;  // NL_NEIGHBOR_STATE
  DWORD Flags = 0;
  ULONG ReachabilityTime = 0;
};
static_assert(sizeof(MIB_IPNET_ROW2) == 88);

// Routes. Addresses are in network byte order.
struct MIB_IPFORWARDROW {
  DWORD dwForwardDest = 0;
  DWORD dwForwardMask = 0;
  DWORD dwForwardPolicy = 0;
  DWORD dwForwardNextHop = 0;
  DWORD dwForwardIfIndex = 0;
  DWORD dwForwardType = 0;
  DWORD dwForwardProto = 0;
  DWORD dwForwardAge = 0;
  DWORD dwForwardNextHopAS = 0;
  DWORD dwForwardMetric1 = 0;
  DWORD dwForwardMetric2 = 0;
  DWORD dwForwardMetric3 = 0;
  DWORD dwForwardMetric4 = 0;
  DWORD dwForwardMetric5 = 0;
};
static_assert(sizeof(MIB_IPFORWARDROW) == 56);

struct MIB_IPFORWARDTABLE {
  DWORD dwNumEntries = 0;
  MIB_IPFORWARDROW table[1];
};
static_assert(sizeof(MIB_IPFORWARDTABLE) == 60);

struct IP_ADDRESS_PREFIX {
  SOCKADDR_INET Prefix;
  BYTE PrefixLength = 0;
};
static_assert(sizeof(IP_ADDRESS_PREFIX) == 32);

struct MIB_IPFORWARD_ROW2 {
  ULONGLONG InterfaceLuid = 0;
  DWORD InterfaceIndex = 0;
  IP_ADDRESS_PREFIX DestinationPrefix;
  SOCKADDR_INET NextHop;
  BYTE SitePrefixLength = 0;
  ULONG ValidLifetime = 0;
  ULONG PreferredLifetime = 0;
  ULONG Metric = 0;
  DWORD Protocol = 0;
  BYTE Loopback = 0;
  BYTE AutoconfigureAddress = 0;
  BYTE Publish = 0;
  BYTE Immortal = 0;
  ULONG Age = 0;
  DWORD Origin = 0;
};
static_assert(sizeof(MIB_IPFORWARD_ROW2) == 104);

inline constexpr DWORD MIB_IPPROTO_NETMGMT = 3;

// The members of MIB_IPINTERFACE_ROW and MIB_IF_ROW2 that the program reads.
struct MIB_IPINTERFACE_ROW {
  WORD Family = AF_UNSPEC;
  DWORD InterfaceIndex = 0;
  ULONG Metric = 0;
};

struct MIB_IF_ROW2 {
  ULONGLONG InterfaceLuid = 0;
  DWORD InterfaceIndex = 0;
  ULONG PhysicalAddressLength = 0;
  BYTE PhysicalAddress[32] = {};
};

struct MIB_IPNET_TABLE2 {
  ULONG NumEntries = 0;
  MIB_IPNET_ROW2 Table[1];
};
static_assert(sizeof(MIB_IPNET_TABLE2) == 96);

}  // namespace corvane::platform
