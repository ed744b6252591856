#pragma once
#include "platform/ip_helper_api.h"
#include "platform/windows/system_library.h"

namespace corvane::platform::windows {

// The IP helper, iphlpapi.dll.
class WindowsIpHelper final : public IpHelperApi {
 public:
  explicit WindowsIpHelper(const SystemLibrary& library = kLibrary) : m_Library(library) {}

  DWORD GetIfTable(MIB_IFTABLE* table, ULONG* size, BOOL order) override;
  ULONG GetAdaptersAddresses(ULONG family, ULONG flags, void* reserved,
                             IP_ADAPTER_ADDRESSES* addresses, ULONG* size) override;
  ULONG GetAdaptersInfo(IP_ADAPTER_INFO* info, ULONG* size) override;
  DWORD GetIpNetTable2(WORD family, MIB_IPNET_TABLE2** table) override;
  void FreeMibTable(void* memory) override;
  DWORD ResolveIpNetEntry2(MIB_IPNET_ROW2* row, const SOCKADDR_INET* source) override;
  DWORD CreateIpForwardEntry(const MIB_IPFORWARDROW* row) override;
  DWORD DeleteIpForwardEntry(const MIB_IPFORWARDROW* row) override;
  DWORD GetIpForwardTable(MIB_IPFORWARDTABLE* table, ULONG* size, BOOL order) override;
  void InitializeIpForwardEntry(MIB_IPFORWARD_ROW2* row) override;
  DWORD CreateIpForwardEntry2(const MIB_IPFORWARD_ROW2* row) override;
  DWORD DeleteIpForwardEntry2(const MIB_IPFORWARD_ROW2* row) override;
  DWORD GetIpInterfaceEntry(MIB_IPINTERFACE_ROW* row) override;
  DWORD GetIfEntry2(MIB_IF_ROW2* row) override;
  DWORD ConvertInterfaceGuidToLuid(const GUID* adapter, ULONGLONG* luid) override;

 private:
  static inline constinit const SystemLibrary kLibrary{L"iphlpapi.dll"};

  const SystemLibrary& m_Library;
};

}  // namespace corvane::platform::windows
