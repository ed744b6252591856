#pragma once
#include "platform/ip_types.h"

namespace corvane::platform {

// iprtrmib.h
struct MIB_IFROW {
  char16_t wszName[256] = {};
  DWORD dwIndex = 0;
  DWORD dwType = 0;
  DWORD dwMtu = 0;
  DWORD dwSpeed = 0;
  DWORD dwPhysAddrLen = 0;
  BYTE bPhysAddr[8] = {};
  DWORD dwAdminStatus = 0;
  DWORD dwOperStatus = 0;
  DWORD dwLastChange = 0;
  DWORD dwInOctets = 0, dwInUcastPkts = 0, dwInNUcastPkts = 0, dwInDiscards = 0, dwInErrors = 0;
  DWORD dwInUnknownProtos = 0;
  DWORD dwOutOctets = 0, dwOutUcastPkts = 0, dwOutNUcastPkts = 0, dwOutDiscards = 0;
  DWORD dwOutErrors = 0, dwOutQLen = 0;
  DWORD dwDescrLen = 0;
  BYTE bDescr[256] = {};
};
static_assert(sizeof(MIB_IFROW) == 860);

struct MIB_IFTABLE {
  DWORD dwNumEntries = 0;
  MIB_IFROW table[1];
};
static_assert(sizeof(MIB_IFTABLE) == 864);

// Addresses, neighbours, routes and interfaces of this machine. Results are error codes; records
// are the caller's unless an operation says otherwise, and a failed call leaves them unspecified.
// Each list is of the moment of its call: a size that was asked for may be too small by the time of
// the second call, so callers repeat. Safe for use from every thread. Only ResolveIpNetEntry2 waits
// for the network; the others take no more time than their list is long.
class IpHelperApi {
 public:
  virtual ~IpHelperApi() = default;
  // ERROR_INSUFFICIENT_BUFFER with the bytes needed in *size. With `order`, by interface index.
  virtual DWORD GetIfTable(MIB_IFTABLE* table, ULONG* size, BOOL order);

  // The list begins at the start of the caller's buffer of *size bytes, and all that it points to
  // lies within. ERROR_BUFFER_OVERFLOW with the bytes needed in *size; ERROR_NO_DATA for an empty
  // list.
  virtual ULONG GetAdaptersAddresses(ULONG family, ULONG flags, void* reserved,
                                     IP_ADAPTER_ADDRESSES* addresses, ULONG* size);
  // The same, of IPv4 alone.
  virtual ULONG GetAdaptersInfo(IP_ADAPTER_INFO* info, ULONG* size);

  // The neighbour table of AF_INET or AF_INET6. The caller gives it back by FreeMibTable.
  virtual DWORD GetIpNetTable2(WORD family, MIB_IPNET_TABLE2** table);
  virtual void FreeMibTable(void* memory);
  // Asks the network for the hardware address of a row's Address and fills the row; may block.
  virtual DWORD ResolveIpNetEntry2(MIB_IPNET_ROW2* row, const SOCKADDR_INET* source);

  // Routes of IPv4. They outlive the process: who creates one deletes it, by the same destination,
  // mask, next hop and interface. The table as GetIfTable.
  virtual DWORD CreateIpForwardEntry(const MIB_IPFORWARDROW* row);
  virtual DWORD DeleteIpForwardEntry(const MIB_IPFORWARDROW* row);
  virtual DWORD GetIpForwardTable(MIB_IPFORWARDTABLE* table, ULONG* size, BOOL order);
  // Routes of both families, likewise. A row begins with InitializeIpForwardEntry, which sets what
  // the caller leaves open.
  virtual void InitializeIpForwardEntry(MIB_IPFORWARD_ROW2* row);
  virtual DWORD CreateIpForwardEntry2(const MIB_IPFORWARD_ROW2* row);
  virtual DWORD DeleteIpForwardEntry2(const MIB_IPFORWARD_ROW2* row);
  // By Family and InterfaceIndex of the row; fills the rest.
  virtual DWORD GetIpInterfaceEntry(MIB_IPINTERFACE_ROW* row);
  // By the row's InterfaceLuid; fills the rest.
  virtual DWORD GetIfEntry2(MIB_IF_ROW2* row);
  virtual DWORD ConvertInterfaceGuidToLuid(const GUID* adapter, ULONGLONG* luid);
};

}  // namespace corvane::platform
