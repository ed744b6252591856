#include "probes/temporary_route.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/ip_helper_api.h"
#include "platform/platform.h"

namespace corvane {

namespace {

using platform::DWORD;
using platform::MIB_IPFORWARDROW;

constexpr char kClassName[] = "CUtils";
constexpr DWORD kNoMetric = 0xFFFFFFFF;
constexpr int kTableTries = 4;
constexpr platform::ULONG kMaxTableBytes = 16u << 20;
constexpr int kRemoveTries = 3;  // a busy table may refuse once

DWORD InterfaceMetricPlusOne(platform::WORD family, std::uint32_t ifIndex) {
  platform::MIB_IPINTERFACE_ROW row;
  row.Family = family;
  row.InterfaceIndex = ifIndex;
  const DWORD code = Contained(kClassName, "GetIpInterfaceEntry", platform::ERROR_GEN_FAILURE,
                               [&row] { return Os().ipHelper.GetIpInterfaceEntry(&row); });
  return code == platform::ERROR_SUCCESS ? row.Metric + 1 : kNoMetric;
}

// Asks until the platform has deleted the route, or it is no longer there.
template <class Delete>
bool Remove(const char* operation, const char16_t* line, Delete&& deleteRow) {
  for (int tries = 0; tries < kRemoveTries; ++tries) {
    const DWORD code = Contained(kClassName, operation, platform::ERROR_GEN_FAILURE, deleteRow);
    if (code == platform::ERROR_SUCCESS) return true;
    LOG_ERROR(line, code);
    // A route goes with its interface.
    if (code == platform::ERROR_NOT_FOUND || code == platform::ERROR_FILE_NOT_FOUND) return true;
  }
  return false;
}

}  // namespace

std::optional<std::uint32_t> GetIPv4DefaultGateway(std::uint32_t ifIndex) {
  std::vector<std::uint32_t> buffer;
  platform::ULONG size = sizeof(platform::MIB_IPFORWARDTABLE), capacity = 0;
  DWORD code = platform::ERROR_INSUFFICIENT_BUFFER;
  for (int tries = 0; tries < kTableTries && code == platform::ERROR_INSUFFICIENT_BUFFER; ++tries) {
    capacity =
        std::clamp<platform::ULONG>(size, sizeof(platform::MIB_IPFORWARDTABLE), kMaxTableBytes);
    buffer.assign((capacity + 3) / 4, 0);
    size = capacity;
    code = Contained(kClassName, "GetIpForwardTable", platform::ERROR_GEN_FAILURE, [&] {
      return Os().ipHelper.GetIpForwardTable(
          reinterpret_cast<platform::MIB_IPFORWARDTABLE*>(buffer.data()), &size, platform::FALSE);
    });
  }
  if (code != platform::ERROR_SUCCESS) return std::nullopt;
  constexpr std::size_t kHead = offsetof(platform::MIB_IPFORWARDTABLE, table);
  const std::size_t count =
      std::min<std::size_t>(buffer[0], (capacity - kHead) / sizeof(MIB_IPFORWARDROW));
  for (std::size_t i = 0; i < count; ++i) {
    MIB_IPFORWARDROW row;
    std::memcpy(&row, reinterpret_cast<const std::uint8_t*>(buffer.data()) + kHead + i * sizeof row,
                sizeof row);
    if (row.dwForwardIfIndex == ifIndex && row.dwForwardDest == 0) return row.dwForwardNextHop;
  }
  return std::nullopt;
}

CTemporaryRoute::~CTemporaryRoute() {
  GiveBack(kClassName, "RemoveLastAddedIP4Route", [this] { RemoveLastAddedIP4Route(); });
  GiveBack(kClassName, "RemoveLastAddedIP6Route", [this] { RemoveLastAddedIP6Route(); });
}

bool CTemporaryRoute::AddIP4Route(std::uint32_t ifIndex, std::uint32_t destination,
                                  std::uint32_t mask, std::uint32_t nextHop, DWORD* error) {
  *error = platform::ERROR_NOT_FOUND;
  if (!RemoveLastAddedIP4Route()) return false;
  if (nextHop == 0 || nextHop == 0xFFFFFFFF) {
    const auto gateway = GetIPv4DefaultGateway(ifIndex);
    if (!gateway) {
      LOG_ERROR(u"CUtils::AddIP4Route: GetIPv4DefaultGateway() failed!\n");
      return false;
    }
    nextHop = *gateway;
  }
  MIB_IPFORWARDROW row;
  row.dwForwardDest = destination;
  row.dwForwardMask = mask;
  row.dwForwardNextHop = nextHop;
  row.dwForwardIfIndex = ifIndex;
  row.dwForwardProto = platform::MIB_IPPROTO_NETMGMT;
  row.dwForwardMetric1 = InterfaceMetricPlusOne(platform::AF_INET, ifIndex);
  row.dwForwardMetric2 = row.dwForwardMetric4 = kNoMetric;
  *error = Contained(kClassName, "CreateIpForwardEntry", platform::ERROR_GEN_FAILURE,
                     [&row] { return Os().ipHelper.CreateIpForwardEntry(&row); });
  if (*error == platform::ERROR_SUCCESS) {
    m_Row4 = row;
    return true;
  }
  if (*error == platform::ERROR_ACCESS_DENIED) {
    LOG_ERROR(
        u"CUtils::AddIP4Route: CreateIpForwardEntry failed! 0x%08lx[ERROR_ACCESS_DENIED]\n*** "
        u"Please run with administrative rights ***\n",
        *error);
  } else {
    LOG_ERROR(u"CUtils::AddIP4Route: CreateIpForwardEntry failed! 0x%08lx\n", *error);
  }
  return false;
}

bool CTemporaryRoute::AddIP6Route(std::uint32_t ifIndex, const platform::SOCKADDR_INET& destination,
                                  const platform::SOCKADDR_INET& nextHop, DWORD* error) {
  constexpr platform::BYTE kWholeAddress = 128;
  *error = platform::ERROR_NOT_FOUND;
  if (!RemoveLastAddedIP6Route()) return false;
  platform::MIB_IPFORWARD_ROW2 row;
  *error = Contained(kClassName, "CreateIpForwardEntry2", platform::ERROR_GEN_FAILURE, [&] {
    Os().ipHelper.InitializeIpForwardEntry(&row);
    row.InterfaceIndex = ifIndex;
    row.DestinationPrefix.Prefix = destination;
    row.DestinationPrefix.PrefixLength = kWholeAddress;
    row.NextHop = nextHop;
    row.Protocol = platform::MIB_IPPROTO_NETMGMT;
    row.Metric = InterfaceMetricPlusOne(platform::AF_INET6, ifIndex);
    return Os().ipHelper.CreateIpForwardEntry2(&row);
  });
  switch (*error) {
    case platform::ERROR_SUCCESS:
      m_Row6 = row;
      return true;
    case platform::ERROR_ACCESS_DENIED:
      LOG_ERROR(
          u"CUtils::AddIP6Route: CreateIpForwardEntry2 failed! 0x%08lx[ERROR_ACCESS_DENIED]\n*** "
          u"Please run with administrative rights ***\n",
          *error);
      break;
    case platform::ERROR_INVALID_PARAMETER:
      LOG_ERROR(
          u"CUtils::AddIP6Route: CreateIpForwardEntry2 failed! 0x%08lx(%lu) "
          u"[ERROR_INVALID_PARAMETER]\n",
          *error, *error);
      break;
    default:
      LOG_ERROR(u"CUtils::AddIP6Route: CreateIpForwardEntry2 failed! 0x%08lx(%lu)\n", *error,
                *error);
      break;
  }
  return false;
}

bool CTemporaryRoute::RemoveLastAddedIP4Route() {
  if (m_Row4 && Remove("DeleteIpForwardEntry",
                       u"CUtils::RemoveLastAddedIP4Route: DeleteIpForwardEntry failed! 0x%08lx\n",
                       [this] { return Os().ipHelper.DeleteIpForwardEntry(&*m_Row4); })) {
    m_Row4.reset();
  }
  return !m_Row4;
}

bool CTemporaryRoute::RemoveLastAddedIP6Route() {
  if (m_Row6 && Remove("DeleteIpForwardEntry2",
                       u"CUtils::RemoveLastAddedIP6Route: DeleteIpForwardEntry2 failed! 0x%08lx\n",
                       [this] { return Os().ipHelper.DeleteIpForwardEntry2(&*m_Row6); })) {
    m_Row6.reset();
  }
  return !m_Row6;
}

}  // namespace corvane
