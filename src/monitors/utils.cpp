#include "monitors/utils.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

#include "foundation/format.h"
#include "foundation/guarded.h"
#include "platform/ip_helper_api.h"
#include "platform/platform.h"

namespace corvane {
namespace {

using platform::MIB_IFROW;
using platform::MIB_IFTABLE;

constexpr std::uint32_t kNoIndex = 0xFFFFFFFF;
constexpr platform::ULONG kMaxTableBytes = 16u << 20;

// The interface table; no rows when the platform does not give it. The table may grow between the
// question for its size and the next call, so that is asked again a few times.
std::vector<MIB_IFROW> InterfaceTable() {
  std::vector<std::uint32_t> buffer;
  platform::ULONG size = sizeof(MIB_IFTABLE);
  platform::DWORD result = platform::ERROR_INSUFFICIENT_BUFFER;
  platform::ULONG capacity = 0;
  for (int tries = 0; tries < 4 && result == platform::ERROR_INSUFFICIENT_BUFFER; ++tries) {
    capacity = std::clamp<platform::ULONG>(size, sizeof(MIB_IFTABLE), kMaxTableBytes);
    buffer.assign((capacity + 3) / 4, 0);
    size = capacity;
    result = Guarded("CUtils", "GetIfTable", platform::ERROR_GEN_FAILURE, [&] {
      return Os().ipHelper.GetIfTable(reinterpret_cast<MIB_IFTABLE*>(buffer.data()), &size,
                                      platform::FALSE);
    });
  }
  if (result != platform::ERROR_SUCCESS) return {};

  const std::size_t fitting = (capacity - offsetof(MIB_IFTABLE, table)) / sizeof(MIB_IFROW);
  std::vector<MIB_IFROW> rows(std::min<std::size_t>(buffer[0], fitting));
  if (!rows.empty()) {
    std::memcpy(rows.data(),
                reinterpret_cast<const std::uint8_t*>(buffer.data()) + offsetof(MIB_IFTABLE, table),
                rows.size() * sizeof(MIB_IFROW));
  }
  return rows;
}

WStringView NameOf(const MIB_IFROW& row) {
  const WStringView name(row.wszName, std::size(row.wszName));
  return name.substr(0, name.find(u'\0'));
}

std::string_view DescriptionOf(const MIB_IFROW& row) {
  const std::size_t length = std::min<std::size_t>(row.dwDescrLen, std::size(row.bDescr));
  const std::string_view text(reinterpret_cast<const char*>(row.bDescr), length);
  return text.substr(0, text.find('\0'));
}

std::vector<MIB_IFROW>::const_iterator FindIndex(const std::vector<MIB_IFROW>& rows,
                                                 std::uint32_t ifIndex) {
  return std::find_if(rows.begin(), rows.end(),
                      [ifIndex](const MIB_IFROW& row) { return row.dwIndex == ifIndex; });
}

}  // namespace

std::uint32_t CUtils::GetIfIndexFromGUIDStr(const WString& guidText) {
  for (const MIB_IFROW& row : InterfaceTable()) {
    const WStringView name = NameOf(row);
    const std::size_t brace = name.find(u'{');
    if (brace != WStringView::npos && name.substr(brace) == guidText) return row.dwIndex;
  }
  return kNoIndex;
}

bool CUtils::GetDescriptionForIfIndex(std::uint32_t ifIndex, WString* description) {
  const std::vector<MIB_IFROW> rows = InterfaceTable();
  const auto row = FindIndex(rows, ifIndex);
  if (row == rows.end()) return false;
  const std::string_view text = DescriptionOf(*row);
  const auto earlier = std::count_if(
      rows.begin(), row, [text](const MIB_IFROW& other) { return DescriptionOf(other) == text; });
  *description = Widen(text);
  std::replace(description->begin(), description->end(), u'/', u'_');
  if (earlier > 0) *description += Format(u"#%u", static_cast<unsigned>(earlier));
  return true;
}

bool CUtils::GetMacStrForIfIndex(std::uint32_t ifIndex, WString* mac) {
  const std::vector<MIB_IFROW> rows = InterfaceTable();
  const auto row = FindIndex(rows, ifIndex);
  if (row == rows.end() || row->dwPhysAddrLen < 6) return false;
  const platform::BYTE* const b = row->bPhysAddr;
  *mac = Format(u"%02x-%02x-%02x-%02x-%02x-%02x", b[0], b[1], b[2], b[3], b[4], b[5]);
  return true;
}

}  // namespace corvane
