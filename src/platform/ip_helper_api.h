#pragma once
#include "platform/types.h"

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

class IpHelperApi {
 public:
  virtual ~IpHelperApi() = default;
  // ERROR_INSUFFICIENT_BUFFER with the bytes needed in `size`.
  virtual DWORD GetIfTable(MIB_IFTABLE* table, ULONG* size, BOOL order);
};

}  // namespace corvane::platform
