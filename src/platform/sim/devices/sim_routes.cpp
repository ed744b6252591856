// The route operations of the IP helper.

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "platform/sim/devices/sim_ip_helper.h"

namespace corvane::platform::sim {

namespace {

constexpr ULONG kMetric = 25;  // of every interface

}  // namespace

DWORD SimIpHelper::CreateIpForwardEntry(const MIB_IPFORWARDROW* row) {
  if (const DWORD code = m_Gate.Enter("CreateIpForwardEntry"); code != ERROR_SUCCESS) return code;
  if (!row) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&] { return m_Paths.Add(*row); });
}

DWORD SimIpHelper::DeleteIpForwardEntry(const MIB_IPFORWARDROW* row) {
  if (const DWORD code = m_Gate.Enter("DeleteIpForwardEntry"); code != ERROR_SUCCESS) return code;
  if (!row) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&] { return m_Paths.Delete(*row); });
}

DWORD SimIpHelper::GetIpForwardTable(MIB_IPFORWARDTABLE* table, ULONG* size, BOOL) {
  if (const DWORD code = m_Gate.Enter("GetIpForwardTable"); code != ERROR_SUCCESS) return code;
  if (!size) return ERROR_INVALID_PARAMETER;
  const auto rows = m_Machine.loop.WithLock([&] { return m_Paths.Table(); });
  const std::size_t needed =
      std::max(sizeof(MIB_IPFORWARDTABLE),
               offsetof(MIB_IPFORWARDTABLE, table) + rows.size() * sizeof(MIB_IPFORWARDROW));
  const bool fits = table && *size >= needed;
  *size = static_cast<ULONG>(needed);
  if (!fits) return ERROR_INSUFFICIENT_BUFFER;
  table->dwNumEntries = static_cast<DWORD>(rows.size());
  if (!rows.empty()) {
    std::memcpy(reinterpret_cast<BYTE*>(table) + offsetof(MIB_IPFORWARDTABLE, table), rows.data(),
                rows.size() * sizeof(MIB_IPFORWARDROW));
  }
  return ERROR_SUCCESS;
}

void SimIpHelper::InitializeIpForwardEntry(MIB_IPFORWARD_ROW2* row) {
  m_Gate.Enter("InitializeIpForwardEntry");
  *row = {};
  row->ValidLifetime = row->PreferredLifetime = 0xFFFFFFFF;
  row->Immortal = 1;
}

DWORD SimIpHelper::CreateIpForwardEntry2(const MIB_IPFORWARD_ROW2* row) {
  if (const DWORD code = m_Gate.Enter("CreateIpForwardEntry2"); code != ERROR_SUCCESS) return code;
  if (!row) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&] { return m_Paths.Add(*row); });
}

DWORD SimIpHelper::DeleteIpForwardEntry2(const MIB_IPFORWARD_ROW2* row) {
  if (const DWORD code = m_Gate.Enter("DeleteIpForwardEntry2"); code != ERROR_SUCCESS) return code;
  if (!row) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&] { return m_Paths.Delete(*row); });
}

DWORD SimIpHelper::GetIpInterfaceEntry(MIB_IPINTERFACE_ROW* row) {
  if (const DWORD code = m_Gate.Enter("GetIpInterfaceEntry"); code != ERROR_SUCCESS) return code;
  if (!row) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&] {
    for (const SimInterface& face : Interfaces()) {
      if (face.ifIndex != row->InterfaceIndex) continue;
      row->Metric = kMetric;
      return ERROR_SUCCESS;
    }
    return ERROR_NOT_FOUND;
  });
}

}  // namespace corvane::platform::sim
