#include "platform/windows/windows_ip_helper.h"

#include <algorithm>

#include "platform/windows/library_call.h"

namespace corvane::platform::windows {

namespace {

// The system's flags are one byte, and the three behind it hold anything.
void ClearPadding(MIB_IPNET_ROW2& row) { row.Flags &= 0xFF; }

::MIB_IPFORWARDROW* Row(const MIB_IPFORWARDROW* row) {
  return As<::MIB_IPFORWARDROW>(const_cast<MIB_IPFORWARDROW*>(row));
}

}  // namespace

DWORD WindowsIpHelper::GetIfTable(MIB_IFTABLE* table, ULONG* size, BOOL order) {
  return ForwardIfFound("GetIfTable", CORVANE_FIND(m_Library, GetIfTable), As<::MIB_IFTABLE>(table),
                        As32(size), order);
}

ULONG WindowsIpHelper::GetAdaptersAddresses(ULONG family, ULONG flags, void* reserved,
                                            IP_ADAPTER_ADDRESSES* addresses, ULONG* size) {
  return ForwardIfFound("GetAdaptersAddresses", CORVANE_FIND(m_Library, GetAdaptersAddresses),
                        family, flags, reserved, As<::IP_ADAPTER_ADDRESSES>(addresses), As32(size));
}

ULONG WindowsIpHelper::GetAdaptersInfo(IP_ADAPTER_INFO* info, ULONG* size) {
  return ForwardIfFound("GetAdaptersInfo", CORVANE_FIND(m_Library, GetAdaptersInfo),
                        As<::IP_ADAPTER_INFO>(info), As32(size));
}

DWORD WindowsIpHelper::GetIpNetTable2(WORD family, MIB_IPNET_TABLE2** table) {
  const DWORD code = ForwardIfFound("GetIpNetTable2", CORVANE_FIND(m_Library, GetIpNetTable2),
                                    family, As<::MIB_IPNET_TABLE2*>(table));
  if (code != ERROR_SUCCESS) return code;
  std::for_each_n((*table)->Table, (*table)->NumEntries, &ClearPadding);
  return code;
}

void WindowsIpHelper::FreeMibTable(void* memory) {
  const auto call = CORVANE_FIND(m_Library, FreeMibTable);
  if (call) Forward("FreeMibTable", [&] { call(memory); });
}

DWORD WindowsIpHelper::ResolveIpNetEntry2(MIB_IPNET_ROW2* row, const SOCKADDR_INET* source) {
  const DWORD code =
      ForwardIfFound("ResolveIpNetEntry2", CORVANE_FIND(m_Library, ResolveIpNetEntry2),
                     As<::MIB_IPNET_ROW2>(row), As<const ::SOCKADDR_INET>(source));
  if (code == ERROR_SUCCESS) ClearPadding(*row);
  return code;
}

DWORD WindowsIpHelper::CreateIpForwardEntry(const MIB_IPFORWARDROW* row) {
  return ForwardIfFound("CreateIpForwardEntry", CORVANE_FIND(m_Library, CreateIpForwardEntry),
                        Row(row));
}

DWORD WindowsIpHelper::DeleteIpForwardEntry(const MIB_IPFORWARDROW* row) {
  return ForwardIfFound("DeleteIpForwardEntry", CORVANE_FIND(m_Library, DeleteIpForwardEntry),
                        Row(row));
}

DWORD WindowsIpHelper::GetIpForwardTable(MIB_IPFORWARDTABLE* table, ULONG* size, BOOL order) {
  return ForwardIfFound("GetIpForwardTable", CORVANE_FIND(m_Library, GetIpForwardTable),
                        As<::MIB_IPFORWARDTABLE>(table), As32(size), order);
}

void WindowsIpHelper::InitializeIpForwardEntry(MIB_IPFORWARD_ROW2* row) {
  const auto call = CORVANE_FIND(m_Library, InitializeIpForwardEntry);
  if (!call) return;
  Forward("InitializeIpForwardEntry", [&] { call(As<::MIB_IPFORWARD_ROW2>(row)); });
}

DWORD WindowsIpHelper::CreateIpForwardEntry2(const MIB_IPFORWARD_ROW2* row) {
  return ForwardIfFound("CreateIpForwardEntry2", CORVANE_FIND(m_Library, CreateIpForwardEntry2),
                        As<const ::MIB_IPFORWARD_ROW2>(row));
}

DWORD WindowsIpHelper::DeleteIpForwardEntry2(const MIB_IPFORWARD_ROW2* row) {
  return ForwardIfFound("DeleteIpForwardEntry2", CORVANE_FIND(m_Library, DeleteIpForwardEntry2),
                        As<const ::MIB_IPFORWARD_ROW2>(row));
}

DWORD WindowsIpHelper::GetIpInterfaceEntry(MIB_IPINTERFACE_ROW* row) {
  ::MIB_IPINTERFACE_ROW full{};
  full.Family = row->Family;
  full.InterfaceIndex = row->InterfaceIndex;
  const DWORD code =
      ForwardIfFound("GetIpInterfaceEntry", CORVANE_FIND(m_Library, GetIpInterfaceEntry), &full);
  if (code == ERROR_SUCCESS) row->Metric = full.Metric;
  return code;
}

DWORD WindowsIpHelper::GetIfEntry2(MIB_IF_ROW2* row) {
  ::MIB_IF_ROW2 full{};
  full.InterfaceLuid.Value = row->InterfaceLuid;
  const DWORD code = ForwardIfFound("GetIfEntry2", CORVANE_FIND(m_Library, GetIfEntry2), &full);
  if (code != ERROR_SUCCESS) return code;
  row->InterfaceIndex = full.InterfaceIndex;
  row->PhysicalAddressLength =
      std::min<ULONG>(full.PhysicalAddressLength, sizeof row->PhysicalAddress);
  std::copy_n(full.PhysicalAddress, row->PhysicalAddressLength, row->PhysicalAddress);
  return code;
}

DWORD WindowsIpHelper::ConvertInterfaceGuidToLuid(const GUID* adapter, ULONGLONG* luid) {
  return ForwardIfFound("ConvertInterfaceGuidToLuid",
                        CORVANE_FIND(m_Library, ConvertInterfaceGuidToLuid),
                        As<const ::GUID>(adapter), As<::NET_LUID>(luid));
}

}  // namespace corvane::platform::windows
